#include "platform/folder.h"

#include "platform/posix/file_access.h"
#include "platform/posix/file_copy.h"
#include "platform/posix/native_path.h"

#include <cstddef>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tools::Platform {

namespace {

constexpr int ReadFlags = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC;
constexpr mode_t Permissions = 0777;
constexpr std::size_t BufferSize = std::size_t{64} * 1024;
constexpr ErrorCode AccessDenied = 5;

EntryType typeOf(mode_t mode)
{
    return S_ISDIR(mode) ? EntryType::Directory : EntryType::File;
}

// For the entries whose type the enumeration itself does not report: links, and all of them on a
// few file systems.
EntryType lookUpType(int folder, const char* name)
{
    struct stat status = {};
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return EntryType::None;
    if (!S_ISLNK(status.st_mode))
        return typeOf(status.st_mode);
    const bool leadsToDirectory =
        ::fstatat(folder, name, &status, 0) == 0 && S_ISDIR(status.st_mode);
    return leadsToDirectory ? EntryType::DirectoryLink : EntryType::FileLink;
}

}

// A folder is its descriptor: everything below it is named relative to that, so a tree that is
// renamed meanwhile is still the one that was opened.
struct Folder::State {
    explicit State(FileDescriptor descriptor) : file(std::move(descriptor)) {}

    FileDescriptor file;

    int get() const { return file.get(); }
};

Folder::Folder() = default;

Folder::Folder(const std::string& path)
    : m_state(std::make_unique<State>(NativePath(path).open(ReadFlags)))
{}

Folder Folder::openItself(const std::string& path)
{
    Folder folder;
    folder.m_state = std::make_unique<State>(NativePath(path).open(ReadFlags | O_NOFOLLOW));
    return folder;
}

Folder::Folder(Folder&& other) noexcept = default;
Folder& Folder::operator=(Folder&& other) noexcept = default;
Folder::~Folder() = default;

bool Folder::valid() const
{
    return m_state != nullptr && m_state->file.valid();
}

FolderIdentity Folder::identity() const
{
    struct stat status = {};
    if (!valid() || ::fstat(m_state->get(), &status) != 0)
        return {};
    return {status.st_dev, status.st_ino};
}

// O_NOFOLLOW: a directory that became a link since it was listed leads nowhere.
Folder Folder::openChild(const std::string& name) const
{
    Folder child;
    child.m_state = std::make_unique<State>(
        FileDescriptor(::openat(m_state->get(), name.c_str(), ReadFlags | O_NOFOLLOW)));
    return child;
}

Folder Folder::openParent() const
{
    Folder parent;
    parent.m_state = std::make_unique<State>(
        FileDescriptor(::openat(m_state->get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC)));
    return parent;
}

ErrorCode Folder::createChild(const std::string& name, const Folder& model) const
{
    struct stat status = {};
    if (::fstat(model.m_state->get(), &status) != 0)
        return errorCode(errno);
    const mode_t mode = (status.st_mode & Permissions) | S_IRWXU;
    return ::mkdirat(m_state->get(), name.c_str(), mode) == 0 ? 0 : errorCode(errno);
}

ErrorCode Folder::removeFile(const std::string& name, bool force) const
{
    // The kernel asks for the right to change the directory only; the file's own protection is ours
    // to mind.
    FileDescriptor hold;
    if (!force) {
        struct stat status = {};
        if (::fstatat(m_state->get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            return errorCode(errno);
        if (isWriteProtected(m_state->get(), name.c_str(), status))
            return AccessDenied;
        if (S_ISREG(status.st_mode) && isInUse(m_state->get(), name.c_str(), hold))
            return errorCode(EBUSY);
    }
    return ::unlinkat(m_state->get(), name.c_str(), 0) == 0 ? 0 : errorCode(errno);
}

ErrorCode Folder::removeLink(const std::string& name, EntryType) const
{
    return ::unlinkat(m_state->get(), name.c_str(), 0) == 0 ? 0 : errorCode(errno);
}

ErrorCode Folder::removeChild(const std::string& name) const
{
    const int result = ::unlinkat(m_state->get(), name.c_str(), AT_REMOVEDIR);
    return result == 0 ? 0 : errorCode(errno);
}

// What may be removed from a directory is a matter of the directory's rights, not of the entry's.
void Folder::allowRemoval() const
{
    struct stat status = {};
    if (::fstat(m_state->get(), &status) == 0 && (status.st_mode & S_IWUSR) == 0)
        ::fchmod(m_state->get(), (status.st_mode & Permissions) | S_IRWXU);
}

ErrorCode Folder::copyFile(const std::string& name, const Folder& target) const
{
    const FileDescriptor input(
        ::openat(m_state->get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat inputStatus = {};
    if (!input.valid() || ::fstat(input.get(), &inputStatus) != 0)
        return errorCode(errno);
    if (!S_ISREG(inputStatus.st_mode))
        return AccessDenied;
    if (isLockedAgainst(input.get(), FileLock::Shared))
        return errorCode(EAGAIN);
    FileDescriptor output(::openat(target.m_state->get(), name.c_str(),
                                   O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                   inputStatus.st_mode & Permissions));
    struct stat outputStatus = {};
    if (!output.valid() || ::fstat(output.get(), &outputStatus) != 0)
        return errorCode(errno);
    const int cause = copyInto(input, inputStatus, std::move(output), outputStatus,
                               {target.m_state->get(), name.c_str()});
    return cause == 0 ? 0 : errorCode(cause);
}

ErrorCode Folder::copyLink(const std::string& name, EntryType, const Folder& target) const
{
    const int cause =
        Platform::copyLink({m_state->get(), name.c_str()}, {target.m_state->get(), name.c_str()});
    return cause == 0 ? 0 : errorCode(cause);
}

// The entries come in blocks straight from the kernel; the C library's reader would allocate and
// copy.
struct FolderReader::State {
    int folder = -1;
    bool failed = false;
    std::size_t position = 0;
    std::size_t size = 0;
    alignas(dirent64) char buffer[BufferSize];
};

FolderReader::FolderReader(const Folder& folder) : m_state(new State)
{
    m_state->folder = folder.valid() ? folder.m_state->get() : -1;
    m_state->failed = ::lseek64(m_state->folder, 0, SEEK_SET) != 0;
}

FolderReader::~FolderReader() = default;

bool FolderReader::next(Entry& entry)
{
    State& state = *m_state;
    if (state.position == state.size) {
        if (state.failed)
            return false;
        const ssize_t count = ::getdents64(state.folder, state.buffer, BufferSize);
        state.failed = count < 0;
        state.position = 0;
        state.size = count < 0 ? 0 : std::size_t(count);
        if (state.size == 0)
            return false;
    }
    const auto* record = reinterpret_cast<const dirent64*>(state.buffer + state.position);
    state.position += record->d_reclen;
    entry.name = record->d_name;
    switch (record->d_type) {
    case DT_DIR:
        entry.type = EntryType::Directory;
        break;
    case DT_LNK:
    case DT_UNKNOWN:
        entry.type = lookUpType(state.folder, record->d_name);
        break;
    default:
        entry.type = EntryType::File;
    }
    return true;
}

bool FolderReader::failed() const
{
    return m_state->failed;
}

}
