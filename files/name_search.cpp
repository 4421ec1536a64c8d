#include "files/name_search.h"

#include "files/name_list.h"
#include "files/separators.h"
#include "files/tree.h"

#include <algorithm>

namespace Tools::NameSearch {

namespace {

using Platform::EntryType;

// An empty name means the current directory.
Platform::Folder openFolder(const std::string& directory)
{
    return Platform::Folder(directory.empty() ? std::string(".") : directory);
}

bool isOwnOrParent(std::string_view name)
{
    return name == "." || name == "..";
}

bool isDirectory(EntryType type)
{
    return type == EntryType::Directory || type == EntryType::DirectoryLink;
}

// Collects what matches, a directory at a time: sorted there, so that no sort of the whole is
// needed.
class Finder : public Tree::Visitor {
public:
    Finder(const std::string& directory, const Wildcard& pattern, bool recursive,
           std::vector<File::Info>& result)
        : m_pattern(pattern), m_recursive(recursive), m_result(result), m_directory(directory)
    {
        Separators::removeFinal(m_directory);
    }

    void visit(const Platform::Folder& folder, std::vector<std::string>& subfolders) override
    {
        NameList found;
        NameList deeper;
        Platform::FolderReader reader(folder);
        Platform::FolderReader::Entry entry;
        while (reader.next(entry)) {
            if (isOwnOrParent(entry.name))
                continue;
            if (m_pattern.matches(entry.name))
                found.add(entry.name, isDirectory(entry.type));
            if (m_recursive && entry.type == EntryType::Directory)
                deeper.add(entry.name, true);
        }
        found.sort();
        deeper.sort();
        append(found);
        for (std::size_t i = 0; i < deeper.size(); ++i)
            subfolders.emplace_back(deeper.name(i));
    }

    bool enter(const Platform::Folder&, const std::string& name) override
    {
        m_ends.push_back(m_directory.size());
        m_directory = Separators::join(m_directory, name);
        return true;
    }

    bool leave(const Platform::Folder&, const std::string&) override
    {
        m_directory.resize(m_ends.back());
        m_ends.pop_back();
        return true;
    }

private:
    // Grows by doubling: reserve() alone would copy all results again for each directory.
    void append(const NameList& found)
    {
        using Type = File::Info::Type;
        const std::size_t wanted = m_result.size() + found.size();
        if (wanted > m_result.capacity())
            m_result.reserve(std::max(wanted, 2 * m_result.capacity()));
        for (std::size_t i = 0; i < found.size(); ++i)
            m_result.emplace_back(m_directory, std::string(found.name(i)),
                                  found.isDirectory(i) ? Type::Directory : Type::File);
    }

    const Wildcard& m_pattern;
    bool m_recursive;
    std::vector<File::Info>& m_result;
    std::string m_directory;
    // The lengths that m_directory had, level by level.
    std::vector<std::size_t> m_ends;
};

// Removes what matches; links to directories stay, as they are no files.
class Remover : public Tree::Visitor {
public:
    Remover(const Wildcard& pattern, bool recursive, const Report& report)
        : m_pattern(pattern), m_recursive(recursive), m_report(report)
    {}

    bool succeeded() const { return m_succeeded; }

    void visit(const Platform::Folder& folder, std::vector<std::string>& subfolders) override
    {
        // All names are read before the first one goes.
        std::vector<std::pair<std::string, EntryType>> found;
        Platform::FolderReader reader(folder);
        Platform::FolderReader::Entry entry;
        while (reader.next(entry)) {
            if (entry.type == EntryType::Directory) {
                if (m_recursive && !isOwnOrParent(entry.name))
                    subfolders.emplace_back(entry.name);
            } else if (!isDirectory(entry.type) && m_pattern.matches(entry.name)) {
                found.emplace_back(entry.name, entry.type);
            }
        }
        m_succeeded &= !reader.failed();
        for (const auto& [name, type] : found)
            remove(folder, name, type);
    }

    bool enter(const Platform::Folder&, const std::string&) override { return true; }
    bool leave(const Platform::Folder&, const std::string&) override { return true; }

private:
    void remove(const Platform::Folder& folder, const std::string& name, EntryType type)
    {
        const Platform::ErrorCode code = type == EntryType::File ? folder.removeFile(name, false)
                                                                 : folder.removeLink(name, type);
        if (code == 0)
            return;
        m_succeeded = false;
        m_report(name, code);
    }

    const Wildcard& m_pattern;
    bool m_recursive;
    const Report& m_report;
    bool m_succeeded = true;
};

}

void find(const std::string& directory, const Wildcard& pattern, bool recursive,
          std::vector<File::Info>& result)
{
    Platform::Folder folder = openFolder(directory);
    if (!folder.valid())
        return;
    Finder finder(directory, pattern, recursive, result);
    Tree::walk(std::move(folder), finder);
}

bool remove(const std::string& directory, const Wildcard& pattern, bool recursive,
            const Report& report)
{
    Platform::Folder folder = openFolder(directory);
    // Where there is no directory nothing matches; one that may not be read is another matter.
    if (!folder.valid())
        return Platform::entryType(directory) == EntryType::None;
    Remover remover(pattern, recursive, report);
    return Tree::walk(std::move(folder), remover) && remover.succeeded();
}

}
