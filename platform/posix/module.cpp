#include "platform/module.h"

#include <climits>
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

std::string ownProgramFile()
{
    std::string name(PATH_MAX, '\0');
    const ssize_t length = ::readlink("/proc/self/exe", name.data(), name.size());
    name.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return name;
}

}

std::string getModuleFile(ModuleHandle module)
{
    link_map* map = nullptr;
    if (module == nullptr || ::dlinfo(module, RTLD_DI_LINKMAP, &map) != 0)
        return ownProgramFile();
    return map->l_name[0] != '\0' ? map->l_name : ownProgramFile();
}

}
