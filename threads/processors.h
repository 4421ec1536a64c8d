#pragma once

#include "platform/processors.h"

#include <atomic>

namespace Tools {

// What the core count is determined from and reported to: the system and the debug channel. Tests
// put their own in place of both.
class ProcessorSource {
public:
    virtual ~ProcessorSource() = default;

    virtual Platform::Processors read() const;
    virtual void report(const char* text) const;
};

// A core count, or what to assume for the moment where none could be determined.
struct CoreCount {
    int cores;
    bool isDetermined;
};

CoreCount determineCoreCount(const ProcessorSource& source);

// Remembers the count once it is determined.
class CoreCounter {
public:
    // What `function` returns, unless it is null; but only where the count can be determined, which
    // is done and reported first. No lock: two first calls at once both determine the same number.
    int count(const ProcessorSource& source, int (*function)());

private:
    static constexpr int NotDetermined = -1;
    std::atomic<int> m_known{NotDetermined};
};

}
