#include "support/memory.h"

// Before <psapi.h>, which needs it.
#include <windows.h>

#include <psapi.h>

namespace MdToolsTest {

std::size_t memoryInUse()
{
    PROCESS_MEMORY_COUNTERS counters{};
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage;
}

}
