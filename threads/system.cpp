#include <mdtools/system.h>

#include "platform/threads.h"
#include "threads/processors.h"

#include <algorithm>
#include <atomic>

namespace Tools {

namespace {

constexpr int NotDetermined = -1;

// No lock: two first calls at once both determine the same number.
std::atomic<int> coreCount{NotDetermined};
std::atomic<int (*)()> coreCountFunction{nullptr};

}

int System::getCpuCoreCount()
{
    // Determined and reported even if the program has a function of its own, which is not asked
    // where that fails.
    int known = coreCount.load(std::memory_order_relaxed);
    if (known == NotDetermined) {
        const CoreCount count = determineCoreCount(ProcessorSource());
        if (!count.isDetermined)
            return count.cores;
        known = count.cores;
        coreCount.store(known, std::memory_order_relaxed);
    }
    int (*const function)() = coreCountFunction.load(std::memory_order_relaxed);
    return function == nullptr ? known : function();
}

void System::attachCpuCoreCountFunction(int (*function)())
{
    coreCountFunction.store(function, std::memory_order_relaxed);
}

void System::sleep(int milliseconds)
{
    Platform::sleep(static_cast<unsigned int>(std::max(milliseconds, 0)));
}

}
