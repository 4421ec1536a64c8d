#pragma once

#include <string>

namespace MdToolsTest {

// A directory of this test process alone, without a final separator, in the system's own form. It
// is there before the first test and removed after the last one. Settings, application data and the
// debug channel's files of the library under test go below it as well, so that no test touches the
// real user's.
const std::string& workDirectory();

// Whether this is the Windows build (under Wine, here).
extern const bool IsWindows;

// For this process and its children.
void setVariable(const std::string& name, const std::string& value);

// Removes a key of the current user and all below it, where programs under test have to keep their
// settings in the registry. On Linux the settings vanish with the work directory anyway.
void removeUserKey(const std::string& path);

// Called by main() only.
void createWorkDirectory();
void removeWorkDirectory();

}
