#pragma once

#include <mdtools/platform_types.h>

#include <cstddef>
#include <functional>

// platform/thread_pool.h - a private pool of threads that runs batches of work.
namespace Tools::Platform {

class Pool;
struct Work;

// Starts `minimum` threads and adds more when there is work for them, up to `maximum`; they stay.
Pool* createPool(int minimum, int maximum);

// Drops the work that has not started, waits for what runs, and ends the threads.
void destroyPool(Pool* pool);

// A null pool is that of the process on Windows; on Linux the pool that runs the work counts.
Work* createWork(Pool* pool, WorkCallback callback, void* context);
void closeWork(Work* work);
WorkHandle workHandle(const Work* work);

// Hands all of `works` over in order and returns when each has been called once. One call at a time
// for each pool. An exception that leaves a callback ends the program.
void runWorks(Pool* pool, Work* const* works, std::size_t count);

struct Range {
    int begin;
    int end;
};

// Likewise calls `body(begin, end)` for the ranges with the numbers from 0 to `count`. Each call is
// made on a copy of `body` of its own, which is destroyed by the thread that called it.
using LoopBody = std::function<void(int begin, int end)>;
using LoopRanges = std::function<Range(int number)>;
void runLoop(Pool* pool, const LoopBody& body, int count, const LoopRanges& ranges);

}
