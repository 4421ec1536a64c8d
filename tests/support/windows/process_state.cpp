#include "support/process_state.h"

#include <windows.h>

#include <tlhelp32.h>

namespace MdToolsTest {

int countThreads()
{
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    int count = 0;
    for (BOOL more = ::Thread32First(snapshot, &entry); more;
         more = ::Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
    ::CloseHandle(snapshot);
    return count;
}

int countHandles()
{
    DWORD count = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &count);
    return static_cast<int>(count);
}

int countChildren()
{
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    int count = 0;
    for (BOOL more = ::Process32First(snapshot, &entry); more;
         more = ::Process32Next(snapshot, &entry))
        count += entry.th32ParentProcessID == ::GetCurrentProcessId() ? 1 : 0;
    ::CloseHandle(snapshot);
    return count;
}

void interrupt(unsigned long) {}

}
