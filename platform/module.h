#pragma once

#include <mdtools/platform_types.h>

#include <string>

namespace Tools::Platform {

// The file of a loaded module; of the running program for null. Empty if it cannot be told.
std::string getModuleFile(ModuleHandle module);

}
