#pragma once

#include "platform/processors.h"

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

}
