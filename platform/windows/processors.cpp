#include "platform/processors.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>

#include <windows.h>

namespace Tools::Platform {

namespace {

using Entry = SYSTEM_LOGICAL_PROCESSOR_INFORMATION;
using Query = BOOL(WINAPI*)(Entry*, DWORD*);

// Looked up, not linked: a system without it must still load the library.
Query findQuery()
{
    const FARPROC function =
        ::GetProcAddress(::GetModuleHandleA("kernel32"), "GetLogicalProcessorInformation");
    return reinterpret_cast<Query>(reinterpret_cast<void*>(function));
}

ProcessorRecord toRecord(const Entry& entry)
{
    const int level = entry.Relationship == RelationCache ? entry.Cache.Level : 0;
    return {static_cast<int>(entry.Relationship), entry.ProcessorMask, level};
}

}

Processors readProcessors()
{
    const Query query = findQuery();
    if (query == nullptr)
        return {.answer = Processors::Answer::NotSupported};
    std::unique_ptr<Entry[]> entries;
    DWORD size = 0;
    // Again and again: processors may come between two calls.
    while (query(entries.get(), &size) == FALSE) {
        const DWORD error = ::GetLastError();
        if (error != ERROR_INSUFFICIENT_BUFFER)
            return {.answer = Processors::Answer::Failed, .error = static_cast<int>(error)};
        entries.reset(new (std::nothrow) Entry[size / sizeof(Entry) + 1]);
        if (entries == nullptr)
            return {.answer = Processors::Answer::NoMemory};
    }
    Processors result;
    std::transform(entries.get(), entries.get() + size / sizeof(Entry),
                   std::back_inserter(result.records), toRecord);
    return result;
}

}
