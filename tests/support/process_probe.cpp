#include "support/process_probe.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#endif

namespace MdToolsTest {

#ifdef _WIN32

bool appendsInOneStep()
{
    return ::GetProcAddress(::GetModuleHandleA("ntdll.dll"), "wine_get_version") == nullptr;
}

void interrupt(unsigned long) {}

#else

bool appendsInOneStep()
{
    return true;
}

void interrupt(unsigned long processId)
{
    ::kill(static_cast<pid_t>(processId), SIGINT);
}

#endif

}
