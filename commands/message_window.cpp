#include <mdtools/message_window.h>

#include "platform/window.h"

#include <algorithm>
#include <chrono>

namespace Tools {

// Shared with whoever is in the middle of handling a message, so that a handler may destroy the
// window.
struct MessageWindow::State {
    std::function<void(unsigned int)> handler;
    WindowHandle window = nullptr;
    int handled = 0;

    bool handle(unsigned int message)
    {
        if (message < FirstMessage)
            return false;
        ++handled;
        if (handler)
            handler(message);
        return true;
    }

    // Ended for a window that is gone or another thread's, too: there is nothing to wait for.
    Platform::Pumped process() const
    {
        return Platform::isWindowThread(window) ? Platform::processMessages(window)
                                                : Platform::Pumped::Ended;
    }
};

MessageWindow::MessageWindow(std::function<void(unsigned int message)> handler)
    : m_state(std::make_shared<State>())
{
    m_state->handler = std::move(handler);
    // The window may outlive this object for a while if it ends on another thread.
    const std::weak_ptr<State> weak = m_state;
    m_state->window = Platform::createWindow([weak](unsigned int message) {
        const std::shared_ptr<State> state = weak.lock();
        return state != nullptr && state->handle(message);
    });
}

MessageWindow::~MessageWindow()
{
    Platform::destroyWindow(m_state->window);
}

WindowHandle MessageWindow::handle() const
{
    return m_state->window;
}

int MessageWindow::processMessages()
{
    const std::shared_ptr<State> state = m_state;
    const int before = state->handled;
    state->process();
    return state->handled - before;
}

int MessageWindow::waitMessages(int milliseconds)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
    const auto timeLeft = [milliseconds, end] {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        return milliseconds < 0 ? -1 : static_cast<int>(std::max<long long>(left, 0));
    };
    const std::shared_ptr<State> state = m_state;
    const int before = state->handled;
    // Messages for other windows of the thread may keep coming: the time is looked at each round.
    for (;;) {
        const Platform::Pumped pumped = state->process();
        if (state->handled != before || pumped == Platform::Pumped::Ended)
            break;
        const int left = timeLeft();
        if (left == 0 ||
            (pumped == Platform::Pumped::All && !Platform::waitForMessages(state->window, left)))
            break;
    }
    return state->handled - before;
}

}
