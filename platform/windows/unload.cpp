#include "platform/unload.h"

#include "platform/thread_pool.h"

#include <cstdlib>
#include <mutex>
#include <vector>

#include <windows.h>

namespace Tools::Platform {

namespace {

struct Unloading {
    std::mutex mutex;
    std::vector<void (*)()> functions;
};

Unloading& unloading();

// Runs when the library is detached, also at the end of the process.
void callFunctions()
{
    if (threadsHaveEnded())
        return;
    std::vector<void (*)()>& functions = unloading().functions;
    for (; !functions.empty(); functions.pop_back())
        functions.back()();
    delete &unloading();
}

// A program that holds these objects itself runs its exit functions while all threads still live,
// and is never unloaded.
bool isPartOfProgram()
{
    HMODULE module = nullptr;
    ::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCSTR>(&callFunctions), &module);
    return module == ::GetModuleHandleA(nullptr);
}

Unloading* startWatching()
{
    if (!isPartOfProgram())
        std::atexit(callFunctions);
    return new Unloading;
}

// Outlives the static objects, whose destructors may still need what is in here.
Unloading& unloading()
{
    static Unloading* const object = startWatching();
    return *object;
}

}

void atUnload(void (*function)())
{
    Unloading& list = unloading();
    const std::lock_guard<std::mutex> lock(list.mutex);
    list.functions.push_back(function);
}

}
