#pragma once

#include <mdtools/export.h>
#include <mdtools/nullable.h>
#include <mdtools/platform_types.h>

#include <cstdint>

namespace Tools {

// Shows the progress of a computation. Implemented by the side of the window; each operation is
// called on the window's thread by ProgressMessenger::update().
class MDTOOLS_API ProgressHandler {
public:
    virtual ~ProgressHandler();

    // Where the computation has come to, between minimum and maximum.
    virtual void setPosition(std::uint64_t position) = 0;
    // Moves the position on by `step`, from wherever it is.
    virtual void setIncrement(std::uint64_t step) = 0;
    // The texts are never null, and valid during the call only.
    virtual void setInfo(const char* text) = 0;
    virtual void setTitle(const char* text) = 0;
    // Shows the display; takes it back to its beginning.
    virtual void activate() = 0;
    virtual void reset() = 0;
    // The positions of 0 and of 100 percent.
    virtual void setMinimum(std::uint64_t value) = 0;
    virtual void setMaximum(std::uint64_t value) = 0;

protected:
    ProgressHandler() = default;
    ProgressHandler(const ProgressHandler&) = default;
    ProgressHandler& operator=(const ProgressHandler&) = default;
};

// Takes the requests of a computation to the window that shows its progress, whatever threads the
// two run on. Each call of the computing side makes its request the only pending one and sends the
// message to the window, which answers it by calling update(). The call returns when the window has
// handled the message; on the window's own thread that happens at once, within the call.
//
// The window's thread has to handle messages while the computation runs. So a parallel loop is not
// started there: ThreadUtility::forEach() and ThreadPool::runWorks() only wait, as does joining a
// thread, and a body that reports its progress to a window of the waiting thread never returns. The
// recipe has a worker thread for the loop and keeps the window's thread to its messages:
//
//     MessageWindow window([&](unsigned int) { messenger.update(&display); });
//     // ProgressMessenger messenger(window.handle(), message), one range at a time
//     std::atomic<bool> ended = false;
//     std::thread worker([&] {
//         ThreadUtility::forEach(count, body, false); // reports by the messenger, under a lock
//         ended = true;
//     });
//     while (!ended)
//         window.waitMessages(50);
//     worker.join();
//
// One computing thread at a time uses a messenger. While it waits for the window it handles what
// other threads send to windows of its own. A window that ends releases those who wait for it, and
// a request to a window that is gone does nothing.
class MDTOOLS_API ProgressMessenger {
public:
    // `message` is what the window takes for a progress request. Without a window (null) requests
    // only become pending. The window is not owned.
    ProgressMessenger(WindowHandle window, std::uint32_t message);
    ProgressMessenger(const ProgressMessenger&) = default;
    ProgressMessenger& operator=(const ProgressMessenger&) = default;
    virtual ~ProgressMessenger();

    // For the computation; each reaches the handler's function of the same name. An increment is
    // the step by which the position moves on, not a step size that is kept. A text is not copied:
    // update() may pass it on until the next request comes. A null text requests nothing.
    void setPosition(std::uint64_t value);
    void setIncrement(std::uint64_t value);
    void setMinimum(std::uint64_t value);
    void setMaximum(std::uint64_t value);
    void setInfo(const char* text);
    void setTitle(const char* text);
    void activate();
    void reset();

    // For the window: passes the pending request on to `handler`, null for nobody. The request
    // stays pending until the next one replaces it.
    void update(ProgressHandler* handler) const;

    // The pending values; empty unless the last request was for one.
    mdt::Nullable<std::uint64_t> getMinimum() const;
    mdt::Nullable<std::uint64_t> getMaximum() const;

protected:
    // Sends the message and waits. A class that reaches its window in another way overrides it.
    virtual void post();

    // Drops what is pending.
    void clear();

    // True on the thread that owns the window; false without a window.
    bool isWindowThread() const;

private:
    WindowHandle m_window;
    std::uint32_t m_message;
    mdt::Nullable<std::uint64_t> m_position;
    mdt::Nullable<std::uint64_t> m_increment;
    mdt::Nullable<std::uint64_t> m_minimum;
    mdt::Nullable<std::uint64_t> m_maximum;
    const char* m_info = nullptr;
    const char* m_title = nullptr;
    bool m_activate = false;
    bool m_reset = false;
};

// Says to a computation whether its user wants it to stop. The library never asks; a computation
// does so now and then, on its own thread.
class MDTOOLS_API CancelHandler {
public:
    virtual ~CancelHandler();

    virtual bool isCancelled() = 0;

protected:
    CancelHandler() = default;
    CancelHandler(const CancelHandler&) = default;
    CancelHandler& operator=(const CancelHandler&) = default;
};

}
