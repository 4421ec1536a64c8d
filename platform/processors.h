#pragma once

#include <cstdint>
#include <vector>

// platform/processors.h - what the machine's processors are made of.
namespace Tools::Platform {

// The relations have the system's own numbers; others may come.
struct ProcessorRecord {
    static constexpr int Core = 0;
    static constexpr int NumaNode = 1;
    static constexpr int Cache = 2;
    static constexpr int Package = 3;

    int relation;
    // The hardware threads that the record is about, a bit each.
    std::uint64_t mask;
    // 1 to 3, of a cache only.
    int cacheLevel;
};

// The error number of a buffer that is too small.
constexpr int BufferTooSmall = 122;

bool hasProcessorInformation();

// Fills `buffer` in the system's own form. `size` is its length in bytes and becomes the length
// needed. Fails with the system's error number.
bool readProcessorInformation(void* buffer, std::uint32_t& size, int& error);

// The records of a filled buffer.
std::vector<ProcessorRecord> processorRecords(const void* buffer, std::uint32_t size);

}
