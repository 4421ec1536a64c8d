#include "threads/processors.h"

#include <mdtools/debug_output.h>

#include <array>
#include <bitset>
#include <cstdio>
#include <new>

namespace Tools {

namespace {

using Platform::ProcessorRecord;

// What to assume when the count cannot be determined. The numbers differ so that they tell why.
constexpr int CoresIfUnsupported = 1;
constexpr int CoresWithoutMemory = 2;
constexpr int CoresAfterError = 3;

struct Totals {
    int cores = 0;
    int logicalProcessors = 0;
    int nodes = 0;
    int packages = 0;
    std::array<int, 3> caches{};
};

template <class... Arguments>
void report(const ProcessorSource& source, const char* format, Arguments... arguments)
{
    std::array<char, 200> text{};
    std::snprintf(text.data(), text.size(), format, arguments...);
    source.report(text.data());
}

void count(const ProcessorSource& source, const ProcessorRecord& record, Totals& totals)
{
    switch (record.relation) {
    case ProcessorRecord::Core:
        ++totals.cores;
        totals.logicalProcessors += static_cast<int>(std::bitset<64>(record.mask).count());
        break;
    case ProcessorRecord::NumaNode:
        ++totals.nodes;
        break;
    case ProcessorRecord::Cache:
        if (record.cacheLevel >= 1 && record.cacheLevel <= 3)
            ++totals.caches[static_cast<std::size_t>(record.cacheLevel - 1)];
        break;
    case ProcessorRecord::Package:
        ++totals.packages;
        break;
    default:
        source.report(
            "\n getCpuCount : Error: Unsupported LOGICAL_PROCESSOR_RELATIONSHIP value.\n");
    }
}

void reportTotals(const ProcessorSource& source, const Totals& totals)
{
    source.report("\n getCpuCount : GetLogicalProcessorInformation results:\n");
    report(source, "Number of NUMA nodes: %d\n", totals.nodes);
    report(source, "Number of physical processor packages: %d\n", totals.packages);
    report(source, "Number of processor cores: %d\n", totals.cores);
    report(source, "Number of logical processors: %d\n", totals.logicalProcessors);
    report(source, "Number of processor L1/L2/L3 caches: %d/%d/%d\n", totals.caches[0],
           totals.caches[1], totals.caches[2]);
}

}

bool ProcessorSource::isSupported() const
{
    return Platform::hasProcessorInformation();
}

bool ProcessorSource::read(void* buffer, std::uint32_t& size, int& error) const
{
    return Platform::readProcessorInformation(buffer, size, error);
}

std::vector<ProcessorRecord> ProcessorSource::records(const void* buffer, std::uint32_t size) const
{
    return Platform::processorRecords(buffer, size);
}

std::unique_ptr<unsigned char[]> ProcessorSource::allocate(std::uint32_t size) const
{
    return std::unique_ptr<unsigned char[]>(new (std::nothrow) unsigned char[size]);
}

void ProcessorSource::report(const char* text) const
{
    debugPrintf("%s", text);
}

CoreCount determineCoreCount(const ProcessorSource& source)
{
    if (!source.isSupported()) {
        source.report("\n getCpuCount : GetLogicalProcessorInformation is not supported.\n");
        return {CoresIfUnsupported, false};
    }
    std::unique_ptr<unsigned char[]> buffer;
    std::uint32_t size = 0;
    int error = 0;
    // Again and again: processors may come between two calls.
    while (!source.read(buffer.get(), size, error)) {
        if (error != Platform::BufferTooSmall) {
            report(source, "\n getCpuCount : Error %d\n", error);
            return {CoresAfterError, false};
        }
        buffer = source.allocate(size);
        if (!buffer) {
            source.report("\n getCpuCount : Error: Allocation failure\n");
            return {CoresWithoutMemory, false};
        }
    }
    Totals totals;
    for (const ProcessorRecord& record : source.records(buffer.get(), size))
        count(source, record, totals);
    reportTotals(source, totals);
    return {totals.cores, true};
}

}
