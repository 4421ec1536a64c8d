#include "platform/file_blocks.h"

#include "platform/windows/native_path.h"

#include <algorithm>
#include <memory>

namespace Tools::Platform {

namespace {

constexpr DWORD BlockSize = 64U * 1024U;

HANDLE handle(std::intptr_t value)
{
    return reinterpret_cast<HANDLE>(value);
}

std::intptr_t open(const std::string& path, DWORD access, DWORD sharing, DWORD creation)
{
    return reinterpret_cast<std::intptr_t>(::CreateFileA(nativePath(path).c_str(), access, sharing,
                                                         nullptr, creation, FILE_ATTRIBUTE_NORMAL,
                                                         nullptr));
}

OVERLAPPED position(std::uint64_t offset)
{
    OVERLAPPED result = {};
    result.Offset = static_cast<DWORD>(offset);
    result.OffsetHigh = static_cast<DWORD>(offset >> 32U);
    return result;
}

// Keeps readers out of the region while it is being written, so that none sees half of a block.
bool writeLocked(HANDLE file, std::uint64_t offset, const char* bytes, DWORD size)
{
    OVERLAPPED region = position(offset);
    if (::LockFile(file, region.Offset, region.OffsetHigh, size, 0) == FALSE)
        return false;
    DWORD written = 0;
    const BOOL done = ::WriteFile(file, bytes, size, &written, nullptr);
    ::UnlockFile(file, region.Offset, region.OffsetHigh, size, 0);
    return done != FALSE && written == size;
}

}

InputFile::InputFile(const std::string& path)
    : m_handle(open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    OPEN_EXISTING))
{}

InputFile::~InputFile()
{
    if (valid())
        ::CloseHandle(handle(m_handle));
}

std::uint64_t InputFile::size() const
{
    LARGE_INTEGER size = {};
    return ::GetFileSizeEx(handle(m_handle), &size) != FALSE
               ? static_cast<std::uint64_t>(size.QuadPart)
               : 0;
}

bool InputFile::read(std::uint64_t offset, void* buffer, std::size_t capacity,
                     std::size_t& count) const
{
    constexpr std::size_t Largest = std::size_t{1} << 30U;
    count = 0;
    while (count < capacity) {
        const DWORD wanted = static_cast<DWORD>(std::min(capacity - count, Largest));
        OVERLAPPED from = position(offset + count);
        DWORD part = 0;
        if (::ReadFile(handle(m_handle), static_cast<char*>(buffer) + count, wanted, &part,
                       &from) == FALSE &&
            ::GetLastError() != ERROR_HANDLE_EOF)
            return false;
        if (part == 0)
            break;
        count += part;
    }
    return true;
}

AppendedFile::AppendedFile(const std::string& path)
    : m_handle(open(path, GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS))
{
    LARGE_INTEGER end = {};
    if (valid() && ::SetFilePointerEx(handle(m_handle), end, &end, FILE_END) != FALSE)
        m_start = static_cast<std::uint64_t>(end.QuadPart);
}

AppendedFile::~AppendedFile()
{
    if (valid())
        ::CloseHandle(handle(m_handle));
}

bool AppendedFile::isSame(const InputFile& other) const
{
    BY_HANDLE_FILE_INFORMATION own = {};
    BY_HANDLE_FILE_INFORMATION source = {};
    return ::GetFileInformationByHandle(handle(m_handle), &own) != FALSE &&
           ::GetFileInformationByHandle(handle(other.m_handle), &source) != FALSE &&
           own.dwVolumeSerialNumber == source.dwVolumeSerialNumber &&
           own.nFileIndexHigh == source.nFileIndexHigh && own.nFileIndexLow == source.nFileIndexLow;
}

bool AppendedFile::append(const InputFile& source)
{
    const std::unique_ptr<char[]> block(new char[BlockSize]);
    std::uint64_t end = m_start;
    std::size_t count = 0;
    do {
        const bool written =
            source.read(end - m_start, block.get(), BlockSize, count) &&
            (count == 0 || writeLocked(handle(m_handle), end, block.get(), DWORD(count)));
        if (!written) {
            LARGE_INTEGER start = {};
            start.QuadPart = static_cast<LONGLONG>(m_start);
            ::SetFilePointerEx(handle(m_handle), start, nullptr, FILE_BEGIN);
            ::SetEndOfFile(handle(m_handle));
            return false;
        }
        end += count;
    } while (count == BlockSize);
    return true;
}

}
