#include "store/store_file.h"

#include "platform/posix/file_descriptor.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Store {

namespace {

std::string directoryOf(const std::string& path)
{
    return path.substr(0, path.find_last_of('/'));
}

// The rights hold whatever the process masks out. What root makes in a user's directory belongs to
// the user, whose programs would be locked out of their own settings else.
bool settle(int file, const std::string& path, mode_t mode)
{
    struct stat directory {};
    if (::geteuid() == 0 && ::stat(directoryOf(path).c_str(), &directory) == 0 &&
        directory.st_uid != 0 && ::fchown(file, directory.st_uid, directory.st_gid) != 0)
        return false;
    return ::fchmod(file, mode) == 0;
}

}

int openStoreFile(const std::string& path, mode_t mode)
{
    const int made = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (made < 0)
        return errno == EEXIST ? ::open(path.c_str(), O_RDWR | O_CLOEXEC) : -1;
    settle(made, path, mode);
    return made;
}

std::string makeStoreFileBeside(const std::string& path, mode_t mode)
{
    std::string name = path + ".XXXXXX";
    const Platform::FileDescriptor file(::mkostemp(name.data(), O_CLOEXEC));
    if (!file.valid())
        return std::string();
    if (settle(file.get(), name, mode))
        return name;
    ::unlink(name.c_str());
    return std::string();
}

bool makeStoreDirectory(const std::string& path, mode_t mode)
{
    struct stat info {};
    if (path.empty() || ::stat(path.c_str(), &info) == 0)
        return true;
    if (!makeStoreDirectory(directoryOf(path), S_IRWXU))
        return false;
    if (::mkdir(path.c_str(), mode) != 0)
        return errno == EEXIST;
    return ::chmod(path.c_str(), mode) == 0;
}

}
