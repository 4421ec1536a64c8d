#pragma once

#include "platform/filesystem.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// Directories held open, for operations on whole trees.
namespace Tools::Platform {

struct FolderIdentity {
    std::uint64_t volume = 0;
    std::uint64_t index = 0;
    bool operator==(const FolderIdentity&) const = default;
};

// An open directory. Names below are single names in it, so depth and the length of the whole path
// do not matter where the system has such calls, and nothing leads out of the tree.
class Folder {
public:
    // Not open.
    Folder();
    // Through links.
    explicit Folder(const std::string& path);
    // Not valid if the path names a link. Where folders are known by their paths the name leads to
    // no other directory as long as this one is open.
    static Folder openItself(const std::string& path);
    Folder(Folder&& other) noexcept;
    Folder& operator=(Folder&& other) noexcept;
    ~Folder();

    bool valid() const;
    // Zero if the system does not report it.
    FolderIdentity identity() const;

    // Not valid for a link.
    Folder openChild(const std::string& name) const;
    // Serves for its names only, not for reading its entries.
    Folder openParent() const;

    // `model` gives the new directory's permissions; its owner may always use it.
    ErrorCode createChild(const std::string& name, const Folder& model) const;
    // A file that is write-protected is removed if `force`, and one that somebody has open as well
    // if the system lets that happen.
    ErrorCode removeFile(const std::string& name, bool force) const;
    // Removes the link itself.
    ErrorCode removeLink(const std::string& name, EntryType type) const;
    // An empty directory.
    ErrorCode removeChild(const std::string& name) const;
    // Lets the owner remove what is in the folder.
    void allowRemoval() const;

    // Both copy into `target` under the same name, which must be free there.
    ErrorCode copyFile(const std::string& name, const Folder& target) const;
    ErrorCode copyLink(const std::string& name, EntryType type, const Folder& target) const;

private:
    friend class FolderReader;
    struct State;
    std::unique_ptr<State> m_state;
};

// One walk through the entries of a folder, in the system's order. The folder must stay open, and
// serves one reader at a time.
class FolderReader {
public:
    struct Entry {
        // Valid until the next call, "." and ".." included.
        std::string_view name;
        EntryType type = EntryType::None;
    };

    explicit FolderReader(const Folder& folder);
    FolderReader(const FolderReader&) = delete;
    FolderReader& operator=(const FolderReader&) = delete;
    ~FolderReader();

    // False after the last entry, and when the system failed; failed() says which.
    bool next(Entry& entry);
    bool failed() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}
