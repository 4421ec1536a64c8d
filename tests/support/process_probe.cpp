#include "support/process_probe.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <filesystem>
#include <iterator>

#include <sys/wait.h>
#include <unistd.h>
#endif

namespace MdToolsTest {

#ifdef _WIN32

long runForked(int (*)())
{
    return -1;
}

bool appendsInOneStep()
{
    return ::GetProcAddress(::GetModuleHandleA("ntdll.dll"), "wine_get_version") == nullptr;
}

int countHandles()
{
    DWORD count = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &count);
    return static_cast<int>(count);
}

#else

long runForked(int (*function)())
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(function());
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000;
}

bool appendsInOneStep()
{
    return true;
}

int countHandles()
{
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

#endif

}
