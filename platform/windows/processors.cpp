#include "platform/processors.h"

#include <cstring>

#include <windows.h>

namespace Tools::Platform {

namespace {

using Query = BOOL(WINAPI*)(SYSTEM_LOGICAL_PROCESSOR_INFORMATION*, DWORD*);

// Looked up, not linked: a system without it must still load the library.
Query findQuery()
{
    const FARPROC function =
        ::GetProcAddress(::GetModuleHandleA("kernel32"), "GetLogicalProcessorInformation");
    return reinterpret_cast<Query>(reinterpret_cast<void*>(function));
}

}

bool hasProcessorInformation()
{
    return findQuery() != nullptr;
}

bool readProcessorInformation(void* buffer, std::uint32_t& size, int& error)
{
    DWORD length = size;
    const BOOL done =
        findQuery()(static_cast<SYSTEM_LOGICAL_PROCESSOR_INFORMATION*>(buffer), &length);
    error = static_cast<int>(::GetLastError());
    size = length;
    return done != FALSE;
}

std::vector<ProcessorRecord> processorRecords(const void* buffer, std::uint32_t size)
{
    // Copied out, since nothing is said about the alignment of the buffer.
    SYSTEM_LOGICAL_PROCESSOR_INFORMATION entry;
    std::vector<ProcessorRecord> records;
    for (std::size_t at = 0; at + sizeof entry <= size; at += sizeof entry) {
        std::memcpy(&entry, static_cast<const char*>(buffer) + at, sizeof entry);
        const int level = entry.Relationship == RelationCache ? entry.Cache.Level : 0;
        records.push_back({static_cast<int>(entry.Relationship), entry.ProcessorMask, level});
    }
    return records;
}

}
