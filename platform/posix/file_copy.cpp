#include "platform/posix/file_copy.h"

#include "platform/posix/retry.h"

#include <array>
#include <climits>
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

// `size` is what the system says; files that it makes up on reading have 0 and nevertheless
// contents. With them alone only an empty read is the end.
int copyByBlocks(int source, int target, off_t size)
{
    std::array<char, BlockSize> block; // NOLINT(*-member-init): filled by read()
    while (true) {
        const ssize_t count =
            retryInterrupted([&] { return ::read(source, block.data(), block.size()); });
        if (count == 0)
            return 0;
        const int cause = count < 0 ? errno : writeAll(target, block.data(), std::size_t(count));
        if (cause != 0 || (size > 0 && std::size_t(count) < block.size()))
            return cause;
    }
}

// Only the cause of a failure that blocks would meet as well is final; a file system that cannot
// do it itself leaves the rest, from wherever both files are now, to blocks.
int copyBySystem(int source, int target, off_t size)
{
    if (::ioctl(target, FICLONE, source) == 0)
        return 0;
    while (true) {
        const ssize_t count = retryInterrupted(
            [&] { return ::copy_file_range(source, nullptr, target, nullptr, RangeSize, 0); });
        if (count == 0)
            return copyByBlocks(source, target, size);
        if (count < 0 && (errno == ENOSPC || errno == EDQUOT || errno == EFBIG))
            return errno;
        if (count < 0)
            return copyByBlocks(source, target, size);
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
    while (size > 0) {
        const ssize_t count = retryInterrupted([&] { return ::write(target, bytes, size); });
        if (count < 0)
            return errno;
        bytes += count;
        size -= std::size_t(count);
    }
    return 0;
}

}
