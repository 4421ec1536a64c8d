#include "platform/threads.h"

#include <memory>

#include <windows.h>

#include <process.h>

namespace Tools::Platform {

struct Lock {
    CRITICAL_SECTION section;
};

Lock* createLock()
{
    Lock* const lock = new Lock;
    ::InitializeCriticalSection(&lock->section);
    return lock;
}

void destroyLock(Lock* lock)
{
    ::DeleteCriticalSection(&lock->section);
    delete lock;
}

void enterLock(Lock* lock)
{
    ::EnterCriticalSection(&lock->section);
}

bool tryEnterLock(Lock* lock)
{
    return ::TryEnterCriticalSection(&lock->section) != FALSE;
}

void leaveLock(Lock* lock)
{
    ::LeaveCriticalSection(&lock->section);
}

namespace {

// What the new thread is given; it frees it.
struct Start {
    int (*body)(void*);
    void* context;
};

// noexcept: an exception that nobody catches ends the program here, on every platform.
unsigned int __stdcall runThread(void* start) noexcept
{
    const Start call = *static_cast<Start*>(start);
    delete static_cast<Start*>(start);
    return static_cast<unsigned int>(call.body(call.context));
}

}

ThreadHandle::~ThreadHandle()
{
    if (m_handle != 0)
        ::CloseHandle(reinterpret_cast<HANDLE>(m_handle));
}

bool ThreadHandle::start(int (*body)(void*), void* context)
{
    auto call = std::make_unique<Start>(Start{body, context});
    // Not CreateThread: the run-time library keeps data of its own for each thread.
    m_handle = ::_beginthreadex(nullptr, 0, runThread, call.get(), 0, nullptr);
    if (m_handle == 0)
        return false;
    static_cast<void>(call.release());
    return true;
}

void sleep(unsigned int milliseconds)
{
    ::Sleep(milliseconds);
}

}
