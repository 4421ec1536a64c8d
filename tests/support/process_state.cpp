#include "support/process_state.h"

#ifdef _WIN32
#include <windows.h>

#include <tlhelp32.h>
#else
#include <filesystem>
#include <fstream>
#include <string>
#endif

namespace MdToolsTest {

#ifdef _WIN32

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

#else

namespace {

int countEntries(const std::string& directory)
{
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(directory))
        ++count;
    return count;
}

}

int countThreads()
{
    return countEntries("/proc/self/task");
}

// The one that reads the directory counts each time.
int countHandles()
{
    return countEntries("/proc/self/fd");
}

int countChildren()
{
    int count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream children(task.path() / "children");
        for (std::string id; children >> id;)
            ++count;
    }
    return count;
}

#endif

}
