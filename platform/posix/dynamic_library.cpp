#include "platform/dynamic_library.h"

#include "platform/posix/native_path.h"

#include <dlfcn.h>
#include <link.h>

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
    toSlashes(path);
    void* library = ::dlopen(path.c_str(), RTLD_NOW);
    return library != nullptr ? library : ::dlopen(withSystemName(path).c_str(), RTLD_NOW);
}

Function findFunction(Library library, const std::string& name)
{
    void* const address = ::dlsym(library, name.c_str());
    // The system looks into the libraries that this one needs, too; theirs are not its own.
    Dl_info info = {};
    link_map* owner = nullptr;
    link_map* own = nullptr;
    if (address == nullptr ||
        ::dladdr1(address, &info, reinterpret_cast<void**>(&owner), RTLD_DL_LINKMAP) == 0 ||
        ::dlinfo(library, RTLD_DI_LINKMAP, &own) != 0 || owner != own)
        return nullptr;
    return reinterpret_cast<Function>(address);
}

}
