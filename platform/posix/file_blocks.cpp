#include "platform/file_blocks.h"

#include "platform/posix/native_path.h"

#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

namespace Tools::Platform {

namespace {

constexpr mode_t FileMode = 0666;
constexpr std::size_t BlockSize = std::size_t{256} * 1024;

int descriptor(std::intptr_t handle)
{
    return static_cast<int>(handle);
}

bool isPlainFile(const FileDescriptor& file, struct stat& status)
{
    return file.valid() && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
}

}

InputFile::InputFile(const std::string& path) : m_handle(-1)
{
    FileDescriptor file = NativePath(path).open(O_RDONLY | O_NONBLOCK);
    struct stat status = {};
    if (isPlainFile(file, status) && !isHeld(file.get(), false))
        m_handle = file.release();
}

InputFile::~InputFile()
{
    FileDescriptor(descriptor(m_handle)).close();
}

std::uint64_t InputFile::size() const
{
    struct stat status = {};
    return ::fstat(descriptor(m_handle), &status) == 0 ? std::uint64_t(status.st_size) : 0;
}

bool InputFile::seek(std::uint64_t offset)
{
    return ::lseek(descriptor(m_handle), static_cast<off_t>(offset), SEEK_SET) >= 0;
}

bool InputFile::read(void* buffer, std::size_t capacity, std::size_t& count)
{
    count = 0;
    while (count < capacity) {
        const ssize_t part =
            ::read(descriptor(m_handle), static_cast<char*>(buffer) + count, capacity - count);
        if (part == 0)
            break;
        if (part < 0 && errno != EINTR)
            return false;
        count += part < 0 ? 0 : std::size_t(part);
    }
    return true;
}

AppendedFile::AppendedFile(const std::string& path) : m_handle(-1)
{
    FileDescriptor file =
        NativePath(path).open(O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK, FileMode);
    struct stat status = {};
    if (!isPlainFile(file, status) || !hold(file.get(), true))
        return;
    // Only now nobody else moves the end any more.
    if (::fstat(file.get(), &status) != 0)
        return;
    m_start = std::uint64_t(status.st_size);
    m_handle = file.release();
}

AppendedFile::~AppendedFile()
{
    FileDescriptor(descriptor(m_handle)).close();
}

bool AppendedFile::isSame(const InputFile& other) const
{
    struct stat own = {};
    struct stat source = {};
    return ::fstat(descriptor(m_handle), &own) == 0 &&
           ::fstat(descriptor(other.m_handle), &source) == 0 && own.st_dev == source.st_dev &&
           own.st_ino == source.st_ino;
}

bool AppendedFile::append(InputFile& source)
{
    const std::unique_ptr<char[]> block(new char[BlockSize]);
    std::uint64_t written = 0;
    std::size_t count = 0;
    do {
        if (!source.read(block.get(), BlockSize, count) ||
            writeAll(descriptor(m_handle), block.get(), count) != 0) {
            // A writer that ignores the lock may stand behind by now; its text is not ours to cut.
            struct stat status = {};
            if (::fstat(descriptor(m_handle), &status) == 0 &&
                std::uint64_t(status.st_size) <= m_start + written + count)
                (void)!::ftruncate(descriptor(m_handle), off_t(m_start));
            return false;
        }
        written += count;
    } while (count == BlockSize);
    return true;
}

}
