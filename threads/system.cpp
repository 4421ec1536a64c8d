#include <mdtools/system.h>

#include "platform/threads.h"
#include "threads/processors.h"

#include <algorithm>
#include <atomic>

namespace Tools {

namespace {

constinit CoreCounter coreCounter;
std::atomic<int (*)()> coreCountFunction{nullptr};

}

int System::getCpuCoreCount()
{
    return coreCounter.count(ProcessorSource(), coreCountFunction.load(std::memory_order_relaxed));
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
