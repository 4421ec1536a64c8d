#include "support/module.h"

#include <dlfcn.h>

namespace MdToolsTest {

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

}
