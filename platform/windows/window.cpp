#include "platform/window.h"

#include "platform/lifetime.h"

#include <atomic>
#include <limits>
#include <memory>
#include <utility>

#include <windows.h>

namespace Tools::Platform {

namespace {

constexpr char ClassName[] = "MdToolsMessageWindow";

// The system handles sent messages until none is left, and thus for ever while threads keep
// sending. So the sends of this library carry a number (and a mark, which says that it is one):
// those that are later than the current processMessages() are refused, and the sender tries again.
constexpr WPARAM NumberMark = 0x4D645365;
constexpr LRESULT Refused = 0x4D645266;
constexpr LPARAM NoLimit = std::numeric_limits<LPARAM>::max();

std::atomic<LPARAM> s_lastNumber{0};
thread_local LPARAM t_limit = NoLimit;

// The highest number that this thread takes, for a while.
class Limit {
public:
    explicit Limit(LPARAM number) : m_previous(std::exchange(t_limit, number)) {}
    ~Limit() { t_limit = m_previous; }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;

private:
    LPARAM m_previous;
};

MessageHandler* handlerOf(HWND window)
{
    return reinterpret_cast<MessageHandler*>(::GetWindowLongPtrA(window, GWLP_USERDATA));
}

// noexcept: the system's own frames must not be unwound, and a sender is on another thread.
LRESULT CALLBACK handleMessage(HWND window, UINT message, WPARAM first, LPARAM second) noexcept
{
    const std::unique_ptr<MessageHandler> ended(message == WM_NCDESTROY ? handlerOf(window)
                                                                        : nullptr);
    if (ended != nullptr)
        ::SetWindowLongPtrA(window, GWLP_USERDATA, 0);
    else if (handlerOf(window) != nullptr) {
        if (first == NumberMark && second > t_limit && ::InSendMessage())
            return Refused;
        // A handler that waits for another thread must let that one's messages through.
        const Limit none(NoLimit);
        // A copy, as the window may go during the call.
        const MessageHandler handler = *handlerOf(window);
        if (handler(message))
            return 0;
    }
    return ::DefWindowProcA(window, message, first, second);
}

bool isMessageWindow(HWND window)
{
    return ::GetWindowLongPtrA(window, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(&handleMessage);
}

// The module that holds this code.
HINSTANCE ownModule()
{
    HMODULE module = nullptr;
    ::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCSTR>(&handleMessage), &module);
    return module;
}

bool registerClass()
{
    WNDCLASSA description{};
    description.lpfnWndProc = handleMessage;
    description.hInstance = ownModule();
    description.lpszClassName = ClassName;
    // A class that stayed would call into memory that the library has left.
    onLibraryEnd([](LibraryEnd end) {
        if (end == LibraryEnd::Unloading)
            ::UnregisterClassA(ClassName, ownModule());
    });
    return ::RegisterClassA(&description) != 0;
}

}

void sendMessage(WindowHandle window, unsigned int message)
{
    // Straight to the handler, so that what it throws arrives here.
    if (isWindowThread(window) && isMessageWindow(window)) {
        const MessageHandler handler = *handlerOf(window);
        handler(message);
        return;
    }
    if (message < WM_USER || !isMessageWindow(window)) {
        ::SendMessageA(window, message, 0, 0);
        return;
    }
    constexpr DWORD Pause = 1; // ms
    const LPARAM number = ++s_lastNumber;
    while (::SendMessageA(window, message, NumberMark, number) == Refused) {
        ::MsgWaitForMultipleObjectsEx(0, nullptr, Pause, QS_SENDMESSAGE, MWMO_INPUTAVAILABLE);
        handleSentMessages();
    }
}

bool isWindowThread(WindowHandle window)
{
    return window != nullptr &&
           ::GetWindowThreadProcessId(window, nullptr) == ::GetCurrentThreadId();
}

void handleSentMessages()
{
    const Limit limit(s_lastNumber);
    MSG message;
    ::PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);
}

WindowHandle createWindow(MessageHandler handler)
{
    static const bool isRegistered = registerClass();
    if (!isRegistered)
        return nullptr;
    auto owned = std::make_unique<MessageHandler>(std::move(handler));
    const HWND window = ::CreateWindowExA(0, ClassName, "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                          ownModule(), nullptr);
    if (window != nullptr)
        ::SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(owned.release()));
    return window;
}

void destroyWindow(WindowHandle window)
{
    if (isWindowThread(window))
        ::DestroyWindow(window);
    else if (window != nullptr)
        ::PostMessageA(window, WM_CLOSE, 0, 0);
}

Pumped processMessages(WindowHandle window)
{
    const Limit limit(s_lastNumber);
    const DWORD begin = ::GetTickCount();
    MSG message;
    while (::PeekMessageA(&message, window, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            ::PostQuitMessage(static_cast<int>(message.wParam));
            return Pumped::Ended;
        }
        ::DispatchMessageA(&message);
        if (static_cast<LONG>(message.time - begin) > 0)
            return Pumped::Others;
    }
    return Pumped::All;
}

// Destroyed by another thread, the window gets a message for that: its end is never waited past.
bool waitForMessages(WindowHandle window, int milliseconds)
{
    if (!isWindowThread(window))
        return false;
    const DWORD time = milliseconds < 0 ? INFINITE : static_cast<DWORD>(milliseconds);
    const DWORD result =
        ::MsgWaitForMultipleObjectsEx(0, nullptr, time, QS_SENDMESSAGE | QS_POSTMESSAGE, 0);
    return result == WAIT_OBJECT_0;
}

}
