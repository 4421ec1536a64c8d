#include "files/tree.h"

#include "files/folder_stack.h"
#include "files/separators.h"

#include <algorithm>

namespace Tools::Tree {

namespace {

using Platform::EntryType;

struct Entry {
    std::string name;
    EntryType type;
};

// Everything in the folder, read before anything in it changes. False if that failed.
bool readAll(const Platform::Folder& folder, std::vector<Entry>& entries)
{
    Platform::FolderReader reader(folder);
    Platform::FolderReader::Entry entry;
    while (reader.next(entry)) {
        if (entry.name != "." && entry.name != "..")
            entries.push_back({std::string(entry.name), entry.type});
    }
    return !reader.failed();
}

bool matchesAny(const std::vector<Wildcard>& patterns, const std::string& name)
{
    return std::any_of(patterns.begin(), patterns.end(),
                       [&name](const Wildcard& pattern) { return pattern.matches(name); });
}

class Copier : public Visitor {
public:
    Copier(const std::string& target, const CopyRules& rules) : m_rules(rules), m_path(target)
    {
        m_targets.push(Platform::Folder(target));
        m_root = m_targets.top().identity();
        m_succeeded = m_targets.top().valid();
    }

    bool succeeded() const { return m_succeeded; }

    void visit(const Platform::Folder& folder, std::vector<std::string>& subfolders) override
    {
        std::vector<Entry> entries;
        m_succeeded &= readAll(folder, entries);
        for (Entry& entry : entries) {
            if (matchesAny(m_rules.excludes, entry.name))
                continue;
            if (entry.type == EntryType::Directory)
                subfolders.push_back(std::move(entry.name));
            else if (isWanted(entry))
                m_succeeded &= copyEntry(folder, entry) == 0;
        }
    }

    bool enter(const Platform::Folder& subfolder, const std::string& name) override
    {
        // A target inside of the source must not be copied into itself, or it would never end.
        if (subfolder.identity() == m_root && m_root != Platform::FolderIdentity{})
            return false;
        const Platform::ErrorCode code = m_targets.top().createChild(name, subfolder);
        Platform::Folder target = m_targets.top().openChild(name);
        if (code != 0)
            m_rules.report(Separators::join(m_path, name), code);
        if (code != 0 || !target.valid()) {
            m_succeeded = false;
            return false;
        }
        m_targets.push(std::move(target));
        m_ends.push_back(m_path.size());
        m_path = Separators::join(m_path, name);
        return true;
    }

    bool leave(const Platform::Folder&, const std::string&) override
    {
        m_path.resize(m_ends.back());
        m_ends.pop_back();
        return m_targets.pop();
    }

private:
    bool isWanted(const Entry& entry) const
    {
        return entry.type == EntryType::DirectoryLink || m_rules.includes.empty() ||
               matchesAny(m_rules.includes, entry.name);
    }

    Platform::ErrorCode copyEntry(const Platform::Folder& folder, const Entry& entry) const
    {
        if (entry.type == EntryType::File)
            return folder.copyFile(entry.name, m_targets.top());
        return folder.copyLink(entry.name, entry.type, m_targets.top());
    }

    const CopyRules& m_rules;
    FolderStack m_targets;
    Platform::FolderIdentity m_root;
    std::string m_path;
    std::vector<std::size_t> m_ends;
    bool m_succeeded = true;
};

// Removes files on the way down and directories on the way up, when they are empty.
class Remover : public Visitor {
public:
    explicit Remover(bool force) : m_force(force) {}

    bool succeeded() const { return m_succeeded; }

    void visit(const Platform::Folder& folder, std::vector<std::string>& subfolders) override
    {
        std::vector<Entry> entries;
        m_succeeded &= readAll(folder, entries);
        if (m_force)
            folder.allowRemoval();
        for (Entry& entry : entries) {
            if (entry.type == EntryType::Directory)
                subfolders.push_back(std::move(entry.name));
            else if (entry.type == EntryType::File)
                m_succeeded &= folder.removeFile(entry.name, m_force) == 0;
            else
                m_succeeded &= folder.removeLink(entry.name, entry.type) == 0;
        }
    }

    bool enter(const Platform::Folder&, const std::string&) override { return true; }

    bool leave(const Platform::Folder& folder, const std::string& name) override
    {
        m_succeeded &= folder.removeChild(name) == 0;
        return true;
    }

private:
    bool m_force;
    bool m_succeeded = true;
};

}

// Depth-first with an explicit stack, so that no depth overflows. The invariant: levels and folders
// are of one height, and level.next is the subfolder that the walk is in, or is to enter.
bool walk(Platform::Folder root, Visitor& visitor)
{
    struct Level {
        std::vector<std::string> subfolders;
        std::size_t next = 0;
    };
    bool succeeded = true;
    FolderStack folders;
    std::vector<Level> levels(1);
    folders.push(std::move(root));
    visitor.visit(folders.top(), levels.back().subfolders);
    while (true) {
        Level& level = levels.back();
        if (level.next < level.subfolders.size()) {
            const std::string& name = level.subfolders[level.next];
            Platform::Folder child = folders.top().openChild(name);
            succeeded &= child.valid();
            if (!child.valid() || !visitor.enter(child, name)) {
                ++level.next;
                continue;
            }
            folders.push(std::move(child));
            levels.emplace_back();
            visitor.visit(folders.top(), levels.back().subfolders);
            continue;
        }
        levels.pop_back();
        if (levels.empty())
            return succeeded;
        if (!folders.pop())
            return false;
        Level& parent = levels.back();
        if (!visitor.leave(folders.top(), parent.subfolders[parent.next++]))
            return false;
    }
}

bool copy(const std::string& source, const std::string& target, const CopyRules& rules)
{
    Platform::Folder folder(source);
    Copier copier(target, rules);
    return folder.valid() && copier.succeeded() && walk(std::move(folder), copier) &&
           copier.succeeded();
}

bool remove(const std::string& path, bool force)
{
    std::string name = path;
    Separators::removeFinal(name);
    const EntryType type = Platform::entryType(name);
    if (type == EntryType::DirectoryLink)
        return Platform::removeLink(name, type) == 0;
    if (type != EntryType::Directory)
        return false;
    // From here on the name may lead elsewhere at any time: what was opened counts.
    Platform::Folder folder = Platform::Folder::openItself(name);
    const Platform::FolderIdentity identity = folder.identity();
    Remover remover(force);
    const bool emptied = folder.valid() && walk(std::move(folder), remover) && remover.succeeded();
    if (!(Platform::Folder::openItself(name).identity() == identity))
        return false;
    // Tried in any case; a directory in which something remained is refused by the system.
    return Platform::removeDirectory(name) == 0 && emptied;
}

}
