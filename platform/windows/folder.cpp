#include "platform/folder.h"

#include "platform/windows/file_handle.h"
#include "platform/windows/native_path.h"

namespace Tools::Platform {

// The system knows no names relative to an open directory in its narrow calls, so a folder is its
// path, with a final backslash.
struct Folder::State {
    std::string path;
    // Nobody can rename or remove a directory that is open in this way.
    std::unique_ptr<FileHandle> hold;
};

Folder::Folder() = default;

Folder::Folder(const std::string& path)
{
    if (!isDirectory(path))
        return;
    std::string text = nativePath(path);
    // "C:" is the current directory of that drive, and "C:\" another one.
    if (findLastBackslash(text) != text.size() - 1 && !text.ends_with(':'))
        text += '\\';
    m_state.reset(new State{std::move(text), nullptr});
}

Folder Folder::openItself(const std::string& path)
{
    std::string name = nativePath(path);
    auto hold = std::make_unique<FileHandle>(::CreateFileA(
        name.c_str(), FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
        OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!hold->valid() || Platform::entryType(path) != EntryType::Directory)
        return {};
    Folder folder(path);
    if (folder.valid())
        folder.m_state->hold = std::move(hold);
    return folder;
}

Folder::Folder(Folder&& other) noexcept = default;
Folder& Folder::operator=(Folder&& other) noexcept = default;
Folder::~Folder() = default;

bool Folder::valid() const
{
    return m_state != nullptr;
}

FolderIdentity Folder::identity() const
{
    if (!valid())
        return {};
    // No access asked for, so that no sharing mode is in the way.
    const FileHandle file(::CreateFileA(
        m_state->path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
        OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!file.valid() || ::GetFileInformationByHandle(file.get(), &information) == FALSE)
        return {};
    return {information.dwVolumeSerialNumber,
            (std::uint64_t{information.nFileIndexHigh} << 32U) | information.nFileIndexLow};
}

Folder Folder::openChild(const std::string& name) const
{
    Folder child;
    std::string path = m_state->path + name;
    if (Platform::entryType(path) == EntryType::Directory)
        child.m_state.reset(new State{std::move(path += '\\'), nullptr});
    return child;
}

Folder Folder::openParent() const
{
    Folder parent;
    const std::string& path = m_state->path;
    const std::size_t end = findLastBackslash(path.substr(0, path.size() - 1));
    if (end != std::string::npos)
        parent.m_state.reset(new State{path.substr(0, end + 1), nullptr});
    return parent;
}

ErrorCode Folder::createChild(const std::string& name, const Folder&) const
{
    return createDirectory(m_state->path + name);
}

ErrorCode Folder::removeFile(const std::string& name, bool force) const
{
    const std::string path = m_state->path + name;
    if (force)
        ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    return Platform::removeFile(path);
}

ErrorCode Folder::removeLink(const std::string& name, EntryType type) const
{
    return Platform::removeLink(m_state->path + name, type);
}

ErrorCode Folder::removeChild(const std::string& name) const
{
    return removeDirectory(m_state->path + name);
}

void Folder::allowRemoval() const
{
    ::SetFileAttributesA(m_state->path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

ErrorCode Folder::copyFile(const std::string& name, const Folder& target) const
{
    const BOOL copied =
        ::CopyFileA((m_state->path + name).c_str(), (target.m_state->path + name).c_str(), TRUE);
    return copied != FALSE ? 0 : lastError();
}

ErrorCode Folder::copyLink(const std::string& name, EntryType type, const Folder& target) const
{
    const std::string from = m_state->path + name;
    const std::string to = target.m_state->path + name;
    if (type == EntryType::FileLink) {
        const DWORD flags = COPY_FILE_COPY_SYMLINK | COPY_FILE_FAIL_IF_EXISTS;
        const BOOL copied =
            ::CopyFileExA(from.c_str(), to.c_str(), nullptr, nullptr, nullptr, flags);
        return copied != FALSE ? 0 : lastError();
    }
    // With a link as its template the new directory becomes the same link, if the user may do that.
    if (::CreateDirectoryExA(from.c_str(), to.c_str(), nullptr) == FALSE)
        return lastError();
    if (Platform::entryType(to) == EntryType::DirectoryLink)
        return 0;
    removeDirectory(to);
    return ERROR_NOT_SUPPORTED;
}

// The search begins with the first call, as the system delivers an entry on opening it.
struct FolderReader::State {
    std::string pattern;
    HANDLE search = INVALID_HANDLE_VALUE;
    bool failed = false;
    WIN32_FIND_DATAA data = {};
};

FolderReader::FolderReader(const Folder& folder) : m_state(new State)
{
    if (folder.valid())
        m_state->pattern = folder.m_state->path + "*";
    m_state->failed = !folder.valid();
}

FolderReader::~FolderReader()
{
    if (m_state->search != INVALID_HANDLE_VALUE)
        ::FindClose(m_state->search);
}

bool FolderReader::next(Entry& entry)
{
    State& state = *m_state;
    if (state.failed)
        return false;
    const bool isFirst = state.search == INVALID_HANDLE_VALUE;
    if (isFirst)
        state.search =
            ::FindFirstFileExA(state.pattern.c_str(), FindExInfoBasic, &state.data,
                               FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    const bool found = isFirst ? state.search != INVALID_HANDLE_VALUE
                               : ::FindNextFileA(state.search, &state.data) != FALSE;
    if (!found) {
        const DWORD code = ::GetLastError();
        state.failed = code != ERROR_NO_MORE_FILES && code != ERROR_FILE_NOT_FOUND;
        return false;
    }
    entry.name = state.data.cFileName;
    entry.type = entryType(state.data.dwFileAttributes, state.data.dwReserved0);
    return true;
}

bool FolderReader::failed() const
{
    return m_state->failed;
}

}
