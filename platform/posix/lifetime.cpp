#include "platform/lifetime.h"

#include <array>
#include <atomic>
#include <pthread.h>

namespace Tools::Platform {

namespace {

using Handler = void (*)();

std::array<std::atomic<Handler>, 8> s_endHandlers{};
std::atomic<std::size_t> s_endHandlerCount{0};

// The library's finalizer comes after all destructors of static objects, in whatever module; what
// std::atexit() registers would run among them.
[[gnu::destructor]] void callEndHandlers()
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
    if (index < s_endHandlers.size())
        s_endHandlers[index] = handler;
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
