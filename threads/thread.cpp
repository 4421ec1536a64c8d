#include <mdtools/threads.h>

#include "platform/threads.h"

namespace Tools {

Thread::Thread() : m_result(-1) {}

Thread::Thread(const Thread& other) = default;
Thread& Thread::operator=(const Thread& other) = default;
Thread::~Thread() = default;

void Thread::start()
{
    // The new thread may have deleted this object before the system's handle is known here, so this
    // side shares the owner of the handle.
    const auto handle = std::make_shared<Platform::ThreadHandle>();
    m_handle = handle;
    handle->start([](void* object) { return thread(static_cast<Thread*>(object)); }, this);
}

int Thread::result() const
{
    return m_result;
}

Thread& Thread::setResult(int result)
{
    m_result = result;
    return *this;
}

int Thread::thread(Thread* thread)
{
    while (thread->run()) {
    }
    // Read before the object goes; destructors may not change it any more.
    const int result = thread->result();
    delete thread;
    return result;
}

}
