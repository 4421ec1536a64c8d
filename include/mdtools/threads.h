#pragma once

#include <mdtools/export.h>
#include <mdtools/platform_types.h>

#include <functional>
#include <memory>

namespace Tools {

namespace Platform {
struct Lock;
struct Work;
class ThreadHandle;
}

// A lock within the process. The thread that holds it may take it again, and must give it back as
// often. All operations may be called from any thread.
//
// Copies name the same lock of the system, which is freed with the last of them. A lock must not be
// held when its last copy goes.
class MDTOOLS_API CriticalSection {
public:
    CriticalSection();
    CriticalSection(const CriticalSection& other);
    CriticalSection& operator=(const CriticalSection& other);
    ~CriticalSection();

    // Waits until the lock is free.
    void lock();

    // True if the lock was taken at once; false, and nothing taken, if another thread holds it.
    bool tryLock();

    // Only for the thread that holds the lock.
    void unlock();

private:
    friend class CriticalSectionLocker;

    std::shared_ptr<Platform::Lock> m_lock;
};

// Holds a CriticalSection from construction to destruction, which must both happen on one thread.
// The section, or a copy of it, must outlive the locker.
class MDTOOLS_API CriticalSectionLocker {
public:
    explicit CriticalSectionLocker(CriticalSection& section);
    CriticalSectionLocker(const CriticalSectionLocker&) = delete;
    CriticalSectionLocker& operator=(const CriticalSectionLocker&) = delete;
    ~CriticalSectionLocker();

private:
    Platform::Lock* m_lock;
};

// A thread that deletes itself. Derive from it, override run(), create the object with new and call
// start(); from then on it belongs to its thread, which calls run() until that returns false,
// deletes the object and ends with result() as its exit code. Nobody else may delete it, and it may
// be gone as soon as start() has been called.
//
// An exception that leaves run() ends the program. The library must stay loaded until the thread
// has ended.
class MDTOOLS_API Thread {
public:
    Thread();
    // A copy shares the system's thread with the original, until both are gone, and takes over the
    // result. It runs nothing unless it is started itself.
    Thread(const Thread& other);
    Thread& operator=(const Thread& other);
    virtual ~Thread();

    // One step of the work, on the new thread: true to be called again, false to finish.
    virtual bool run() = 0;

    // Each call starts one thread on this object, so call it once: of two threads the one that
    // finishes first deletes the object under the other. Where the system has no thread left,
    // nothing runs and the object stays the caller's.
    void start();

    // What the thread ends with; -1 until it is set.
    int result() const;

protected:
    Thread& setResult(int result);

private:
    static int thread(Thread* thread);

    std::shared_ptr<Platform::ThreadHandle> m_handle;
    int m_result;
};

class ThreadPool;

// One item of work of a ThreadPool. A null callback does nothing.
class MDTOOLS_API ThreadWork {
public:
    // `callback` will be called with `context` on a thread of `pool`. The item goes to that pool's
    // addWork() and to no other, or is destroyed before the pool is. An exception that leaves the
    // callback ends the program.
    ThreadWork(ThreadPool* pool, WorkCallback callback, void* context);
    ThreadWork(const ThreadWork&) = delete;
    ThreadWork& operator=(const ThreadWork&) = delete;
    ~ThreadWork();

    // The system's work object; it stays this object's own.
    WorkHandle getWork() const;

private:
    friend class ThreadPool;

    Platform::Work* m_work;
};

// Runs a list of work items on threads of its own and waits for all of them. It has two threads
// from the start and gets more when there is work for them, up to twice the number of processor
// cores; they are kept from one run to the next.
//
// The operations may be called from any thread. Each holds the pool's lock, runWorks() until the
// last item has finished: other callers wait that long, and an item that calls its own pool, or
// sends to a window of the thread that is in runWorks(), waits for ever. The pool must not be
// destroyed while it is in use. For a system without threads and for signals see forEach() below.
class MDTOOLS_API ThreadPool {
public:
    ThreadPool();
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;
    ~ThreadPool();

    // Appends an item, which is the pool's from now on; null is ignored.
    void addWork(std::unique_ptr<ThreadWork> work);

    // Hands all items to the threads in list order and returns when each has run once. They stay in
    // the list and can be run again.
    void runWorks();

    // Destroys all items, when the run is over that may be going on.
    void clearWorks();

private:
    friend class ThreadWork;
    struct State;

    State* m_state;
};

class MDTOOLS_API ThreadUtility {
public:
    // Calls `body(begin, end)` for consecutive ranges that together cover 0 to `count` and returns
    // when all calls have returned. There is one range for each processor core, fewer if `count` is
    // too small to fill them (the number is halved until it is), and one only if `sequential`; the
    // last range takes what the division leaves over. A count of zero or less makes one call, with
    // (0, 0). An empty body is not called.
    //
    // The calls run on threads of one pool that all loops of the process share, never on the
    // caller's, each on a copy of `body` of its own that is destroyed there. An exception that
    // leaves `body` ends the program. A loop started while another one runs waits for it; one
    // started within a body waits for ever. (On Linux, if the system has not a single thread to
    // give, the calls are made on the caller's thread as a last resort, one after the other; the
    // next loop tries for threads again.)
    //
    // The caller does nothing but wait: a body that sends to a window of the caller's thread, by a
    // ProgressMessenger for instance, waits for ever, and the loop with it. progress.h says how a
    // loop shows its progress.
    //
    // On Linux the pool's threads block asynchronous signals (SIGINT, SIGTERM, timers), which are
    // for the program's own threads; a crash handler (SIGSEGV, SIGABRT and their like) does run on
    // them.
    //
    // The pool's threads wait from one loop to the next. They end with the process, whatever they
    // are doing, or when the library is unloaded.
    static void forEach(int count, std::function<void(int begin, int end)> body, bool sequential);
};

}
