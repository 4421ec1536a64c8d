#include "platform/console.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

std::atomic<void (*)()> s_handler{nullptr};
std::atomic<bool> s_isToEnd{false};

// In a signal handler: nothing but atomic variables and what the handler itself may do there. From
// now on a signal comes each second, so that a write that begins just after this one is
// interrupted, too.
void handleSignal(int)
{
    const int error = errno;
    s_isToEnd = true;
    if (const auto handler = s_handler.load())
        handler();
    ::alarm(1);
    errno = error;
}

bool isTaken()
{
    pollfd output = {STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&output, 1, 0) > 0;
}

}

bool writeStandardOutput(const char* text, std::size_t size)
{
    while (size > 0) {
        // Who still reads when the program is to end gets the rest.
        if (s_isToEnd && !isTaken())
            return false;
        const ssize_t count = ::write(STDOUT_FILENO, text, size);
        if (count < 0 && errno == EINTR)
            continue;
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
    // Not restarted: a write that nobody takes ends with the signal.
    action.sa_handler = handleSignal;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGALRM})
        ::sigaction(signal, &action, nullptr);
    // A reader that goes away is seen by the write that fails.
    action.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &action, nullptr);
}

void endAfter(unsigned int seconds)
{
    ::alarm(seconds);
}

}
