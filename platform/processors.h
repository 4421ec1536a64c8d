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

struct Processors {
    enum class Answer { Complete, NotSupported, NoMemory, Failed };

    Answer answer = Answer::Complete;
    // The system's own number of what Failed.
    int error = 0;
    std::vector<ProcessorRecord> records{};
};

Processors readProcessors();

}
