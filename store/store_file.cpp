#include "store/store_file.h"

#include "platform/posix/retry.h"

#include <cerrno>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace Tools::Store {

namespace {

constexpr int Safely = O_CLOEXEC | O_NOFOLLOW | O_NOCTTY | O_NONBLOCK;

std::string directoryOf(const std::string& path)
{
    return path.substr(0, path.find_last_of('/'));
}

FileDescriptor refuse(int cause)
{
    errno = cause;
    return FileDescriptor();
}

// Somebody else's file, put here by a link of the file system for instance, must not be changed by
// root; everybody else may change what the system lets them.
bool isTrusted(int file, const std::string& path)
{
    struct stat info {};
    struct stat directory {};
    if (::fstat(file, &info) != 0 || !S_ISREG(info.st_mode))
        return false;
    if (info.st_uid == ::geteuid() && info.st_uid != 0)
        return true;
    return ::stat(directoryOf(path).c_str(), &directory) == 0 && info.st_uid == directory.st_uid;
}

// The rights hold whatever the process masks out. What root makes in a user's directory belongs to
// the user, whose own programs could not use their settings otherwise.
bool settle(int file, const std::string& path, mode_t mode)
{
    struct stat directory {};
    if (::geteuid() == 0 && ::stat(directoryOf(path).c_str(), &directory) == 0 &&
        directory.st_uid != 0 && ::fchown(file, directory.st_uid, directory.st_gid) != 0)
        return false;
    return ::fchmod(file, mode) == 0;
}

// A file without a name gets one when it is complete, and is gone with a killed process until then.
bool makeNameless(const std::string& path, mode_t mode, const void* bytes, std::size_t size)
{
    const FileDescriptor file(
        ::open(directoryOf(path).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
    if (!file.valid() || !writeAt(file.get(), bytes, size, 0) || !settle(file.get(), path, mode))
        return false;
    const std::string itself = "/proc/self/fd/" + std::to_string(file.get());
    return ::linkat(AT_FDCWD, itself.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

// For file systems that know no file without a name.
bool makeBeside(const std::string& path, mode_t mode, const void* bytes, std::size_t size)
{
    std::string name = path + ".XXXXXX";
    const FileDescriptor file(::mkostemp(name.data(), O_CLOEXEC));
    if (!file.valid())
        return false;
    const bool isMade = writeAt(file.get(), bytes, size, 0) && settle(file.get(), path, mode) &&
                        ::link(name.c_str(), path.c_str()) == 0;
    const int cause = errno;
    ::unlink(name.c_str());
    errno = cause;
    return isMade;
}

}

FileId fileId(const std::string& path)
{
    struct statx info {};
    if (path.empty() || ::statx(AT_FDCWD, path.c_str(), 0, STATX_INO | STATX_BTIME, &info) != 0)
        return FileId();
    const bool isBornKnown = (info.stx_mask & STATX_BTIME) != 0;
    return {makedev(info.stx_dev_major, info.stx_dev_minor), info.stx_ino,
            isBornKnown ? info.stx_btime.tv_sec * 1000000000 + info.stx_btime.tv_nsec : 0};
}

FileDescriptor openForReading(const std::string& path)
{
    FileDescriptor file(::open(path.c_str(), O_RDONLY | Safely));
    struct stat info {};
    if (file.valid() && (::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)))
        return refuse(EPERM);
    return file;
}

FileDescriptor openForWriting(const std::string& path)
{
    FileDescriptor file(::open(path.c_str(), O_RDWR | Safely));
    return !file.valid() || isTrusted(file.get(), path) ? std::move(file) : refuse(EPERM);
}

FileDescriptor openOrMakeLike(const std::string& path, const std::string& model)
{
    FileDescriptor file = openForWriting(path);
    struct stat info {};
    if (file.valid() || errno != ENOENT || ::stat(model.c_str(), &info) != 0)
        return file;
    FileDescriptor made(
        ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | Safely, S_IRUSR | S_IWUSR));
    if (!made.valid())
        return errno == EEXIST ? openForWriting(path) : FileDescriptor();
    return settle(made.get(), path, info.st_mode & 07777) ? std::move(made) : FileDescriptor();
}

bool makeStoreFile(const std::string& path, mode_t mode, const void* bytes, std::size_t size)
{
    if (makeNameless(path, mode, bytes, size))
        return true;
    const bool isUnknown = errno == EOPNOTSUPP || errno == EISDIR || errno == ENOENT;
    return isUnknown && makeBeside(path, mode, bytes, size);
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
    const FileDescriptor made(::open(path.c_str(), O_RDONLY | O_DIRECTORY | Safely));
    return made.valid() && settle(made.get(), path, mode);
}

bool writeAt(int file, const void* bytes, std::size_t size, off_t position)
{
    const auto* next = static_cast<const char*>(bytes);
    while (size > 0) {
        const auto written =
            Platform::retryInterrupted([&] { return ::pwrite(file, next, size, position); });
        if (written <= 0) {
            errno = written == 0 ? ENOSPC : errno;
            return false;
        }
        next += written;
        position += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

}
