#include "platform/append_file.h"

#include "platform/windows/native_path.h"

#include <string_view>

namespace Tools::Platform {

namespace {

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

}

bool AppendFile::open(const std::string& path, Content content)
{
    close();
    // The right to append alone makes the system itself put each write at the end. Nobody may
    // delete the file meanwhile: the lines written then would vanish.
    m_handle = reinterpret_cast<std::intptr_t>(::CreateFileA(
        nativePath(path).c_str(), FILE_APPEND_DATA | SYNCHRONIZE,
        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
        content == Content::Keep ? OPEN_ALWAYS : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    return isOpen();
}

void AppendFile::close()
{
    if (isOpen())
        ::CloseHandle(reinterpret_cast<HANDLE>(m_handle));
    m_handle = -1;
}

void AppendFile::write(const char* text, std::size_t size)
{
    const std::string line = withSystemLineEnds(std::string_view(text, size));
    const char* rest = line.data();
    std::size_t count = line.size();
    while (count > 0) {
        constexpr std::size_t Most = std::size_t{1} << 30U;
        const auto part = static_cast<DWORD>(count < Most ? count : Most);
        DWORD written = 0;
        if (::WriteFile(reinterpret_cast<HANDLE>(m_handle), rest, part, &written, nullptr) ==
                FALSE ||
            written == 0)
            return;
        rest += written;
        count -= written;
    }
}

}
