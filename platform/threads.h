#pragma once

#include <cstdint>

// platform/threads.h - locks and threads.
namespace Tools::Platform {

// Recursive: the thread that holds it may enter again.
struct Lock;
Lock* createLock();
void destroyLock(Lock* lock);
void enterLock(Lock* lock);
bool tryEnterLock(Lock* lock);
void leaveLock(Lock* lock);

// The system's thread; closing it leaves the thread running.
class ThreadHandle {
public:
    ThreadHandle() = default;
    ThreadHandle(const ThreadHandle&) = delete;
    ThreadHandle& operator=(const ThreadHandle&) = delete;
    ~ThreadHandle();

    // Runs `body(context)` on a new thread, whose exit code is the result. False if the system has
    // none to give. An exception that leaves `body` ends the program.
    bool start(int (*body)(void*), void* context);

private:
    std::uintptr_t m_handle = 0;
};

// Zero gives the rest of the time slice away.
void sleep(unsigned int milliseconds);

}
