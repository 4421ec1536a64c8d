#include "platform/posix/file_copy.h"

#include "platform/posix/retry.h"

#include <algorithm>
#include <array>
#include <climits>
#include <csignal>
#include <ctime>
#include <linux/fs.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>

namespace Tools::Platform {

namespace {

// Below this a read and a write cost less than asking the file system to share or copy blocks.
constexpr off_t SmallFile = 256L * 1024;
constexpr std::size_t BlockSize = std::size_t{64} * 1024;
constexpr std::size_t RangeSize = std::size_t{1} << 30;

// `size` is what is expected from here on. A short read alone is not the end: files that the system
// makes up come in pieces, and many have size 0 and nevertheless contents. Beyond the size a short
// read ends them, before it, and where it is 0, an empty one.
int copyByBlocks(int source, int target, off_t size)
{
    std::array<char, BlockSize> block; // NOLINT(*-member-init): filled by read()
    off_t done = 0;
    while (true) {
        const ssize_t count =
            retryInterrupted([&] { return ::read(source, block.data(), block.size()); });
        if (count == 0)
            return 0;
        const int cause = count < 0 ? errno : writeAll(target, block.data(), std::size_t(count));
        done += count;
        if (cause != 0 || (size > 0 && done >= size && std::size_t(count) < block.size()))
            return cause;
    }
}

// Only the cause of a failure that blocks would meet as well is final; a file system that cannot
// do it itself leaves the rest, from wherever both files are now, to blocks.
int copyBySystem(int source, int target, off_t size)
{
    if (::ioctl(target, FICLONE, source) == 0)
        return 0;
    off_t done = 0;
    while (true) {
        const ssize_t count = retryInterrupted(
            [&] { return ::copy_file_range(source, nullptr, target, nullptr, RangeSize, 0); });
        if (count < 0 && (errno == ENOSPC || errno == EDQUOT || errno == EFBIG))
            return errno;
        if (count <= 0)
            return copyByBlocks(source, target, std::max<off_t>(size - done, 0));
        done += count;
    }
}

// Contents first: permissions that forbid writing would be in the way, and every write sets the
// time.
int copyContents(int source, const struct stat& sourceStatus, int target,
                 const struct stat& targetStatus)
{
    const off_t size = sourceStatus.st_size;
    const int cause =
        size < SmallFile ? copyByBlocks(source, target, size) : copyBySystem(source, target, size);
    if (cause != 0)
        return cause;
    constexpr mode_t Permissions = S_IRWXU | S_IRWXG | S_IRWXO;
    const mode_t wanted = sourceStatus.st_mode & Permissions;
    if ((targetStatus.st_mode & Permissions) != wanted)
        ::fchmod(target, wanted);
    const struct timespec times[2] = {{0, UTIME_OMIT}, sourceStatus.st_mtim};
    ::futimens(target, times);
    return 0;
}

}

int copyInto(const FileDescriptor& source, const struct stat& sourceStatus, FileDescriptor target,
             const struct stat& targetStatus, FolderEntry entry)
{
    int cause = copyContents(source.get(), sourceStatus, target.get(), targetStatus);
    if (const int closed = target.close(); cause == 0)
        cause = closed;
    if (cause != 0)
        ::unlinkat(entry.folder, entry.name, 0);
    return cause;
}

int copyLink(FolderEntry source, FolderEntry target)
{
    std::string text(PATH_MAX, '\0');
    const ssize_t length = ::readlinkat(source.folder, source.name, text.data(), text.size());
    if (length < 0)
        return errno;
    text.resize(std::size_t(length));
    return ::symlinkat(text.c_str(), target.folder, target.name) == 0 ? 0 : errno;
}

int writeAll(int target, const char* bytes, std::size_t size)
{
    std::size_t written = 0;
    return writeAll(target, bytes, size, written);
}

int writeAll(int target, const char* bytes, std::size_t size, std::size_t& written)
{
    written = 0;
    while (written < size) {
        const ssize_t count =
            retryInterrupted([&] { return ::write(target, bytes + written, size - written); });
        if (count < 0)
            return errno;
        written += std::size_t(count);
    }
    return 0;
}

// The signal goes to the thread that writes; one that was pending before is somebody else's.
int writeToPipe(int target, const char* bytes, std::size_t size, std::size_t& written)
{
    sigset_t pipe;
    sigset_t before;
    sigset_t pending;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    sigpending(&pending);
    ::pthread_sigmask(SIG_BLOCK, &pipe, &before);
    const int cause = writeAll(target, bytes, size, written);
    if (cause == EPIPE && sigismember(&pending, SIGPIPE) == 0) {
        const struct timespec atOnce = {};
        retryInterrupted([&] { return ::sigtimedwait(&pipe, nullptr, &atOnce); });
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return cause;
}

}
