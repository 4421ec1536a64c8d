#include "platform/open_file.h"

#include "platform/posix/file_access.h"
#include "platform/posix/file_copy.h"
#include "platform/posix/native_path.h"
#include "platform/posix/retry.h"

#include <algorithm>
#include <fcntl.h>
#include <memory>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>

namespace Tools::Platform {

namespace {

constexpr std::size_t BlockSize = std::size_t{256} * 1024;
// So much is mapped at once, which a process has room for however large the file is.
constexpr std::size_t WindowSize = std::size_t{8} * 1024 * 1024;

int descriptor(std::intptr_t handle)
{
    return static_cast<int>(handle);
}

bool isPlainFile(const FileDescriptor& file, struct stat& status)
{
    return file.valid() && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
}

// Writes as much as goes straight from the system's cache, without a copy in between, and returns
// how much that is. A source that shrinks meanwhile only ends it: the pages are touched by the
// system alone, which reports what is missing.
std::uint64_t writeMapped(int target, int source, std::uint64_t size)
{
    std::uint64_t done = 0;
    while (size - done >= BlockSize) {
        const std::size_t part = std::min<std::uint64_t>(size - done, WindowSize);
        void* const window =
            ::mmap(nullptr, part, PROT_READ, MAP_SHARED | MAP_POPULATE, source, off_t(done));
        if (window == MAP_FAILED)
            return done;
        const ssize_t count = ::write(target, window, part);
        ::munmap(window, part);
        if (count > 0)
            done += std::uint64_t(count);
        if (count < 0 || std::size_t(count) < part)
            return done;
    }
    return done;
}

void takeBack(int target, std::uint64_t start, std::uint64_t appended)
{
    // A writer that ignores the lock may have appended by now; its text is not ours to cut.
    struct stat status = {};
    if (::fstat(target, &status) == 0 && std::uint64_t(status.st_size) <= start + appended)
        (void)!::ftruncate(target, off_t(start));
}

}

void OpenFile::close()
{
    FileDescriptor(descriptor(m_handle)).close();
    m_handle = None;
}

InputFile::InputFile(const std::string& path)
{
    FileDescriptor file = NativePath(path).open(O_RDONLY | O_NONBLOCK);
    struct stat status = {};
    if (isPlainFile(file, status) && !isLockedAgainst(file.get(), FileLock::Shared))
        m_handle = file.release();
}

std::uint64_t InputFile::size() const
{
    struct stat status = {};
    return ::fstat(descriptor(m_handle), &status) == 0 ? std::uint64_t(status.st_size) : 0;
}

bool InputFile::read(std::uint64_t offset, void* buffer, std::size_t capacity,
                     std::size_t& count) const
{
    count = 0;
    while (count < capacity) {
        const ssize_t part = retryInterrupted([&] {
            return ::pread(descriptor(m_handle), static_cast<char*>(buffer) + count,
                           capacity - count, off_t(offset + count));
        });
        if (part < 0)
            return false;
        if (part == 0)
            break;
        count += std::size_t(part);
    }
    return true;
}

bool OutputFile::open(const std::string& path, Sharing sharing, Content content)
{
    close();
    const NativePath native(path);
    // Without O_NONBLOCK a pipe that nobody reads would hold up the program.
    constexpr int Flags = O_APPEND | O_CREAT | O_NOCTTY | O_NONBLOCK;
    struct stat status = {};
    // A shared lock takes the right to read, with which a pipe would be read by its writer.
    m_canRead =
        sharing == Sharing::All &&
        (::fstatat(native.folder(), native.name(), &status, 0) != 0 || S_ISREG(status.st_mode));
    const FileLock lock = sharing == Sharing::All ? FileLock::Appending : FileLock::Exclusive;
    FileDescriptor file;
    if (m_canRead)
        file = openLocked(native, O_RDWR | Flags, lock, status);
    if (!file.valid() && (!m_canRead || errno == EACCES)) {
        m_canRead = false;
        file = openLocked(native, O_WRONLY | Flags, lock, status);
    }
    if (!file.valid())
        return false;
    m_isPlain = S_ISREG(status.st_mode);
    m_wasTorn = false;
    if (!m_isPlain && (sharing == Sharing::Readers || m_canRead))
        return false;
    if (content == Content::Discard && m_isPlain && ::ftruncate(file.get(), 0) != 0)
        return false;
    ::fcntl(file.get(), F_SETFL, O_APPEND);
    m_handle = file.release();
    return true;
}

bool OutputFile::writeText(const char* text, std::size_t size)
{
    // Nearly every line of a file goes in one call, which is all that it costs.
    const ssize_t count = m_isPlain ? ::write(descriptor(m_handle), text, size) : 0;
    std::size_t written = count > 0 ? std::size_t(count) : 0;
    bool isDone = written == size;
    if (!isDone) {
        std::size_t rest = 0;
        const int target = descriptor(m_handle);
        isDone = (m_isPlain ? writeAll(target, text + written, size - written, rest)
                            : writeToPipe(target, text, size, rest)) == 0;
        written += rest;
    }
    if (written > 0)
        m_wasTorn = text[written - 1] != '\n';
    return isDone;
}

bool OutputFile::endsInsideLine() const
{
    struct stat status = {};
    char last = '\n';
    if (!m_isPlain || !m_canRead || ::fstat(descriptor(m_handle), &status) != 0)
        return m_wasTorn;
    if (status.st_size == 0)
        return false;
    const ssize_t count = retryInterrupted(
        [&] { return ::pread(descriptor(m_handle), &last, 1, status.st_size - 1); });
    return count < 0 ? m_wasTorn : count == 1 && last != '\n';
}

bool OutputFile::isSame(const InputFile& other) const
{
    struct stat own = {};
    struct stat source = {};
    return ::fstat(descriptor(m_handle), &own) == 0 &&
           ::fstat(descriptor(other.m_handle), &source) == 0 && own.st_dev == source.st_dev &&
           own.st_ino == source.st_ino;
}

bool OutputFile::append(const InputFile& source) const
{
    const int target = descriptor(m_handle);
    // The lock is held, so nobody else moves the end.
    struct stat status = {};
    if (::fstat(target, &status) != 0)
        return false;
    const auto start = std::uint64_t(status.st_size);
    // Before the file grows: without memory it stays as it is.
    const std::unique_ptr<char[]> block(new (std::nothrow) char[BlockSize]);
    if (block == nullptr)
        return false;
    std::uint64_t done = writeMapped(target, descriptor(source.m_handle), source.size());
    std::size_t count = 0;
    do {
        if (!source.read(done, block.get(), BlockSize, count) ||
            writeAll(target, block.get(), count) != 0) {
            takeBack(target, start, done + count);
            return false;
        }
        done += count;
    } while (count == BlockSize);
    return true;
}

}
