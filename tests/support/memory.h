#pragma once

#include <cstddef>

namespace MdToolsTest {

// What this process has allocated just now, in bytes.
std::size_t memoryInUse();

}
