#include "platform/window.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cxxabi.h>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

// Names this module to the run-time, which calls functions of it when a thread ends.
extern "C" void* __dso_handle; // NOLINT(bugprone-reserved-identifier)

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
    Window(WindowHandle handle, Inbox& inbox, MessageHandler handler)
        : m_handle(handle), m_inbox(&inbox), m_handler(std::move(handler))
    {}

    WindowHandle handle() const { return m_handle; }
    // Only of a window that the desktop still has.
    Inbox& inbox() const { return *m_inbox; }
    bool isOfThisThread() const { return m_thread == std::this_thread::get_id(); }
    void handle(unsigned int message) const { m_handler(message); }

    // Nothing of a handler on this thread can reach the sender on another one.
    void handleForOther(unsigned int message) const noexcept { m_handler(message); }

private:
    WindowHandle m_handle;
    Inbox* m_inbox;
    MessageHandler m_handler;
    std::thread::id m_thread = std::this_thread::get_id();
};

// Lives on the stack of the sender, which waits until it is done.
struct Send {
    std::shared_ptr<Window> window;
    unsigned int message;
    Inbox* sender;
    // Of all sends of the process, in their order.
    std::uint64_t number;
    bool isDone = false;
};

// All windows of the process. One lock guards them and all inboxes; it is never held during a
// handler.
struct Desktop {
    std::mutex mutex;
    std::map<WindowHandle, std::shared_ptr<Window>> windows;
    // Handles are never used again, so that a late message cannot reach the wrong window.
    std::uintptr_t lastHandle = 0;
    std::uint64_t lastSend = 0;
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

// Releases those who wait for it, its own thread included. A handler that runs just now holds the
// window by its own share.
void end(const std::shared_ptr<Window>& window)
{
    desktop().windows.erase(window->handle());
    window->inbox().changed.notify_all();
    std::erase_if(window->inbox().sends, [&window](Send* send) {
        const bool isForWindow = send->window == window;
        if (isForWindow)
            finish(*send);
        return isForWindow;
    });
}

// This thread's inbox, made when it is first needed. The pointer has no destructor: those of the
// program's own thread-local and static objects may send messages and make windows, too. What they
// need after the inbox has ended is a new one, which ends like the first.
thread_local Inbox* t_inbox = nullptr;

// The end of the inbox is that of the thread's windows.
void endInbox(void*)
{
    const std::unique_ptr<Inbox> inbox(t_inbox);
    const Lock lock(desktop().mutex);
    std::vector<std::shared_ptr<Window>> windows;
    for (const auto& [handle, window] : desktop().windows)
        if (&window->inbox() == inbox.get())
            windows.push_back(window);
    for (const auto& window : windows)
        end(window);
    t_inbox = nullptr;
}

// The language lets a thread-local object end once only; the run-time takes an end to be called as
// often as it is told, also by one that runs. In static destructors it is too late for any: that
// inbox stays until the process is gone.
Inbox& ownInbox()
{
    if (t_inbox == nullptr) {
        auto inbox = std::make_unique<Inbox>();
        abi::__cxa_thread_atexit(endInbox, nullptr, &__dso_handle);
        t_inbox = inbox.release();
    }
    return *t_inbox;
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
    Inbox& own = ownInbox();
    Send send{target, message, &own, ++desktop().lastSend};
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
    Inbox& own = ownInbox();
    Lock lock(desktop().mutex);
    // What comes meanwhile is for the next call: this one ends however busy the senders are.
    const std::uint64_t last = desktop().lastSend;
    while (!own.sends.empty() && own.sends.front()->number <= last)
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

Pumped processMessages(WindowHandle)
{
    handleSentMessages();
    return Pumped::All;
}

bool waitForMessages(WindowHandle window, int milliseconds)
{
    Inbox& own = ownInbox();
    Lock lock(desktop().mutex);
    const auto isOver = [&own, window] { return !own.sends.empty() || find(window) == nullptr; };
    if (milliseconds < 0)
        own.changed.wait(lock, isOver);
    else
        own.changed.wait_for(lock, std::chrono::milliseconds(milliseconds), isOver);
    return !own.sends.empty() && find(window) != nullptr;
}

}
