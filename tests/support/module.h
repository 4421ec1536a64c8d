#pragma once

#include "support/programs.h"

#include <string>

namespace MdToolsTest {

// A library loaded by hand; null if it cannot be loaded.
void* loadModule(const std::string& path);
void* findFunction(void* module, const std::string& name);
void freeModule(void* module);

// True while some copy of the library is in memory.
bool isModuleLoaded(const std::string& path);

}
