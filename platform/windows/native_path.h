#pragma once

#include "platform/filesystem.h"

#include <string>
#include <windows.h>

namespace Tools::Platform {

// A path as the narrow calls take it: with backslashes.
std::string nativePath(const std::string& path);

// The index of the first backslash at or behind `from`, which begins a character, and of the last
// one; std::string::npos if there is none. The second byte of a double-byte character is none.
std::size_t findBackslash(const std::string& path, std::size_t from);
std::size_t findLastBackslash(const std::string& path);

// Owns a handle of a file and closes it.
class FileHandle {
public:
    explicit FileHandle(HANDLE value) : m_value(value) {}
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle()
    {
        if (valid())
            ::CloseHandle(m_value);
    }

    bool valid() const { return m_value != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return m_value; }

private:
    HANDLE m_value;
};

// `attributes` and, for a reparse point, its tag (0 if unknown) as a search reports them. Reparse
// points that do not stand for another name, as those of files kept elsewhere, are no links.
EntryType entryType(DWORD attributes, DWORD tag);

ErrorCode lastError();

}
