#include <mdtools/system.h>
#include <mdtools/threads.h>

#include "platform/lifetime.h"
#include "threads/sized_pool.h"

#include <algorithm>
#include <vector>

namespace Tools {

namespace {

struct LoopPool {
    Platform::Pool* pool = createSizedPool();
    // One loop at a time.
    CriticalSection lock;
    // Those of the present loop; kept, as most loops are divided alike.
    std::vector<Platform::Range> ranges;
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
void divide(int count, int chunks, std::vector<Platform::Range>& ranges)
{
    const int length = count / chunks;
    ranges.clear();
    for (int i = 0; i < chunks; ++i)
        ranges.push_back({i * length, (i + 1) * length});
    ranges.back().end = count;
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
    divide(count, chunks, loop->ranges);
    Platform::runLoop(loop->pool, body, loop->ranges);
}

}
