#include "platform/filesystem.h"

#include "platform/windows/file_handle.h"
#include "platform/windows/native_path.h"

#include <algorithm>
#include <mbstring.h>
#include <shlwapi.h>

namespace Tools::Platform {

std::string nativePath(const std::string& path)
{
    std::string text = path.substr(0, path.find('\0'));
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

std::size_t findBackslash(const std::string& path, std::size_t from)
{
    const auto* begin = reinterpret_cast<const unsigned char*>(path.c_str());
    const unsigned char* found = ::_mbschr(begin + std::min(from, path.size()), '\\');
    return found == nullptr ? std::string::npos : static_cast<std::size_t>(found - begin);
}

std::size_t findLastBackslash(const std::string& path)
{
    const auto* begin = reinterpret_cast<const unsigned char*>(path.c_str());
    const unsigned char* found = ::_mbsrchr(begin, '\\');
    return found == nullptr ? std::string::npos : static_cast<std::size_t>(found - begin);
}

EntryType entryType(DWORD attributes, DWORD tag)
{
    const bool isDirectory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const bool isLink = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
                        (tag == 0 || IsReparseTagNameSurrogate(tag));
    if (isLink)
        return isDirectory ? EntryType::DirectoryLink : EntryType::FileLink;
    return isDirectory ? EntryType::Directory : EntryType::File;
}

ErrorCode lastError()
{
    const DWORD code = ::GetLastError();
    return code == 0 ? ERROR_GEN_FAILURE : code;
}

char separator()
{
    return '\\';
}

EntryType entryType(const std::string& path)
{
    const std::string name = nativePath(path);
    const DWORD attributes = ::GetFileAttributesA(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return EntryType::None;
    DWORD tag = 0;
    // The attributes alone do not say what kind of reparse point it is.
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        WIN32_FIND_DATAA data = {};
        const HANDLE search = ::FindFirstFileA(name.c_str(), &data);
        if (search != INVALID_HANDLE_VALUE) {
            ::FindClose(search);
            tag = data.dwReserved0;
        }
    }
    return entryType(attributes, tag);
}

bool isDirectory(const std::string& path)
{
    return ::PathIsDirectoryA(nativePath(path).c_str()) != FALSE;
}

ErrorCode createDirectory(const std::string& path)
{
    return ::CreateDirectoryA(nativePath(path).c_str(), nullptr) != FALSE ? 0 : lastError();
}

ErrorCode createDirectories(const std::string& path)
{
    const std::string name = nativePath(path);
    ErrorCode code = 0;
    for (std::size_t begin = 0, end = 0; end < name.size(); begin = end + 1) {
        end = std::min(findBackslash(name, begin), name.size());
        const std::string level = name.substr(0, end);
        if (level.empty())
            continue;
        code = ::CreateDirectoryA(level.c_str(), nullptr) != FALSE ? 0 : lastError();
        // Roots, and levels that the user may not look into, cannot be made, but may be there.
        if (code != 0 && isDirectory(level))
            code = 0;
    }
    return isDirectory(name) ? 0 : code;
}

ErrorCode removeDirectory(const std::string& path)
{
    return ::RemoveDirectoryA(nativePath(path).c_str()) != FALSE ? 0 : lastError();
}

std::string currentDirectory()
{
    // Room for a directory that becomes a little longer between the two calls.
    constexpr DWORD Reserve = 20;
    std::string text(::GetCurrentDirectoryA(0, nullptr) + Reserve, '\0');
    const DWORD length = ::GetCurrentDirectoryA(static_cast<DWORD>(text.size()), text.data());
    text.resize(length < text.size() ? length : 0);
    return text;
}

bool setCurrentDirectory(const std::string& path)
{
    return ::SetCurrentDirectoryA(nativePath(path).c_str()) != FALSE;
}

ErrorCode removeFile(const std::string& path)
{
    return ::DeleteFileA(nativePath(path).c_str()) != FALSE ? 0 : lastError();
}

ErrorCode removeLink(const std::string& path, EntryType type)
{
    return type == EntryType::DirectoryLink ? removeDirectory(path) : removeFile(path);
}

ErrorCode copyFile(const std::string& source, const std::string& target)
{
    const BOOL copied = ::CopyFileA(nativePath(source).c_str(), nativePath(target).c_str(), FALSE);
    return copied != FALSE ? 0 : lastError();
}

ErrorCode renameEntry(const std::string& oldPath, const std::string& newPath)
{
    const BOOL moved = ::MoveFileA(nativePath(oldPath).c_str(), nativePath(newPath).c_str());
    return moved != FALSE ? 0 : lastError();
}

ErrorCode replaceFile(const std::string& source, const std::string& target)
{
    const BOOL moved = ::MoveFileExA(nativePath(source).c_str(), nativePath(target).c_str(),
                                     MOVEFILE_REPLACE_EXISTING);
    return moved != FALSE ? 0 : lastError();
}

std::FILE* openStream(const std::string& path, const std::string& mode)
{
    const std::string name = nativePath(path);
    std::string known = mode;
    // Older run-time libraries do not know "x", or empty the file that is there.
    if (std::erase(known, 'x') > 0) {
        const FileHandle made(::CreateFileA(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                            FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!made.valid())
            return nullptr;
    }
    std::FILE* stream = nullptr;
    // "N": child processes do not inherit it.
    if (::fopen_s(&stream, name.c_str(), (known + "N").c_str()) != 0)
        return nullptr;
    return stream;
}

bool isLocked(const std::string& path)
{
    const std::string name = nativePath(path);
    if (::GetFileAttributesA(name.c_str()) == INVALID_FILE_ATTRIBUTES)
        return false;
    const FileHandle file(::CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return !file.valid();
}

}
