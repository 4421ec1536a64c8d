#include "threads/processors.h"

#include <mdtools/debug_output.h>

#include <array>
#include <bitset>
#include <cstdio>

namespace Tools {

namespace {

using Platform::ProcessorRecord;

// What to assume when the count cannot be determined. The numbers differ by the reason.
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

// The debug channel takes whole texts, so numbers are put in here.
template <class... Arguments>
void report(const ProcessorSource& source, const char* format, Arguments... arguments)
{
    std::array<char, 200> text{};
    std::snprintf(text.data(), text.size(), format, arguments...);
    source.report(text.data());
}

// Two hardware threads of a core are one record of relation Core with two bits.
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

Platform::Processors ProcessorSource::read() const
{
    return Platform::readProcessors();
}

void ProcessorSource::report(const char* text) const
{
    debugPrintf("%s", text);
}

CoreCount determineCoreCount(const ProcessorSource& source)
{
    const Platform::Processors processors = source.read();
    switch (processors.answer) {
    case Platform::Processors::Answer::NotSupported:
        source.report("\n getCpuCount : GetLogicalProcessorInformation is not supported.\n");
        return {CoresIfUnsupported, false};
    case Platform::Processors::Answer::NoMemory:
        source.report("\n getCpuCount : Error: Allocation failure\n");
        return {CoresWithoutMemory, false};
    case Platform::Processors::Answer::Failed:
        report(source, "\n getCpuCount : Error %d\n", processors.error);
        return {CoresAfterError, false};
    case Platform::Processors::Answer::Complete:
        break;
    }
    Totals totals;
    for (const ProcessorRecord& record : processors.records)
        count(source, record, totals);
    reportTotals(source, totals);
    return {totals.cores, true};
}

int CoreCounter::count(const ProcessorSource& source, int (*function)())
{
    int known = m_known.load(std::memory_order_relaxed);
    if (known == NotDetermined) {
        const CoreCount count = determineCoreCount(source);
        if (!count.isDetermined)
            return count.cores;
        known = count.cores;
        m_known.store(known, std::memory_order_relaxed);
    }
    return function == nullptr ? known : function();
}

}
