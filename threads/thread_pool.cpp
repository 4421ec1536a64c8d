#include <mdtools/threads.h>

#include "platform/lifetime.h"
#include "threads/sized_pool.h"

#include <vector>

namespace Tools {

// The lock guards the lists, and by being held through a run makes runs follow one another.
struct ThreadPool::State {
    Platform::Pool* pool = createSizedPool();
    CriticalSection lock;
    std::vector<std::unique_ptr<ThreadWork>> items;
    // Those of the items, in the same order; brought up to date when the items are run.
    std::vector<Platform::Work*> works;
};

ThreadWork::ThreadWork(ThreadPool* pool, WorkCallback callback, void* context)
    : m_work(
          Platform::createWork(pool == nullptr ? nullptr : pool->m_state->pool, callback, context))
{}

ThreadWork::~ThreadWork()
{
    Platform::closeWork(m_work);
}

WorkHandle ThreadWork::getWork() const
{
    return Platform::workHandle(m_work);
}

ThreadPool::ThreadPool() : m_state(new State) {}

ThreadPool::~ThreadPool()
{
    // Nothing may be waited for or freed under threads that were ended in the middle of their work.
    if (Platform::otherThreadsWereStopped())
        return;
    clearWorks();
    Platform::destroyPool(m_state->pool);
    delete m_state;
}

void ThreadPool::addWork(std::unique_ptr<ThreadWork> work)
{
    if (!work)
        return;
    const CriticalSectionLocker locker(m_state->lock);
    m_state->items.push_back(std::move(work));
}

void ThreadPool::runWorks()
{
    const CriticalSectionLocker locker(m_state->lock);
    std::vector<Platform::Work*>& works = m_state->works;
    // Items only come at the end or go all at once, so the sizes tell whether the lists differ.
    if (works.size() != m_state->items.size()) {
        works.clear();
        for (const auto& item : m_state->items)
            works.push_back(item->m_work);
    }
    Platform::runWorks(m_state->pool, works.data(), works.size());
}

void ThreadPool::clearWorks()
{
    const CriticalSectionLocker locker(m_state->lock);
    m_state->works.clear();
    m_state->items.clear();
}

}
