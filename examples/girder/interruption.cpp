#include "interruption.h"

#include <atomic>
#include <csignal>

namespace Girder {

namespace {

// Set within a signal handler.
std::atomic<bool> isInterrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

void interrupt(int)
{
    isInterrupted = true;
}

}

Interruption::Interruption()
{
    isInterrupted = false;
    m_previous = std::signal(SIGINT, interrupt);
}

Interruption::~Interruption()
{
    std::signal(SIGINT, m_previous == SIG_ERR ? SIG_DFL : m_previous);
}

bool Interruption::isCancelled()
{
    return isInterrupted;
}

}
