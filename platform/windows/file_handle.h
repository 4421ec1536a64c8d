#pragma once

#include "platform/filesystem.h"

#include <windows.h>

// file_handle.h - what the system's file calls return: handles, attributes, causes.
namespace Tools::Platform {

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

// Never 0, which is success.
ErrorCode lastError();

}
