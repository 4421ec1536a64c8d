#include "platform/filesystem.h"

#include "platform/posix/file_access.h"
#include "platform/posix/file_copy.h"
#include "platform/posix/native_path.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/random.h>
#include <sys/stat.h>

namespace Tools::Platform {

namespace {

constexpr mode_t DirectoryMode = 0777;
constexpr mode_t Permissions = 0777;

constexpr ErrorCode AccessDenied = 5;
constexpr ErrorCode SharingViolation = 32;
constexpr ErrorCode AlreadyExists = 183;

// How a stream is to be opened, read from the C library's mode text.
struct OpenMode {
    int flags = 0;
    bool truncates = false;
    std::string text;
};

// "b" and "t" mean nothing here: text is written as it is.
OpenMode parseMode(const std::string& mode)
{
    OpenMode result;
    const bool updates = mode.find('+') != std::string::npos;
    const int access = updates ? O_RDWR : O_WRONLY;
    const char kind = mode[0];
    if (kind == 'r')
        result.flags = updates ? O_RDWR : O_RDONLY;
    else if (kind == 'w')
        result.flags = access | O_CREAT;
    else if (kind == 'a')
        result.flags = access | O_CREAT | O_APPEND;
    if (mode.find('x') != std::string::npos)
        result.flags |= O_EXCL;
    result.truncates = kind == 'w';
    result.text = std::string(1, kind) + (updates ? "+" : "");
    return result;
}

FolderEntry entry(const NativePath& path)
{
    return {path.folder(), path.name()};
}

// An open file that is copied.
struct Source {
    FileDescriptor file;
    struct stat status = {};
};

// 0 if an existing file may be overwritten; it is locked then.
ErrorCode takeOver(const FileDescriptor& file, struct stat& status, const NativePath& path,
                   const Source& source)
{
    if (!file.valid() || ::fstat(file.get(), &status) != 0)
        return path.error(errno);
    const bool isSame =
        source.status.st_dev == status.st_dev && source.status.st_ino == status.st_ino;
    if (isSame || !lockFile(file.get(), FileLock::Exclusive))
        return SharingViolation;
    if (!S_ISREG(status.st_mode) || isWriteProtected(path.folder(), path.name(), status))
        return AccessDenied;
    return 0;
}

ErrorCode copyOver(const Source& source, FileDescriptor target, const NativePath& to)
{
    struct stat status = {};
    if (const ErrorCode code = takeOver(target, status, to, source); code != 0)
        return code;
    const int cause =
        ::ftruncate(target.get(), 0) != 0
            ? errno
            : copyInto(source.file, source.status, std::move(target), status, entry(to));
    return cause == 0 ? 0 : errorCode(cause);
}

// A file of its own beside another one, with its owner. An empty name says that it failed.
FileDescriptor makeBeside(const std::string& path, const struct stat& status, std::string& name)
{
    unsigned long long random = 0;
    if (::getrandom(&random, sizeof random, 0) != ssize_t(sizeof random))
        return FileDescriptor();
    name = path.substr(0, path.rfind('/') + 1) + ".copy-" + std::to_string(random) + ".tmp";
    FileDescriptor file(
        ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    // An ordinary user keeps it himself.
    if (file.valid())
        (void)!::fchown(file.get(), status.st_uid, status.st_gid);
    return file;
}

// The copy takes the name of the link's target when it is complete, so that a failure changes
// neither the link nor the target.
ErrorCode copyThroughLink(const Source& source, const NativePath& to)
{
    const FileDescriptor target = to.open(O_WRONLY | O_NONBLOCK | O_NOCTTY);
    struct stat status = {};
    if (const ErrorCode code = takeOver(target, status, to, source); code != 0)
        return code;
    std::string path(PATH_MAX, '\0');
    const std::string opened = "/proc/self/fd/" + std::to_string(target.get());
    const ssize_t length = ::readlink(opened.c_str(), path.data(), path.size());
    if (length < 0)
        return errorCode(errno);
    path.resize(std::size_t(length));
    std::string name;
    FileDescriptor beside = makeBeside(path, status, name);
    struct stat besideStatus = {};
    if (!beside.valid() || ::fstat(beside.get(), &besideStatus) != 0)
        return errorCode(errno);
    int cause = copyInto(source.file, source.status, std::move(beside), besideStatus,
                         {AT_FDCWD, name.c_str()});
    if (cause == 0 && ::rename(name.c_str(), path.c_str()) != 0) {
        cause = errno;
        ::unlink(name.c_str());
    }
    return cause == 0 ? 0 : errorCode(cause);
}

// A target that must not exist yet.
int copyNew(const NativePath& from, const NativePath& to)
{
    Source source = {from.open(O_RDONLY | O_NONBLOCK | O_NOFOLLOW)};
    if (!source.file.valid() || ::fstat(source.file.get(), &source.status) != 0)
        return errno;
    if (!S_ISREG(source.status.st_mode))
        return EXDEV;
    FileDescriptor target =
        to.open(O_WRONLY | O_CREAT | O_EXCL, source.status.st_mode & Permissions);
    struct stat targetStatus = {};
    if (!target.valid() || ::fstat(target.get(), &targetStatus) != 0)
        return errno;
    return copyInto(source.file, source.status, std::move(target), targetStatus, entry(to));
}

// Moving a directory there would mean to copy a tree, which a rename does not do.
int moveAcross(const NativePath& from, const NativePath& to)
{
    struct stat status = {};
    if (const int cause = from.status(status); cause != 0)
        return cause;
    int cause = S_ISLNK(status.st_mode) ? copyLink(entry(from), entry(to)) : copyNew(from, to);
    if (cause != 0)
        return cause;
    if (::unlinkat(from.folder(), from.name(), 0) == 0)
        return 0;
    // Two of the entry would be left; better the old one alone.
    cause = errno;
    ::unlinkat(to.folder(), to.name(), 0);
    return cause;
}

}

char separator()
{
    return '/';
}

EntryType entryType(const std::string& path)
{
    const NativePath native(path);
    struct stat status = {};
    if (native.status(status) != 0)
        return EntryType::None;
    if (!S_ISLNK(status.st_mode))
        return S_ISDIR(status.st_mode) ? EntryType::Directory : EntryType::File;
    return isDirectory(path) ? EntryType::DirectoryLink : EntryType::FileLink;
}

bool isDirectory(const std::string& path)
{
    const NativePath native(path);
    struct stat status = {};
    return ::fstatat(native.folder(), native.name(), &status, 0) == 0 && S_ISDIR(status.st_mode);
}

ErrorCode createDirectory(const std::string& path)
{
    const NativePath native(path);
    if (::mkdirat(native.folder(), native.name(), DirectoryMode) == 0)
        return 0;
    return native.error(errno);
}

// Walks down through open directories: no level is too deep, and none is looked up twice.
ErrorCode createDirectories(const std::string& path)
{
    std::string text = path.substr(0, path.find('\0'));
    toSlashes(text);
    resolveDots(text);
    FileDescriptor folder(::open(text.starts_with('/') ? "/" : ".", O_PATH | O_CLOEXEC));
    char* rest = nullptr;
    for (const char* name = ::strtok_r(text.data(), "/", &rest); name != nullptr;
         name = ::strtok_r(nullptr, "/", &rest)) {
        FileDescriptor next(::openat(folder.get(), name, O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!next.valid() && errno == ENOENT &&
            (::mkdirat(folder.get(), name, DirectoryMode) == 0 || errno == EEXIST))
            next = FileDescriptor(::openat(folder.get(), name, O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!next.valid())
            return errno == ENOTDIR ? AlreadyExists : errorCode(errno);
        folder = std::move(next);
    }
    return 0;
}

ErrorCode removeDirectory(const std::string& path)
{
    const NativePath native(path);
    if (::unlinkat(native.folder(), native.name(), AT_REMOVEDIR) == 0)
        return 0;
    return native.error(errno);
}

std::string currentDirectory()
{
    const std::unique_ptr<char, void (*)(void*)> text(::getcwd(nullptr, 0), &std::free);
    return text == nullptr ? std::string() : std::string(text.get());
}

bool setCurrentDirectory(const std::string& path)
{
    const NativePath native(path);
    const FileDescriptor folder = native.open(O_PATH | O_DIRECTORY);
    return folder.valid() && ::fchdir(folder.get()) == 0;
}

ErrorCode removeFile(const std::string& path)
{
    const NativePath native(path);
    struct stat status = {};
    if (const int cause = native.status(status); cause != 0)
        return native.error(cause);
    const bool isProtected =
        !S_ISLNK(status.st_mode) && isWriteProtected(native.folder(), native.name(), status);
    if (S_ISDIR(status.st_mode) || isProtected)
        return AccessDenied;
    FileDescriptor hold;
    if (S_ISREG(status.st_mode) && isInUse(native.folder(), native.name(), hold))
        return SharingViolation;
    return ::unlinkat(native.folder(), native.name(), 0) == 0 ? 0 : native.error(errno);
}

ErrorCode removeLink(const std::string& path, EntryType)
{
    const NativePath native(path);
    return ::unlinkat(native.folder(), native.name(), 0) == 0 ? 0 : native.error(errno);
}

ErrorCode copyFile(const std::string& source, const std::string& target)
{
    const NativePath from(source);
    const NativePath to(target);
    Source input = {from.open(O_RDONLY | O_NONBLOCK)};
    if (!input.file.valid())
        return from.error(errno);
    if (::fstat(input.file.get(), &input.status) != 0 || !S_ISREG(input.status.st_mode))
        return AccessDenied;
    if (isLockedAgainst(input.file.get(), FileLock::Shared))
        return SharingViolation;

    // First as a new file, so that what is removed after a failure is certainly the copy's own.
    FileDescriptor output =
        to.open(O_WRONLY | O_CREAT | O_EXCL, input.status.st_mode & Permissions);
    if (!output.valid() && errno == EEXIST) {
        output = to.open(O_WRONLY | O_NONBLOCK | O_NOFOLLOW);
        return !output.valid() && errno == ELOOP ? copyThroughLink(input, to)
                                                 : copyOver(input, std::move(output), to);
    }
    struct stat outputStatus = {};
    if (!output.valid() || ::fstat(output.get(), &outputStatus) != 0)
        return to.error(errno);
    const int cause =
        copyInto(input.file, input.status, std::move(output), outputStatus, entry(to));
    return cause == 0 ? 0 : errorCode(cause);
}

ErrorCode renameEntry(const std::string& oldPath, const std::string& newPath)
{
    const NativePath from(oldPath);
    const NativePath to(newPath);
    struct stat status = {};
    FileDescriptor hold;
    if (from.status(status) == 0 && S_ISREG(status.st_mode) &&
        isInUse(from.folder(), from.name(), hold))
        return SharingViolation;
    if (::renameat2(from.folder(), from.name(), to.folder(), to.name(), RENAME_NOREPLACE) == 0)
        return 0;
    int cause = errno;
    // An entry has its own name already, however that is written.
    if (cause == EEXIST && from.isSameName(to))
        return 0;
    if (cause == EXDEV)
        cause = moveAcross(from, to);
    if (cause == 0)
        return 0;
    if (cause == EINVAL || cause == ENOSYS) {
        // The file system cannot find out in the same step whether the new name is free.
        if (to.status(status) == 0)
            return AlreadyExists;
        if (::renameat(from.folder(), from.name(), to.folder(), to.name()) == 0)
            return 0;
        cause = errno;
    }
    const ErrorCode code = from.error(cause);
    return code == errorCode(ENOENT) ? to.error(cause) : code;
}

ErrorCode replaceFile(const std::string& source, const std::string& target)
{
    const NativePath from(source);
    const NativePath to(target);
    struct stat status = {};
    FileDescriptor hold;
    if (to.status(status) == 0 && S_ISREG(status.st_mode)) {
        if (isWriteProtected(to.folder(), to.name(), status))
            return AccessDenied;
        if (isInUse(to.folder(), to.name(), hold))
            return SharingViolation;
    }
    const int result = ::renameat(from.folder(), from.name(), to.folder(), to.name());
    return result == 0 ? 0 : from.error(errno);
}

std::FILE* openStream(const std::string& path, const std::string& mode)
{
    const OpenMode wanted = parseMode(mode);
    const bool reads = (wanted.flags & O_ACCMODE) == O_RDONLY;
    struct stat status = {};
    FileDescriptor file = openLocked(NativePath(path), wanted.flags,
                                     reads ? FileLock::Shared : FileLock::Exclusive, status);
    if (!file.valid() || S_ISDIR(status.st_mode))
        return nullptr;
    // Contents go only when it is certain that nobody else uses them.
    if (wanted.truncates && S_ISREG(status.st_mode) && ::ftruncate(file.get(), 0) != 0)
        return nullptr;
    // From here on the stream owns the descriptor, and with it the lock.
    std::FILE* stream = ::fdopen(file.get(), wanted.text.c_str());
    if (stream != nullptr)
        file.release();
    return stream;
}

bool isLocked(const std::string& path)
{
    const NativePath native(path);
    struct stat status = {};
    if (native.status(status) != 0)
        return false;
    if (S_ISLNK(status.st_mode) && ::fstatat(native.folder(), native.name(), &status, 0) != 0)
        return true;
    if (S_ISDIR(status.st_mode) || isWriteProtected(native.folder(), native.name(), status))
        return true;
    // Without O_NONBLOCK a pipe that nobody reads would hold up the caller.
    const FileDescriptor file = native.open(O_RDWR | O_NONBLOCK);
    return !file.valid() || isLockedAgainst(file.get(), FileLock::Exclusive);
}

}
