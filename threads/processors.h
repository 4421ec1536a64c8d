#pragma once

#include "platform/processors.h"

#include <mdtools/nullable.h>

#include <memory>

namespace Tools {

// What the core count is determined from and reported to: the system and the debug channel. Tests
// put their own in place of both.
class ProcessorSource {
public:
    virtual ~ProcessorSource() = default;

    virtual bool isSupported() const;
    virtual bool read(void* buffer, std::uint32_t& size, int& error) const;
    virtual std::vector<Platform::ProcessorRecord> records(const void* buffer,
                                                           std::uint32_t size) const;
    // Null if there is no memory.
    virtual std::unique_ptr<unsigned char[]> allocate(std::uint32_t size) const;
    virtual void report(const char* text) const;
};

// A core count, or what to assume for the moment where none could be determined.
struct CoreCount {
    int cores;
    bool isDetermined;
};

CoreCount determineCoreCount(const ProcessorSource& source);

}
