#include "platform/unload.h"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <vector>

#include <cxxabi.h>

namespace Tools::Platform {

namespace {

std::atomic<bool> processEnds{false};

// Any address that is not the library's own handle will do.
char processTag;

struct Unloading {
    std::mutex mutex;
    std::vector<void (*)()> functions;
};

Unloading& unloading();

void noteProcessEnd(void*)
{
    processEnds = true;
}

// Runs when the library is unloaded and at the end of the process; there noteProcessEnd came first.
void callFunctions()
{
    if (processEnds)
        return;
    // Takes noteProcessEnd, which is about to vanish with the library, off the process's list.
    abi::__cxa_finalize(&processTag);
    std::vector<void (*)()>& functions = unloading().functions;
    for (; !functions.empty(); functions.pop_back())
        functions.back()();
    delete &unloading();
}

Unloading* startWatching()
{
    // The system calls these in reverse order: at the end of the process all of them, at unloading
    // only those that were registered under the library's own handle, as atexit does.
    std::atexit(callFunctions);
    abi::__cxa_atexit(noteProcessEnd, nullptr, &processTag);
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
