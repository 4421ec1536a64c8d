#include "platform/dynamic_library.h"

#include <algorithm>
#include <dlfcn.h>

namespace Tools::Platform {

namespace {

// "plugins/frame" as "plugins/libframe.so".
std::string withSystemName(const std::string& name)
{
    const std::size_t start = name.rfind('/') + 1; // 0 where there is no slash
    return name.substr(0, start) + "lib" + name.substr(start) + ".so";
}

}

Library loadLibrary(const std::string& name)
{
    // The empty name would be the program itself.
    if (name.empty())
        return nullptr;
    std::string path = name;
    std::replace(path.begin(), path.end(), '\\', '/');
    void* library = ::dlopen(path.c_str(), RTLD_NOW);
    return library != nullptr ? library : ::dlopen(withSystemName(path).c_str(), RTLD_NOW);
}

Function findFunction(Library library, const std::string& name)
{
    return reinterpret_cast<Function>(::dlsym(library, name.c_str()));
}

}
