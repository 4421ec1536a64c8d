#include "platform/lifetime.h"

#include <array>
#include <atomic>
#include <cstdlib>

#include <windows.h>

namespace Tools::Platform {

namespace {

using Handler = void (*)();

std::array<std::atomic<Handler>, 8> s_endHandlers{};
std::atomic<std::size_t> s_endHandlerCount{0};

void callEndHandlers()
{
    for (auto handler = s_endHandlers.rbegin(); handler != s_endHandlers.rend(); ++handler) {
        if (const Handler call = handler->exchange(nullptr))
            call();
    }
}

}

void onLibraryEnd(void (*handler)())
{
    const std::size_t index = s_endHandlerCount.fetch_add(1);
    if (index >= s_endHandlers.size())
        return;
    s_endHandlers[index] = handler;
    // In a DLL these belong to the DLL and run when it is detached.
    if (index == 0)
        std::atexit(callEndHandlers);
}

bool otherThreadsWereStopped()
{
    using Query = BOOLEAN(WINAPI*)();
    const HMODULE system = ::GetModuleHandleA("ntdll.dll");
    const FARPROC address = system ? ::GetProcAddress(system, "RtlDllShutdownInProgress") : nullptr;
    return address && reinterpret_cast<Query>(reinterpret_cast<void*>(address))();
}

// Processes do not fork here.
void onForkedChild(void (*)()) {}

}
