#include "platform/posix/reaper.h"

#include "platform/posix/retry.h"
#include "platform/posix/signal_mask.h"

#include <algorithm>
#include <dlfcn.h>
#include <mutex>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace Tools::Platform {

namespace {

struct Child {
    pid_t id;
    FileDescriptor descriptor;
};

// All but the descriptor of the event is read and written under the lock. `running` says that the
// thread is there and will look at `children` once more: it is set when the thread is started, and
// cleared by the thread, in the same hold of the lock in which it found no children. So a child
// that is added meanwhile finds either a thread that will see it or the need to start one. Outside
// of the lock the thread polls descriptors that it alone closes.
//
// Never destroyed: the thread may look at it to the very end of the process.
struct Reaper {
    std::mutex mutex;
    std::vector<Child> children;
    FileDescriptor wakeUp{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    bool running = false;
    // A forked process inherits this object, but not the thread.
    pid_t owner = -1;
};

Reaper& reaper()
{
    static auto* instance = new Reaper;
    return *instance;
}

// True once the child has ended and is gone; also if somebody else took it.
bool reap(const Child& child)
{
    return retryInterrupted([&] { return ::waitpid(child.id, nullptr, WNOHANG); }) != 0;
}

// What to poll for a child that may have ended or a new one that has come.
struct Changes {
    std::vector<pollfd> entries;
    int timeout = -1;
};

Changes expectedChanges(const Reaper& own)
{
    constexpr int BlindInterval = 50;
    Changes changes;
    changes.entries.push_back({own.wakeUp.get(), POLLIN, 0});
    for (const Child& child : own.children) {
        if (child.descriptor.valid())
            changes.entries.push_back({child.descriptor.get(), POLLIN, 0});
        else
            changes.timeout = BlindInterval;
    }
    return changes;
}

void* reapChildren(void* context)
{
    auto& own = *static_cast<Reaper*>(context);
    for (;;) {
        Changes changes;
        {
            const std::lock_guard<std::mutex> lock(own.mutex);
            std::erase_if(own.children, reap);
            if (own.children.empty()) {
                own.running = false;
                return nullptr;
            }
            changes = expectedChanges(own);
        }
        ::poll(changes.entries.data(), changes.entries.size(), changes.timeout);
        eventfd_t count = 0;
        ::eventfd_read(own.wakeUp.get(), &count);
    }
}

// The thread must not find its code unmapped.
void keepLibraryLoaded()
{
    Dl_info info = {};
    if (::dladdr(reinterpret_cast<void*>(&reapChildren), &info) != 0 && info.dli_fname != nullptr)
        ::dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

bool startThread(Reaper& own)
{
    const AsynchronousSignalsBlocked blocked;
    pthread_t thread = {};
    const bool started = ::pthread_create(&thread, nullptr, &reapChildren, &own) == 0;
    if (started)
        ::pthread_detach(thread);
    return started;
}

}

void reapLater(pid_t child, FileDescriptor descriptor)
{
    Reaper& own = reaper();
    const std::lock_guard<std::mutex> lock(own.mutex);
    // The first child of this process, which may be a fork of one that had a reaper.
    if (own.owner != ::getpid()) {
        own.owner = ::getpid();
        own.running = false;
        own.children.clear();
        keepLibraryLoaded();
    }
    own.children.push_back({child, std::move(descriptor)});
    if (own.running)
        ::eventfd_write(own.wakeUp.get(), 1);
    else
        own.running = startThread(own);
}

}
