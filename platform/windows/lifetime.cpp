#include "platform/lifetime.h"

#include <atomic>
#include <cstdlib>

#include <windows.h>

extern "C" BOOLEAN NTAPI RtlDllShutdownInProgress(void);

namespace Tools::Platform {

namespace {

std::atomic<EndHandler> s_run{nullptr};

// A program that holds these objects itself is never unloaded, and runs its exit functions while
// all its threads still live.
bool isPartOfProgram()
{
    HMODULE module = nullptr;
    ::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCSTR>(&isPartOfProgram), &module);
    return module == ::GetModuleHandleA(nullptr);
}

void endLibrary()
{
    LibraryEnd end = isPartOfProgram() ? LibraryEnd::ProcessEnd : LibraryEnd::Unloading;
    if (otherThreadsWereStopped())
        end = LibraryEnd::ThreadsStopped;
    s_run.load()(end);
}

}

// The exit functions of a library run when it is detached.
void watchLibraryEnd(EndHandler run)
{
    s_run = run;
    std::atexit(endLibrary);
}

bool otherThreadsWereStopped()
{
    return ::RtlDllShutdownInProgress() != FALSE;
}

// Processes do not fork here.
void onForkedChild(void (*)()) {}

}
