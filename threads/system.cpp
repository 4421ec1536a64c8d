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

int machineCoreCount()
{
    const int known = coreCount.load(std::memory_order_relaxed);
    if (known != NotDetermined)
        return known;
    const CoreCount count = determineCoreCount(ProcessorSource());
    if (count.isDetermined)
        coreCount.store(count.cores, std::memory_order_relaxed);
    return count.cores;
}

}

int System::getCpuCoreCount()
{
    // Determined and reported even if the program has a function of its own.
    const int count = machineCoreCount();
    int (*const function)() = coreCountFunction.load(std::memory_order_relaxed);
    return function == nullptr ? count : function();
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
