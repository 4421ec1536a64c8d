#include "platform/known_folders.h"

#include "platform/environment.h"
#include "platform/filesystem.h"
#include "platform/posix/file_descriptor.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <pwd.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <vector>

namespace Tools::Platform {

namespace {

std::string variable(const char* name)
{
    std::string value;
    readVariable(name, value);
    return value;
}

// A field of the user's entry in the system's list, empty if there is none.
std::string userEntry(char* passwd::*field)
{
    std::vector<char> buffer(1024);
    struct passwd entry = {};
    struct passwd* found = nullptr;
    while (::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE)
        buffer.resize(buffer.size() * 2);
    return found == nullptr || found->*field == nullptr ? std::string()
                                                        : std::string(found->*field);
}

std::string withoutFinalSeparators(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

// The directory of the user's configuration may be missing on a new account, unlike its counterpart
// on Windows; it is for the user alone.
void createForUser(const std::string& path)
{
    if (isDirectory(path))
        return;
    const std::size_t slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0)
        createDirectories(path.substr(0, slash));
    ::mkdir(path.c_str(), S_IRWXU);
}

}

std::string applicationDataDirectory()
{
    std::string path = applicationDataPath();
    if (!path.empty())
        createForUser(path);
    return path;
}

std::string applicationDataPath()
{
    // Relative values are to be ignored.
    std::string path = variable("XDG_CONFIG_HOME");
    if (!path.starts_with('/')) {
        std::string home = variable("HOME");
        if (home.empty())
            home = userEntry(&passwd::pw_dir);
        if (home.empty())
            return home;
        path = withoutFinalSeparators(home) + "/.config";
    }
    return withoutFinalSeparators(path);
}

std::string temporaryDirectory()
{
    std::string path = variable("TMPDIR");
    if (path.empty())
        path = "/tmp";
    if (!path.ends_with('/'))
        path += '/';
    return path;
}

// A random name and O_EXCL: nobody can have put a file or a link there before.
std::string createTemporaryFile(const std::string& prefix)
{
    constexpr int Attempts = 100;
    // As on Windows no more of it counts.
    constexpr std::size_t PrefixLength = 3;
    constexpr char Digits[] = "0123456789abcdef";
    std::array<unsigned char, 8> random = {};
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        if (::getrandom(random.data(), random.size(), 0) != ssize_t(random.size()))
            return {};
        std::string path = temporaryDirectory() + prefix.substr(0, PrefixLength);
        for (const unsigned char byte : random)
            path += Digits[byte & 15U];
        path += ".tmp";
        const FileDescriptor file(
            ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
        if (file.valid())
            return path;
        if (errno != EEXIST)
            return {};
    }
    return {};
}

std::string userName()
{
    // The system's list first: the variable can be set to anything.
    std::string name = userEntry(&passwd::pw_name);
    return name.empty() ? variable("USER") : name;
}

}
