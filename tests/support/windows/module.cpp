#include "support/module.h"

#include <windows.h>

namespace MdToolsTest {

void* loadModule(const std::string& path)
{
    return reinterpret_cast<void*>(::LoadLibraryA(path.c_str()));
}

void* findFunction(void* module, const std::string& name)
{
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(module), name.c_str()));
}

void freeModule(void* module)
{
    ::FreeLibrary(static_cast<HMODULE>(module));
}

bool isModuleLoaded(const std::string& path)
{
    return ::GetModuleHandleA(path.c_str()) != nullptr;
}

}
