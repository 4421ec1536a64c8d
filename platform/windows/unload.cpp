#include "platform/unload.h"

#include "platform/thread_pool.h"

#include <cstdlib>

#include <windows.h>

namespace Tools::Platform {

namespace {

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

}

// The exit functions of a library run when it is detached.
void atUnload(void (*function)())
{
    if (!isPartOfProgram())
        std::atexit(function);
}

bool processEnds()
{
    return threadsHaveEnded();
}

}
