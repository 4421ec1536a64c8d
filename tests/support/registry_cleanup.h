#pragma once

#include <string>

namespace MdToolsTest {

// Removes a key of the current user and all below it, where programs under test have to keep their
// settings in the registry. On Linux the settings vanish with the work directory anyway.
void removeUserKey(const std::string& path);

}
