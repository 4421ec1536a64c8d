#include "platform/console.h"

#include "platform/posix/retry.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace Tools::Platform {

namespace {

std::atomic<void (*)()> s_handler{nullptr};

// In a signal handler: nothing but an atomic load and what the handler itself may do there.
void handleSignal(int)
{
    const int error = errno;
    if (const auto handler = s_handler.load())
        handler();
    errno = error;
}

}

bool writeStandardOutput(const char* text, std::size_t size)
{
    while (size > 0) {
        const ssize_t count = retryInterrupted([&] { return ::write(STDOUT_FILENO, text, size); });
        if (count <= 0)
            return false;
        text += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool isTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

void onEndRequest(void (*handler)())
{
    s_handler = handler;
    struct sigaction action = {};
    action.sa_handler = handleSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::sigaction(signal, &action, nullptr);
    // A reader that goes away is seen by the write that fails.
    action.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &action, nullptr);
}

}
