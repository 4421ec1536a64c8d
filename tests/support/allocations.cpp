#include "support/allocations.h"

#include <cstdlib>
#include <new>

namespace MdToolsTest {

std::atomic<std::size_t> allocationCount = 0;
std::atomic<std::size_t> liveCount = 0;
std::atomic<bool> isOutOfMemory = false;

}

void* operator new(std::size_t size)
{
    ++MdToolsTest::allocationCount;
    void* const memory = MdToolsTest::isOutOfMemory ? nullptr : std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    ++MdToolsTest::liveCount;
    return memory;
}

void operator delete(void* memory) noexcept
{
    if (memory != nullptr)
        --MdToolsTest::liveCount;
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    if (memory != nullptr)
        --MdToolsTest::liveCount;
    std::free(memory);
}
