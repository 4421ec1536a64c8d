#include <mdtools/system.h>
#include <mdtools/threads.h>

#include "platform/lifetime.h"
#include "threads/sized_pool.h"

#include <algorithm>

namespace Tools {

namespace {

struct LoopPool {
    Platform::Pool* pool = createSizedPool();
    // One loop at a time.
    CriticalSection lock;
};

LoopPool* loopPool;

// At the end of the process the pool stays: its threads may be in the middle of a body.
void destroyLoopPool(Platform::LibraryEnd end)
{
    if (end != Platform::LibraryEnd::Unloading)
        return;
    Platform::destroyPool(loopPool->pool);
    delete loopPool;
}

LoopPool* createLoopPool()
{
    loopPool = new LoopPool;
    Platform::onLibraryEnd(destroyLoopPool);
    return loopPool;
}

// Equal parts of 0 to `count`, the last of which takes what the division leaves over.
Platform::LoopRanges divide(int count, int chunks)
{
    return [count, last = chunks - 1, length = count / chunks](int i) {
        return Platform::Range{i * length, i == last ? count : (i + 1) * length};
    };
}

// Halved, not cut to `count`: callers know the ranges that come of it.
int chunkCount(int count, bool sequential)
{
    int chunks = System::getCpuCoreCount();
    while (count < chunks)
        chunks /= 2;
    return chunks < 1 || sequential ? 1 : chunks;
}

}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface has it so
void ThreadUtility::forEach(int count, std::function<void(int begin, int end)> body,
                            bool sequential)
{
    if (!body)
        return;
    count = std::max(count, 0);
    const int chunks = chunkCount(count, sequential);
    static LoopPool* const loop = createLoopPool();
    const CriticalSectionLocker locker(loop->lock);
    Platform::runLoop(loop->pool, body, chunks, divide(count, chunks));
}

}
