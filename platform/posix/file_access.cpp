#include "platform/posix/file_access.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

// Of the whole file.
struct flock wholeFile(FileLock lock)
{
    struct flock result = {};
    result.l_type = lock == FileLock::Exclusive ? F_WRLCK : F_RDLCK;
    result.l_whence = SEEK_SET;
    return result;
}

}

// Only the first byte is asked for: who holds a file has all of it locked, while a database in use,
// which may be copied, has locks elsewhere.
bool isLockedAgainst(int file, FileLock lock)
{
    struct flock found = wholeFile(lock);
    found.l_len = 1;
    return ::fcntl(file, F_OFD_GETLK, &found) == 0 && found.l_type != F_UNLCK;
}

bool lockFile(int file, FileLock lock)
{
    const struct flock wanted = wholeFile(lock);
    return ::fcntl(file, F_OFD_SETLK, &wanted) == 0 || (errno != EAGAIN && errno != EACCES);
}

bool isWriteProtected(int folder, const char* name, const struct stat& status)
{
    constexpr mode_t AnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    return (status.st_mode & AnyWrite) == 0 || ::faccessat(folder, name, W_OK, AT_EACCESS) != 0;
}

}
