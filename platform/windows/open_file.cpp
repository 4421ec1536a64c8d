#include "platform/open_file.h"

#include "platform/windows/native_path.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>

#include <windows.h>

namespace Tools::Platform {

namespace {

constexpr DWORD BlockSize = 64U * 1024U;
// What one call of the system is asked for.
constexpr std::size_t LargestCall = std::size_t{1} << 30U;

HANDLE handle(std::intptr_t value)
{
    return reinterpret_cast<HANDLE>(value);
}

std::intptr_t openHandle(const std::string& path, DWORD access, DWORD sharing, DWORD creation)
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

std::string withSystemLineEnds(std::string_view text)
{
    std::string result;
    result.reserve(text.size() + 16);
    for (const char c : text) {
        if (c == '\n')
            result += '\r';
        result += c;
    }
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

void OpenFile::close()
{
    if (isOpen())
        ::CloseHandle(handle(m_handle));
    m_handle = None;
}

InputFile::InputFile(const std::string& path)
{
    m_handle = openHandle(path, GENERIC_READ,
                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING);
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
    count = 0;
    while (count < capacity) {
        const DWORD wanted = static_cast<DWORD>(std::min(capacity - count, LargestCall));
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

bool OutputFile::open(const std::string& path, Sharing sharing, Content content)
{
    close();
    const DWORD creation = content == Content::Keep ? OPEN_ALWAYS : CREATE_ALWAYS;
    // The right to append alone makes the system itself put each write at the end. Nobody may
    // delete the file meanwhile: what is written then would vanish.
    constexpr DWORD Append = FILE_APPEND_DATA | SYNCHRONIZE;
    constexpr DWORD Shared = FILE_SHARE_READ | FILE_SHARE_WRITE;
    m_wasTorn = false;
    m_canRead = sharing == Sharing::All;
    m_handle = m_canRead ? openHandle(path, Append | FILE_READ_DATA, Shared, creation)
                         : openHandle(path, GENERIC_WRITE, FILE_SHARE_READ, creation);
    if (!isOpen() && m_canRead) {
        m_canRead = false;
        m_handle = openHandle(path, Append, Shared, creation);
    }
    m_isPlain = isOpen() && ::GetFileType(handle(m_handle)) == FILE_TYPE_DISK;
    return isOpen();
}

bool OutputFile::writeText(const char* text, std::size_t size)
{
    const std::string line = withSystemLineEnds(std::string_view(text, size));
    const char* rest = line.data();
    std::size_t count = line.size();
    while (count > 0) {
        const auto part = static_cast<DWORD>(std::min(count, LargestCall));
        DWORD written = 0;
        if (::WriteFile(handle(m_handle), rest, part, &written, nullptr) == FALSE || written == 0)
            return false;
        rest += written;
        count -= written;
        m_wasTorn = rest[-1] != '\n';
    }
    return true;
}

bool OutputFile::endsInsideLine() const
{
    LARGE_INTEGER size = {};
    if (!m_isPlain || !m_canRead || ::GetFileSizeEx(handle(m_handle), &size) == FALSE)
        return m_wasTorn;
    if (size.QuadPart == 0)
        return false;
    OVERLAPPED last = position(static_cast<std::uint64_t>(size.QuadPart) - 1);
    char c = '\n';
    DWORD count = 0;
    return ::ReadFile(handle(m_handle), &c, 1, &count, &last) == FALSE ? m_wasTorn
                                                                       : count == 1 && c != '\n';
}

bool OutputFile::isSame(const InputFile& other) const
{
    BY_HANDLE_FILE_INFORMATION own = {};
    BY_HANDLE_FILE_INFORMATION source = {};
    return ::GetFileInformationByHandle(handle(m_handle), &own) != FALSE &&
           ::GetFileInformationByHandle(handle(other.m_handle), &source) != FALSE &&
           own.dwVolumeSerialNumber == source.dwVolumeSerialNumber &&
           own.nFileIndexHigh == source.nFileIndexHigh && own.nFileIndexLow == source.nFileIndexLow;
}

bool OutputFile::append(const InputFile& source) const
{
    LARGE_INTEGER start = {};
    if (::SetFilePointerEx(handle(m_handle), start, &start, FILE_END) == FALSE)
        start.QuadPart = 0;
    const std::unique_ptr<char[]> block(new (std::nothrow) char[BlockSize]);
    if (block == nullptr)
        return false;
    std::uint64_t done = 0;
    std::size_t count = 0;
    do {
        const bool written =
            source.read(done, block.get(), BlockSize, count) &&
            (count == 0 ||
             writeLocked(handle(m_handle), static_cast<std::uint64_t>(start.QuadPart) + done,
                         block.get(), DWORD(count)));
        if (!written) {
            ::SetFilePointerEx(handle(m_handle), start, nullptr, FILE_BEGIN);
            ::SetEndOfFile(handle(m_handle));
            return false;
        }
        done += count;
    } while (count == BlockSize);
    return true;
}

}
