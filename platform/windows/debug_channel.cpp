#include "platform/debug_channel.h"

#include "platform/lifetime.h"
#include "platform/windows/debug_names.h"

#include <atomic>

#include <windows.h>

namespace Tools::Platform {

namespace {

// The sender's end. The handles are written by the one thread that opens the channel, before the
// link counts as open, and by closing. The block belongs to the thread that has taken the event;
// s_holder is that thread's id from after taking it until before giving it back, so that any thread
// may compare it with its own.
HWND s_receiver = nullptr;
UINT s_message = 0;
DWORD s_process = 0;
HANDLE s_mapping = nullptr;
HANDLE s_event = nullptr;
void* s_block = nullptr;
std::atomic<DWORD> s_holder{0};

void close(HANDLE& handle)
{
    if (handle)
        ::CloseHandle(handle);
    handle = nullptr;
}

}

bool findDebugReceiver()
{
    s_receiver = ::FindWindowA(DebugWindowClass, nullptr);
    return s_receiver != nullptr;
}

char* openDebugBlock()
{
    s_process = ::GetCurrentProcessId();
    s_message = ::RegisterWindowMessageA(DebugMessageName);
    s_mapping = ::CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                     DebugBlockSize, debugBlockName(s_process).c_str());
    if (s_mapping)
        s_block = ::MapViewOfFile(s_mapping, FILE_MAP_WRITE, 0, 0, DebugBlockSize);

    const std::string eventName = debugEventName(s_process);
    s_event = ::CreateEventA(nullptr, FALSE, TRUE, eventName.c_str());
    if (!s_event)
        s_event = ::OpenEventA(SYNCHRONIZE | EVENT_MODIFY_STATE, FALSE, eventName.c_str());
    return s_event ? static_cast<char*>(s_block) : nullptr;
}

bool takeDebugBlock()
{
    constexpr DWORD Pause = 100;
    while (::WaitForSingleObject(s_event, Pause) == WAIT_TIMEOUT) {
        if (otherThreadsWereStopped())
            return false;
    }
    s_holder = ::GetCurrentThreadId();
    return true;
}

void releaseDebugBlock()
{
    s_holder = 0;
    ::SetEvent(s_event);
}

bool holdsDebugBlock()
{
    return s_holder == ::GetCurrentThreadId();
}

bool deliverDebugBlock()
{
    ::SetLastError(ERROR_SUCCESS);
    const LRESULT result = ::SendMessageA(s_receiver, s_message, 0, static_cast<LPARAM>(s_process));
    // The receiver's answer may be 0, too, and its handler may leave any error.
    return result != 0 || ::GetLastError() != ERROR_INVALID_WINDOW_HANDLE || ::IsWindow(s_receiver);
}

// The names end with the handles.
void removeDebugNames() {}

void closeDebugChannel()
{
    if (s_block)
        ::UnmapViewOfFile(s_block);
    s_block = nullptr;
    close(s_mapping);
    close(s_event);
    s_receiver = nullptr;
    s_holder = 0;
}

void abandonDebugChannel()
{
    closeDebugChannel();
}

}
