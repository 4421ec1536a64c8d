#include "support/process_probe.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
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

void interrupt(unsigned long) {}

bool handlesMessagesWhileTracing()
{
    return true;
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

void interrupt(unsigned long processId)
{
    ::kill(static_cast<pid_t>(processId), SIGINT);
}

bool handlesMessagesWhileTracing()
{
    return false;
}

int countHandles()
{
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

#endif

}
