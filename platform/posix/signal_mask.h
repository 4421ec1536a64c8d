#pragma once

#include <csignal>
#include <pthread.h>

namespace Tools::Platform {

// While it lives, the calling thread takes no signals, nor do the threads that it starts: those are
// for the program's own threads. Signals that a thread's own instructions raise are taken all the
// same: blocked, they would end the program past its crash handler.
class AsynchronousSignalsBlocked {
public:
    AsynchronousSignalsBlocked()
    {
        sigset_t signals;
        ::sigfillset(&signals);
        for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS})
            ::sigdelset(&signals, signal);
        ::pthread_sigmask(SIG_SETMASK, &signals, &m_previous);
    }
    ~AsynchronousSignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_previous, nullptr); }
    AsynchronousSignalsBlocked(const AsynchronousSignalsBlocked&) = delete;
    AsynchronousSignalsBlocked& operator=(const AsynchronousSignalsBlocked&) = delete;

private:
    sigset_t m_previous = {};
};

}
