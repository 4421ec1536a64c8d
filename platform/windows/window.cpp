#include "platform/window.h"

#include "platform/lifetime.h"

#include <memory>

#include <windows.h>

namespace Tools::Platform {

namespace {

constexpr char ClassName[] = "MdToolsMessageWindow";

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
    ::SendMessageA(window, message, 0, 0);
}

bool isWindowThread(WindowHandle window)
{
    return window != nullptr &&
           ::GetWindowThreadProcessId(window, nullptr) == ::GetCurrentThreadId();
}

void handleSentMessages()
{
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

void processMessages(WindowHandle window)
{
    MSG message;
    while (::PeekMessageA(&message, window, 0, 0, PM_REMOVE))
        ::DispatchMessageA(&message);
}

bool waitForMessages(int milliseconds)
{
    const DWORD time = milliseconds < 0 ? INFINITE : static_cast<DWORD>(milliseconds);
    const DWORD result =
        ::MsgWaitForMultipleObjectsEx(0, nullptr, time, QS_SENDMESSAGE | QS_POSTMESSAGE, 0);
    return result == WAIT_OBJECT_0;
}

}
