#include "threads/sized_pool.h"

#include <mdtools/system.h>

#include <algorithm>
#include <limits>

namespace Tools {

Platform::Pool* createSizedPool()
{
    constexpr int MinimumThreads = 2;
    constexpr int MostCores = std::numeric_limits<int>::max() / 2;
    // A program may have attached anything for the count.
    const int cores = std::clamp(System::getCpuCoreCount(), 1, MostCores);
    return Platform::createPool(MinimumThreads, 2 * cores);
}

}
