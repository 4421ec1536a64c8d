#include "platform/threads.h"

#include "platform/posix/retry.h"

#include <ctime>
#include <memory>

#include <pthread.h>
#include <sched.h>

namespace Tools::Platform {

struct Lock {
    pthread_mutex_t mutex;
};

Lock* createLock()
{
    Lock* const lock = new Lock;
    pthread_mutexattr_t attributes;
    ::pthread_mutexattr_init(&attributes);
    ::pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    ::pthread_mutex_init(&lock->mutex, &attributes);
    ::pthread_mutexattr_destroy(&attributes);
    return lock;
}

void destroyLock(Lock* lock)
{
    ::pthread_mutex_destroy(&lock->mutex);
    delete lock;
}

void enterLock(Lock* lock)
{
    ::pthread_mutex_lock(&lock->mutex);
}

bool tryEnterLock(Lock* lock)
{
    return ::pthread_mutex_trylock(&lock->mutex) == 0;
}

void leaveLock(Lock* lock)
{
    ::pthread_mutex_unlock(&lock->mutex);
}

namespace {

// What the new thread is given; it frees it.
struct Start {
    int (*body)(void*);
    void* context;
};

// noexcept: an exception that nobody catches ends the program here, on every platform.
void* runThread(void* start) noexcept
{
    const Start call = *static_cast<Start*>(start);
    delete static_cast<Start*>(start);
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(call.body(call.context)));
}

}

// Nobody asks for the exit code any more; the system may forget the thread when it ends.
ThreadHandle::~ThreadHandle()
{
    if (m_handle != 0)
        ::pthread_detach(static_cast<pthread_t>(m_handle));
}

bool ThreadHandle::start(int (*body)(void*), void* context)
{
    auto call = std::make_unique<Start>(Start{body, context});
    pthread_t thread{};
    if (::pthread_create(&thread, nullptr, runThread, call.get()) != 0)
        return false;
    static_cast<void>(call.release());
    m_handle = static_cast<std::uintptr_t>(thread);
    return true;
}

void sleep(unsigned int milliseconds)
{
    if (milliseconds == 0) {
        ::sched_yield();
        return;
    }
    timespec rest{};
    rest.tv_sec = static_cast<time_t>(milliseconds / 1000);
    rest.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000;
    // A signal cuts it short; the rest is slept then.
    retryInterrupted([&] { return ::nanosleep(&rest, &rest); });
}

}
