#include "platform/posix/file_access.h"

#include <cerrno>
#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

// The sharing modes of Windows in two bytes. Whoever holds the first one for reading lets nobody
// write; whoever holds the second one for reading writes, and lets others do so. Whoever holds them
// for writing is alone.
constexpr off_t DeniesWriting = 0;
constexpr off_t Appends = 1;
constexpr off_t Both = 2;
constexpr off_t ToTheEnd = 0;

struct flock region(short type, off_t start, off_t length)
{
    struct flock result = {};
    result.l_type = type;
    result.l_whence = SEEK_SET;
    result.l_start = start;
    result.l_len = length;
    return result;
}

// A lock in the way of this one is there.
bool isMet(int file, struct flock wanted)
{
    return ::fcntl(file, F_OFD_GETLK, &wanted) == 0 && wanted.l_type != F_UNLCK;
}

// Whoever removes a file holds it for a moment only, so it is worth to wait for that.
bool isBeingRemoved(int file)
{
    struct flock found = region(F_RDLCK, DeniesWriting, 1);
    return ::fcntl(file, F_OFD_GETLK, &found) == 0 && found.l_type == F_WRLCK &&
           found.l_len == Both;
}

bool take(int file, const struct flock& wanted)
{
    return ::fcntl(file, F_OFD_SETLK, &wanted) == 0 || (errno != EAGAIN && errno != EACCES);
}

}

bool isLockedAgainst(int file, FileLock lock)
{
    switch (lock) {
    case FileLock::Shared:
        return isMet(file, region(F_RDLCK, DeniesWriting, 1));
    case FileLock::Appending:
        return isMet(file, region(F_WRLCK, DeniesWriting, 1));
    case FileLock::Exclusive:
    case FileLock::Removal:
        break;
    }
    return isMet(file, region(F_WRLCK, DeniesWriting, Both));
}

// Readers and those who append take their own byte first and look at the other one afterwards; so
// of two that come at once one sees the other.
bool lockFile(int file, FileLock lock)
{
    switch (lock) {
    case FileLock::Shared:
        return take(file, region(F_RDLCK, DeniesWriting, 1)) &&
               !isMet(file, region(F_WRLCK, Appends, 1));
    case FileLock::Appending:
        return take(file, region(F_RDLCK, Appends, 1)) &&
               !isMet(file, region(F_WRLCK, DeniesWriting, 1));
    case FileLock::Exclusive:
        break;
    case FileLock::Removal:
        return take(file, region(F_WRLCK, DeniesWriting, Both));
    }
    return take(file, region(F_WRLCK, DeniesWriting, ToTheEnd));
}

FileDescriptor openLocked(const NativePath& path, int flags, FileLock lock, struct stat& status)
{
    constexpr int Attempts = 1000;
    constexpr mode_t FileMode = 0666;
    const bool reads = (flags & O_ACCMODE) == O_RDONLY;
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        FileDescriptor file = path.open(flags, FileMode);
        if (!file.valid() || ::fstat(file.get(), &status) != 0)
            break;
        if (!S_ISREG(status.st_mode))
            return file;
        if (!reads && isWriteProtected(status))
            break;
        const bool isMine = lockFile(file.get(), lock);
        // A removal that came first has taken the name away by now, or is about to.
        if (isMine && (reads || (::fstat(file.get(), &status) == 0 && status.st_nlink > 0)))
            return file;
        if (!isMine && !isBeingRemoved(file.get()))
            break;
        ::sched_yield();
    }
    return FileDescriptor();
}

bool isInUse(int folder, const char* name, FileDescriptor& hold)
{
    constexpr int Flags = O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
    hold = FileDescriptor(::openat(folder, name, O_WRONLY | Flags));
    if (hold.valid())
        return !lockFile(hold.get(), FileLock::Removal);
    hold = FileDescriptor(::openat(folder, name, O_RDONLY | Flags));
    return hold.valid() && isLockedAgainst(hold.get(), FileLock::Removal);
}

bool isWriteProtected(const struct stat& status)
{
    constexpr mode_t AnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    return (status.st_mode & AnyWrite) == 0;
}

bool isWriteProtected(int folder, const char* name, const struct stat& status)
{
    return isWriteProtected(status) || ::faccessat(folder, name, W_OK, AT_EACCESS) != 0;
}

}
