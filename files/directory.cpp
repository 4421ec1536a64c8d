#include <mdtools/directory.h>

#include "files/separators.h"
#include "files/tree.h"
#include "files/wildcard.h"
#include "platform/filesystem.h"
#include "platform/folder.h"

#include <mdtools/debug_output.h>

namespace Tools {

// A search under way. The members are made in this order, as each one works on the one before.
struct Directory::Search {
    Search(const std::string& directory, std::string_view pattern)
        : names(pattern), folder(directory.empty() ? std::string(".") : directory), reader(folder)
    {}

    Wildcard names;
    Platform::Folder folder;
    Platform::FolderReader reader;
};

Directory::Directory() = default;
Directory::~Directory() = default;

bool Directory::exists(const std::string& name)
{
    return Platform::isDirectory(name);
}

bool Directory::exists(const Path& name)
{
    return exists(name.path());
}

bool Directory::exists(const char* name)
{
    return name != nullptr && exists(std::string(name));
}

bool Directory::create(const std::string& name)
{
    return Platform::entryType(name) != Platform::EntryType::None ||
           Platform::createDirectory(name) == 0;
}

bool Directory::createRecursively(const std::string& name)
{
    return !name.empty() && Platform::createDirectories(name) == 0;
}

bool Directory::remove(const std::string& name)
{
    const Platform::EntryType type = Platform::entryType(name);
    const bool isLink = type == Platform::EntryType::DirectoryLink;
    return (isLink ? Platform::removeLink(name, type) : Platform::removeDirectory(name)) == 0;
}

bool Directory::removeRecursively(const std::string& name)
{
    return Tree::remove(name, true);
}

bool Directory::copy(const std::string& source, const std::string& target,
                     const std::vector<std::string>& includePatterns,
                     const std::vector<std::string>& excludePatterns)
{
    // The patterns are compiled once for the whole tree.
    Tree::CopyRules rules;
    for (const std::string& pattern : includePatterns)
        rules.includes.emplace_back(pattern);
    for (const std::string& pattern : excludePatterns)
        rules.excludes.emplace_back(pattern);
    rules.report = [](const std::string& path, Platform::ErrorCode code) {
        debugPrintf("CreateDirectory for \"%s\" failed with LastError: %d\n", path.c_str(),
                    static_cast<int>(code));
    };
    if (const Platform::ErrorCode code = Platform::createDirectory(target); code != 0) {
        rules.report(target, code);
        return false;
    }
    return Tree::copy(source, target, rules);
}

std::string Directory::getCurrent()
{
    return Platform::currentDirectory();
}

bool Directory::setCurrent(const std::string& name)
{
    return Platform::setCurrentDirectory(name);
}

bool Directory::start(const std::string& pattern, std::string& name)
{
    // The pattern is the last component only; wildcards above it are taken for plain characters.
    const Path parts(pattern);
    const std::size_t end = parts.location().size() + parts.directory().size();
    m_search =
        std::make_unique<Search>(pattern.substr(0, end), std::string_view(pattern).substr(end));
    return find(name);
}

bool Directory::find(std::string& name)
{
    if (m_search == nullptr)
        return false;
    Platform::FolderReader::Entry entry;
    while (m_search->reader.next(entry)) {
        if (m_search->names.matches(entry.name)) {
            name = entry.name;
            return true;
        }
    }
    // The next find() is to find nothing, and the directory need not stay open until then.
    m_search.reset();
    return false;
}

}
