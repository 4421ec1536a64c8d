#include "platform/debug_receiver.h"

#include "platform/debug_channel.h"
#include "platform/windows/debug_names.h"

#include <algorithm>

#include <windows.h>

namespace Tools::Platform {

namespace {

// The receiver's end belongs to the one thread that runs the listener, whose window the senders'
// messages come to; only stop() comes from others, and it sets nothing but an event. A sender's
// block is looked at during its message only, while its sender waits.

// The window alone cannot keep two receivers apart that start at the same moment.
constexpr const char* InstanceName = "MdDebugReceiverInstance";

// A sender's block; text() is null if it is not there or not any more.
class Block {
public:
    explicit Block(std::uint32_t sender)
        : m_mapping(::OpenFileMappingA(FILE_MAP_READ, FALSE, debugBlockName(sender).c_str()))
    {
        if (m_mapping)
            m_view = ::MapViewOfFile(m_mapping, FILE_MAP_READ, 0, 0, DebugBlockSize);
    }
    ~Block()
    {
        if (m_view)
            ::UnmapViewOfFile(m_view);
        if (m_mapping)
            ::CloseHandle(m_mapping);
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    const char* text() const { return static_cast<const char*>(m_view); }

private:
    HANDLE m_mapping;
    void* m_view = nullptr;
};

}

struct DebugListener::State {
    UINT message = ::RegisterWindowMessageA(DebugMessageName);
    HANDLE instance = nullptr;
    HANDLE stop = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    HWND window = nullptr;
    const DebugPieceHandler* handler = nullptr;

    void receive(std::uint32_t sender) const;
    static LRESULT CALLBACK handle(HWND window, UINT message, WPARAM word, LPARAM value);
};

// Opened for each piece: a sender's id may be that of another process by the next one. The text is
// not trusted to end with a NUL.
void DebugListener::State::receive(std::uint32_t sender) const
{
    const Block block(sender);
    if (!handler || !block.text())
        return;
    const void* end = std::char_traits<char>::find(block.text(), DebugBlockSize - 1, '\0');
    const std::size_t length =
        end ? static_cast<std::size_t>(static_cast<const char*>(end) - block.text())
            : DebugBlockSize - 1;
    if (length > 0)
        (*handler)(sender, block.text(), length);
}

LRESULT CALLBACK DebugListener::State::handle(HWND window, UINT message, WPARAM word, LPARAM value)
{
    const auto* state = reinterpret_cast<const State*>(::GetWindowLongPtrA(window, GWLP_USERDATA));
    if (!state || message != state->message)
        return ::DefWindowProcA(window, message, word, value);
    state->receive(static_cast<std::uint32_t>(value));
    return 1;
}

DebugListener::DebugListener() : m_state(new State) {}

DebugListener::~DebugListener()
{
    if (m_state->window) {
        ::DestroyWindow(m_state->window);
        ::UnregisterClassA(DebugWindowClass, ::GetModuleHandleA(nullptr));
    }
    if (m_state->instance)
        ::CloseHandle(m_state->instance);
    ::CloseHandle(m_state->stop);
}

DebugListener::Start DebugListener::start()
{
    // Held by its existence, not by being owned: it goes with the process that made it.
    m_state->instance = ::CreateMutexA(nullptr, FALSE, InstanceName);
    if (::GetLastError() == ERROR_ALREADY_EXISTS || ::FindWindowA(DebugWindowClass, nullptr))
        return Start::AlreadyRunning;

    WNDCLASSA windowClass{};
    windowClass.lpfnWndProc = State::handle;
    windowClass.hInstance = ::GetModuleHandleA(nullptr);
    windowClass.lpszClassName = DebugWindowClass;
    ::RegisterClassA(&windowClass);
    // A hidden window, but one of the desktop: others are not found by their class.
    m_state->window = ::CreateWindowA(DebugWindowClass, "MdTools receiver", WS_OVERLAPPED, 0, 0, 0,
                                      0, nullptr, nullptr, windowClass.hInstance, nullptr);
    if (!m_state->window)
        return Start::Failed;
    ::SetWindowLongPtrA(m_state->window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(m_state.get()));
    return Start::Done;
}

void DebugListener::run(const DebugPieceHandler& handler, std::chrono::milliseconds limit)
{
    m_state->handler = &handler;
    const ULONGLONG end = ::GetTickCount64() + static_cast<ULONGLONG>(limit.count());
    for (;;) {
        const ULONGLONG now = ::GetTickCount64();
        const bool endless = limit.count() < 0;
        if (!endless && now >= end)
            break;
        const DWORD rest =
            endless ? INFINITE : static_cast<DWORD>(std::min<ULONGLONG>(end - now, 1'000'000));
        if (::MsgWaitForMultipleObjects(1, &m_state->stop, FALSE, rest, QS_ALLINPUT) ==
            WAIT_OBJECT_0)
            break;
        MSG message;
        // What others have sent is handled on the way.
        while (::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE))
            ::DispatchMessageA(&message);
    }
    m_state->handler = nullptr;
}

void DebugListener::stop()
{
    ::SetEvent(m_state->stop);
}

}
