#pragma once

#include <string>

namespace MdToolsTest {

// A directory of this test process alone, without a final separator, in the system's own form. It
// is there before the first test and removed after the last one. Settings, application data and the
// debug channel's files of the library under test go below it as well, so that no test touches the
// real user's.
const std::string& workDirectory();

// Whether this is the Windows build (under Wine, here).
#ifdef _WIN32
inline constexpr bool IsWindows = true;
#else
inline constexpr bool IsWindows = false;
#endif

// Called by main() only.
void createWorkDirectory();
void removeWorkDirectory();

}
