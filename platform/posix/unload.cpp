#include "platform/unload.h"

#include <atomic>
#include <cstdlib>

#include <cxxabi.h>

namespace Tools::Platform {

namespace {

std::atomic<bool> isProcessEnding{false};

// Any address that is not the library's own handle will do.
char processTag;

void noteProcessEnd(void*)
{
    isProcessEnding = true;
}

// Takes noteProcessEnd, which is about to vanish with the library, off the system's list.
void forgetProcessEnd()
{
    abi::__cxa_finalize(&processTag);
}

}

// The system calls registered functions in reverse order: at the end of the process all of them, at
// unloading only those that stand under the library's own handle, as atexit registers them.
void atUnload(void (*function)())
{
    static const int registered = std::atexit(forgetProcessEnd);
    static_cast<void>(registered);
    std::atexit(function);
    abi::__cxa_atexit(noteProcessEnd, nullptr, &processTag);
}

bool processEnds()
{
    return isProcessEnding;
}

}
