#include "platform/lifetime.h"

#include <atomic>

#include <cxxabi.h>
#include <pthread.h>

namespace Tools::Platform {

namespace {

std::atomic<EndHandler> s_run{nullptr};
std::atomic<bool> s_isProcessEnding{false};

// Any address that is not the library's own handle.
char s_processTag;

void noteProcessEnd(void*)
{
    s_isProcessEnding = true;
}

// The finalizer with the lowest priority comes after all destructors of static objects, those of
// this module as well; what std::atexit() registers would run among them.
[[gnu::destructor(101)]] void endLibrary()
{
    const EndHandler run = s_run.exchange(nullptr);
    if (run == nullptr)
        return;
    // Takes noteProcessEnd, which may be about to vanish, off the system's list.
    const bool isProcessEnding = s_isProcessEnding;
    abi::__cxa_finalize(&s_processTag);
    run(isProcessEnding ? LibraryEnd::ProcessEnd : LibraryEnd::Unloading);
}

}

// At the end of the process the system calls all registered functions, at unloading only those
// under the library's own handle. So one under another handle has been called in the first case
// only.
void watchLibraryEnd(EndHandler run)
{
    s_run = run;
    abi::__cxa_atexit(noteProcessEnd, nullptr, &s_processTag);
}

bool otherThreadsWereStopped()
{
    return false;
}

void onForkedChild(void (*handler)())
{
    ::pthread_atfork(nullptr, nullptr, handler);
}

}
