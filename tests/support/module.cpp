#include "support/module.h"

#include "support/child_process.h"

#include <filesystem>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace MdToolsTest {

#ifdef _WIN32

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

std::string libraryPath()
{
    return (std::filesystem::path(ownProgram()).parent_path() / "mdtools.dll").string();
}

#else

void* loadModule(const std::string& path)
{
    return ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* findFunction(void* module, const std::string& name)
{
    return ::dlsym(module, name.c_str());
}

void freeModule(void* module)
{
    ::dlclose(module);
}

bool isModuleLoaded(const std::string& path)
{
    void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (module)
        ::dlclose(module);
    return module != nullptr;
}

std::string libraryPath()
{
    return (std::filesystem::path(ownProgram()).parent_path() / "libmdtools.so").string();
}

#endif

}
