#pragma once

#include <mdtools/export.h>
#include <mdtools/platform_types.h>

#include <functional>
#include <memory>

namespace Tools {

// A window without a picture: an address on its thread that other threads send messages to, above
// all those of a ProgressMessenger. It belongs to the thread that makes it and should end there.
// All operations but handle() are for that thread; on others they do nothing and answer 0.
//
// A sender waits until the handler has run on the window's thread: in processMessages() or
// waitMessages() of any window of that thread, or while the thread itself waits for a message that
// it has sent. On Windows every other message loop of the thread serves as well. When the window or
// its thread ends, senders are released with their messages unhandled. Destructors of thread-local
// and static objects may make windows and send messages, too.
class MDTOOLS_API MessageWindow {
public:
    // Messages below this one belong to the system and are not passed on.
    static constexpr unsigned int FirstMessage = 0x400;

    // `handler` is called with each message. What it throws reaches a sender on the same thread; if
    // the sender is another thread, it ends the program. The handler may destroy the window. An
    // empty one ignores everything.
    explicit MessageWindow(std::function<void(unsigned int message)> handler);
    MessageWindow(const MessageWindow&) = delete;
    MessageWindow& operator=(const MessageWindow&) = delete;
    ~MessageWindow();

    // Null if the system has no window to give (on Windows, without a desktop).
    WindowHandle handle() const;

    // Handles the messages that wait at the time of the call, for any window of the thread, and
    // returns how many of them were for this window. However busily other threads go on sending,
    // the call ends (on Windows, if they send by this library); what they send is for the next one.
    // On Windows a WM_QUIT stays for the program's own loop, and ends the call.
    int processMessages();

    // Likewise, but waits until there is one for this window. The wait ends after that time (a
    // negative one is without limit), when another thread destroys the window and, on Windows, at a
    // WM_QUIT. A handler that runs is not cut off.
    int waitMessages(int milliseconds);

private:
    struct State;

    std::shared_ptr<State> m_state;
};

}
