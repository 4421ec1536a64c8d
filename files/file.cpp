#include <mdtools/file.h>

#include "files/file_compare.h"
#include "files/name_search.h"
#include "files/separators.h"
#include "files/tree.h"
#include "files/wildcard.h"
#include "platform/filesystem.h"
#include "platform/open_file.h"

#include <mdtools/debug_output.h>

#include <algorithm>
#include <clocale>
#include <cstring>

namespace Tools {

namespace {

// The run-time library of Windows ends the program for a mode that it does not know.
bool isMode(const std::string& mode)
{
    if (mode.empty() || std::strchr("rwa", mode[0]) == nullptr)
        return false;
    const auto count = [&mode](char c) { return std::count(mode.begin() + 1, mode.end(), c); };
    return mode.find_first_not_of("+btx", 1) == std::string::npos && count('+') <= 1 &&
           count('b') + count('t') <= 1 && count('x') <= (mode[0] == 'w' ? 1 : 0);
}

void ignoreFailure(const std::string&, Platform::ErrorCode) {}

}

File::Info::Info() = default;

File::Info::Info(const std::string& directory, const std::string& name, Type type)
    : m_directory(directory), m_name(name), m_type(type)
{}

bool File::Info::operator==(const Info& other) const
{
    return m_name == other.m_name && m_directory == other.m_directory && m_type == other.m_type;
}

bool File::Info::operator<(const Info& other) const
{
    if (const int order = m_directory.compare(other.m_directory); order != 0)
        return order < 0;
    if (const int order = m_name.compare(other.m_name); order != 0)
        return order < 0;
    return m_type < other.m_type;
}

std::FILE* File::open(const std::string& name, const std::string& mode)
{
    if (name.empty())
        return nullptr;
    // A locale that is "C" already is left alone: other threads may be using it.
    if (std::strcmp(std::setlocale(LC_ALL, nullptr), "C") != 0)
        std::setlocale(LC_ALL, "C");
    return isMode(mode) ? Platform::openStream(name, mode) : nullptr;
}

std::FILE* File::open(const Path& name, const std::string& mode)
{
    return open(name.path(), mode);
}

int File::close(std::FILE* file)
{
    return file == nullptr ? 0 : std::fclose(file);
}

bool File::exists(const std::string& name)
{
    return Platform::entryType(name) != Platform::EntryType::None;
}

bool File::exists(const Path& name)
{
    return exists(name.path());
}

bool File::exists(const char* name)
{
    return name != nullptr && exists(std::string(name));
}

bool File::isEmpty(const std::string& name)
{
    const Platform::InputFile file(name);
    char first = 0;
    std::size_t count = 0;
    return !file.isOpen() || !file.read(0, &first, 1, count) || count == 0;
}

bool File::isEmpty(const Path& name)
{
    return isEmpty(name.path());
}

bool File::isEqual(const std::string& a, const std::string& b)
{
    // Both are open before a byte is compared, so that neither is exchanged in between.
    const Platform::InputFile first(a);
    const Platform::InputFile second(b);
    return first.isOpen() && second.isOpen() && haveSameBytes(first, second);
}

bool File::isLocked(const std::string& name)
{
    return Platform::isLocked(name);
}

bool File::copy(const std::string& source, const std::string& target)
{
    return Platform::copyFile(source, target) == 0;
}

bool File::copy(const Path& source, const Path& target)
{
    return copy(source.path(), target.path());
}

bool File::copy(const std::string& source, const std::string& directory, const std::string& file)
{
    return copy(source, Separators::join(directory, file));
}

bool File::rename(const std::string& oldName, const std::string& newName)
{
    return Platform::renameEntry(oldName, newName) == 0;
}

bool File::rename(const Path& oldName, const Path& newName)
{
    return rename(oldName.path(), newName.path());
}

bool File::remove(const std::string& name)
{
    return Platform::removeFile(name) == 0;
}

bool File::remove(const Path& name)
{
    return remove(name.path());
}

bool File::removeEx(const std::string& pattern)
{
    const std::string text = Path::convert(pattern, false);
    if (!Wildcard::isIn(text))
        return remove(text);
    const Path parts(text);
    const std::string directory =
        text.substr(0, parts.location().size() + parts.directory().size());
    // Wildcards in a directory's name mean nothing; only the last component is a pattern.
    const Wildcard names(std::string_view(text).substr(directory.size()));
    return NameSearch::remove(directory, names, false,
                              [&directory](const std::string& name, Platform::ErrorCode code) {
                                  // The letter after the number belongs to the message.
                                  debugPrintf("Tools::File::removeEx(%s): ERROR %ul occured.\n",
                                              (directory + name).c_str(), code);
                              });
}

bool File::removeFiles(const std::vector<std::string>& names)
{
    // Every one is tried, whatever became of the one before.
    bool succeeded = true;
    for (const std::string& name : names)
        succeeded &= remove(name);
    return succeeded;
}

bool File::removeByWildCard(const std::string& directory, const std::string& pattern,
                            bool recursive)
{
    return NameSearch::remove(directory, Wildcard(pattern), recursive, ignoreFailure);
}

bool File::removeDirectoryRecursively(const std::string& name)
{
    return Tree::remove(name, false);
}

bool File::findByWildCard(const std::string& directory, const std::string& pattern,
                          std::vector<Info>& result, bool recursive)
{
    const std::size_t before = result.size();
    NameSearch::find(directory, Wildcard(pattern), recursive, result);
    return result.size() > before;
}

bool File::concatenate(const std::string& source, const std::string& target)
{
    const Platform::InputFile input(source);
    if (!input.isOpen())
        return false;
    Platform::OutputFile output;
    return output.open(target, Platform::OutputFile::Sharing::Readers) && !output.isSame(input) &&
           output.append(input);
}

std::string File::getDirectory(const std::string& name)
{
    const Path path(name);
    std::string directory = path.location() + path.directory();
    if (path.directory().size() > 1)
        directory.pop_back();
    return directory;
}

std::string File::getExtension(const std::string& name)
{
    return Path(name).extension();
}

std::string File::getNameWithoutExtension(const std::string& name)
{
    return Path(name).file();
}

const std::array<char, 9>& File::getForbiddenChars()
{
    static constexpr std::array<char, 9> Characters = {'\\', '/', ':', '*', '?',
                                                       '"',  '<', '>', '|'};
    return Characters;
}

}
