#include "store/change_counter.h"

#include "platform/posix/file_descriptor.h"
#include "store/store_file.h"

#include <atomic>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Store {

namespace {

constexpr std::size_t Size = sizeof(std::uint64_t);

bool isLongEnough(int file)
{
    struct stat info {};
    return ::fstat(file, &info) == 0 && info.st_size >= static_cast<off_t>(Size);
}

}

ChangeCounter::~ChangeCounter()
{
    if (m_number != nullptr)
        ::munmap(m_number, Size);
}

void ChangeCounter::open(const std::string& path, mode_t mode)
{
    m_number = nullptr;
    Platform::FileDescriptor file(openStoreFile(path, mode));
    m_isWritable = file.valid();
    if (!file.valid())
        file = Platform::FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.valid())
        return;
    // Touching a page behind the end of the file would end the program.
    if (isLongEnough(file.get()) || (m_isWritable && ::ftruncate(file.get(), Size) == 0)) {
        const int access = m_isWritable ? PROT_READ | PROT_WRITE : PROT_READ;
        void* address = ::mmap(nullptr, Size, access, MAP_SHARED, file.get(), 0);
        if (address != MAP_FAILED)
            m_number = static_cast<std::uint64_t*>(address);
    }
}

std::uint64_t ChangeCounter::value() const
{
    return m_number != nullptr ? std::atomic_ref(*m_number).load() : Unknown;
}

std::uint64_t ChangeCounter::begin()
{
    m_mark = 0;
    const std::uint64_t before = value();
    if (m_number == nullptr || !m_isWritable)
        return Unknown;
    m_mark = (before | 1) + (before % 2 == 1 ? 2 : 0);
    std::atomic_ref(*m_number).store(m_mark);
    return before;
}

std::uint64_t ChangeCounter::end()
{
    std::uint64_t mark = m_mark;
    m_mark = 0;
    if (mark == 0 || m_number == nullptr)
        return Unknown;
    const std::uint64_t after = mark + 1;
    return std::atomic_ref(*m_number).compare_exchange_strong(mark, after) ? after : Unknown;
}

}
