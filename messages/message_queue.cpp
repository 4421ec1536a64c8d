#include "platform/window.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace Tools::Platform {

namespace {

struct Send;

// One inbox a thread, one lock for all of them. Two rules keep threads from waiting for each other
// for ever: no handler runs under the lock, and a thread that waits for an answer handles what is
// sent to its own windows meanwhile.

// What other threads have sent to the windows of one thread. The thread waits here, too, for the
// answers to what it has sent itself.
struct Inbox {
    std::deque<Send*> sends;
    std::condition_variable changed;
};

class Window {
public:
    Window(WindowHandle handle, std::shared_ptr<Inbox> inbox, MessageHandler handler)
        : m_handle(handle), m_inbox(std::move(inbox)), m_handler(std::move(handler))
    {}

    WindowHandle handle() const { return m_handle; }
    Inbox& inbox() const { return *m_inbox; }
    bool isOfThisThread() const { return m_thread == std::this_thread::get_id(); }
    void handle(unsigned int message) const { m_handler(message); }

    // Nothing of a handler on this thread can reach the sender on another one.
    void handleForOther(unsigned int message) const noexcept { m_handler(message); }

private:
    WindowHandle m_handle;
    std::shared_ptr<Inbox> m_inbox;
    MessageHandler m_handler;
    std::thread::id m_thread = std::this_thread::get_id();
};

// Lives on the stack of the sender, which waits until it is done.
struct Send {
    std::shared_ptr<Window> window;
    unsigned int message;
    Inbox* sender;
    bool isDone = false;
};

// All windows of the process. One lock guards them and all inboxes; it is never held during a
// handler.
struct Desktop {
    std::mutex mutex;
    std::map<WindowHandle, std::shared_ptr<Window>> windows;
    // Handles are never used again, so that a late message cannot reach the wrong window.
    std::uintptr_t lastHandle = 0;
};

using Lock = std::unique_lock<std::mutex>;

// Never destroyed: at the end of the process threads may still wait here.
Desktop& desktop()
{
    static auto* const object = new Desktop;
    return *object;
}

std::shared_ptr<Window> find(WindowHandle handle)
{
    const auto& windows = desktop().windows;
    const auto found = windows.find(handle);
    return found == windows.end() ? nullptr : found->second;
}

void finish(Send& send)
{
    send.isDone = true;
    send.sender->changed.notify_all();
}

// Releases those who wait for it. A handler that runs just now holds the window by its own share.
void end(const std::shared_ptr<Window>& window)
{
    desktop().windows.erase(window->handle());
    std::erase_if(window->inbox().sends, [&window](Send* send) {
        const bool isForWindow = send->window == window;
        if (isForWindow)
            finish(*send);
        return isForWindow;
    });
}

// This thread's inbox; its end is that of the thread's windows.
class OwnInbox {
public:
    OwnInbox() = default;
    OwnInbox(const OwnInbox&) = delete;
    OwnInbox& operator=(const OwnInbox&) = delete;
    ~OwnInbox()
    {
        const Lock lock(desktop().mutex);
        std::vector<std::shared_ptr<Window>> windows;
        for (const auto& [handle, window] : desktop().windows)
            if (&window->inbox() == m_inbox.get())
                windows.push_back(window);
        for (const auto& window : windows)
            end(window);
    }

    const std::shared_ptr<Inbox>& get() const { return m_inbox; }

private:
    std::shared_ptr<Inbox> m_inbox = std::make_shared<Inbox>();
};

const std::shared_ptr<Inbox>& ownInbox()
{
    static thread_local const OwnInbox inbox;
    return inbox.get();
}

void handleNext(Inbox& inbox, Lock& lock)
{
    Send& send = *inbox.sends.front();
    inbox.sends.pop_front();
    const std::shared_ptr<Window> window = send.window;
    // `send` is on the stack of a thread that waits until finish(), so it is there all the time.
    lock.unlock();
    window->handleForOther(send.message);
    lock.lock();
    finish(send);
}

}

void sendMessage(WindowHandle window, unsigned int message)
{
    Lock lock(desktop().mutex);
    const std::shared_ptr<Window> target = find(window);
    if (target == nullptr)
        return;
    if (target->isOfThisThread()) {
        lock.unlock();
        target->handle(message);
        return;
    }
    Inbox& own = *ownInbox();
    Send send{target, message, &own};
    target->inbox().sends.push_back(&send);
    target->inbox().changed.notify_all();
    while (!send.isDone) {
        if (own.sends.empty())
            own.changed.wait(lock);
        else
            handleNext(own, lock);
    }
}

bool isWindowThread(WindowHandle window)
{
    const Lock lock(desktop().mutex);
    const std::shared_ptr<Window> found = find(window);
    return found != nullptr && found->isOfThisThread();
}

void handleSentMessages()
{
    Inbox& own = *ownInbox();
    Lock lock(desktop().mutex);
    while (!own.sends.empty())
        handleNext(own, lock);
}

WindowHandle createWindow(MessageHandler handler)
{
    const Lock lock(desktop().mutex);
    const auto handle = reinterpret_cast<WindowHandle>(++desktop().lastHandle);
    desktop().windows[handle] = std::make_shared<Window>(handle, ownInbox(), std::move(handler));
    return handle;
}

void destroyWindow(WindowHandle window)
{
    const Lock lock(desktop().mutex);
    if (const std::shared_ptr<Window> found = find(window))
        end(found);
}

void processMessages(WindowHandle)
{
    handleSentMessages();
}

bool waitForMessages(int milliseconds)
{
    Inbox& own = *ownInbox();
    Lock lock(desktop().mutex);
    const auto hasSends = [&own] { return !own.sends.empty(); };
    if (milliseconds >= 0)
        return own.changed.wait_for(lock, std::chrono::milliseconds(milliseconds), hasSends);
    own.changed.wait(lock, hasSends);
    return true;
}

}
