#include "platform/thread_pool.h"

#include <memory>
#include <utility>
#include <vector>

#include <windows.h>

namespace Tools::Platform {

// The system's private pool, with what its work objects are made in and go with.
class Pool {
public:
    Pool(int minimum, int maximum)
        : m_pool(::CreateThreadpool(nullptr)), m_group(::CreateThreadpoolCleanupGroup())
    {
        ::SetThreadpoolThreadMaximum(m_pool, static_cast<DWORD>(maximum));
        ::SetThreadpoolThreadMinimum(m_pool, static_cast<DWORD>(minimum));
        ::InitializeThreadpoolEnvironment(&m_environment);
        ::SetThreadpoolCallbackPool(&m_environment, m_pool);
        ::SetThreadpoolCallbackCleanupGroup(&m_environment, m_group, nullptr);
    }

    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    // Cancels what has not started and waits for the rest, before the pool goes.
    ~Pool()
    {
        ::CloseThreadpoolCleanupGroupMembers(m_group, TRUE, nullptr);
        ::CloseThreadpoolCleanupGroup(m_group);
        ::CloseThreadpool(m_pool);
        ::DestroyThreadpoolEnvironment(&m_environment);
    }

    TP_CALLBACK_ENVIRON* environment() { return &m_environment; }

private:
    TP_CALLBACK_ENVIRON m_environment;
    PTP_POOL m_pool;
    PTP_CLEANUP_GROUP m_group;
};

// The system calls back with this, so that exceptions and null callbacks can be seen to first.
struct Work {
    WorkCallback callback;
    void* context;
    PTP_WORK handle;
};

namespace {

// noexcept: the system's own frames must not be unwound.
void CALLBACK callBack(PTP_CALLBACK_INSTANCE instance, void* context, PTP_WORK handle) noexcept
{
    const Work* const work = static_cast<Work*>(context);
    if (work->callback != nullptr)
        work->callback(instance, work->context, handle);
}

}

Pool* createPool(int minimum, int maximum)
{
    return new Pool(minimum, maximum);
}

void destroyPool(Pool* pool)
{
    delete pool;
}

Work* createWork(Pool* pool, WorkCallback callback, void* context)
{
    auto work = std::make_unique<Work>(Work{callback, context, nullptr});
    work->handle = ::CreateThreadpoolWork(callBack, work.get(),
                                          pool == nullptr ? nullptr : pool->environment());
    return work.release();
}

void closeWork(Work* work)
{
    if (work->handle != nullptr) {
        // A program that got hold of the work object may have submitted it by itself.
        ::WaitForThreadpoolWorkCallbacks(work->handle, TRUE);
        ::CloseThreadpoolWork(work->handle);
    }
    delete work;
}

WorkHandle workHandle(const Work* work)
{
    return work->handle;
}

// All are submitted before the first is waited for: the pool's threads take them in this order.
void runWorks(Pool*, Work* const* works, std::size_t count)
{
    // An item for which the system had no work object runs here rather than not at all.
    for (std::size_t i = 0; i < count; ++i) {
        if (works[i]->handle != nullptr)
            ::SubmitThreadpoolWork(works[i]->handle);
        else
            callBack(nullptr, works[i], nullptr);
    }
    for (std::size_t i = 0; i < count; ++i)
        if (works[i]->handle != nullptr)
            ::WaitForThreadpoolWorkCallbacks(works[i]->handle, FALSE);
}

namespace {

// One range of a loop; it stays where it is while the pool has it.
struct Chunk {
    LoopBody body;
    Range range;
    Work* work = nullptr;

    Chunk(const LoopBody& loopBody, Range loopRange) : body(loopBody), range(loopRange) {}
    Chunk(const Chunk&) = delete;
    Chunk& operator=(const Chunk&) = delete;
    ~Chunk()
    {
        if (work != nullptr)
            closeWork(work);
    }

    static void run(WorkInstance, void* chunk, WorkHandle)
    {
        // Its copy of the body ends with the call, on this thread.
        const LoopBody body = std::exchange(static_cast<Chunk*>(chunk)->body, nullptr);
        body(static_cast<Chunk*>(chunk)->range.begin, static_cast<Chunk*>(chunk)->range.end);
    }
};

}

void runLoop(Pool* pool, const LoopBody& body, int count, const LoopRanges& ranges)
{
    std::vector<std::unique_ptr<Chunk>> items;
    std::vector<Work*> works;
    for (int i = 0; i < count; ++i) {
        items.push_back(std::make_unique<Chunk>(body, ranges(i)));
        items.back()->work = createWork(pool, Chunk::run, items.back().get());
        works.push_back(items.back()->work);
    }
    runWorks(pool, works.data(), works.size());
}

}
