#pragma once

#include <mdtools/platform_types.h>

namespace Tools::Platform {

// A new identifier from the system.
Guid createGuid();

}
