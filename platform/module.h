#pragma once

#include <mdtools/platform_types.h>

#include <string>

namespace Tools::Platform {

// The file of a loaded module; of the running program for null. Empty if it is not known.
std::string getModuleFile(ModuleHandle module);

}
