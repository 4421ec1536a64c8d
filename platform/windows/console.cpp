#include "platform/console.h"

#include <atomic>

#include <windows.h>

namespace Tools::Platform {

namespace {

std::atomic<void (*)()> s_handler{nullptr};

BOOL WINAPI handleEvent(DWORD)
{
    if (const auto handler = s_handler.load())
        handler();
    return TRUE;
}

}

bool writeStandardOutput(const char* text, std::size_t size)
{
    while (size > 0) {
        DWORD count = 0;
        if (!::WriteFile(::GetStdHandle(STD_OUTPUT_HANDLE), text, static_cast<DWORD>(size), &count,
                         nullptr) ||
            count == 0)
            return false;
        text += count;
        size -= count;
    }
    return true;
}

bool isTerminal()
{
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

void onEndRequest(void (*handler)())
{
    s_handler = handler;
    ::SetConsoleCtrlHandler(handleEvent, TRUE);
}

// The caller's own limit does: here a write that nobody takes cannot be cut off.
void endAfter(unsigned int) {}

}
