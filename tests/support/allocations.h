#pragma once

#include <atomic>
#include <cstddef>

// The program's own operators new and delete, for tests of what takes memory, and of what happens
// when there is none. They are in the programs only that name allocations.cpp among their sources.
namespace MdToolsTest {

// How many allocations were asked for.
extern std::atomic<std::size_t> allocationCount;
// How many of them have not been given back.
extern std::atomic<std::size_t> liveCount;

// Refuses every allocation while it is true.
extern std::atomic<bool> isOutOfMemory;

}
