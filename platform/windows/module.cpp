#include "platform/module.h"

#include <windows.h>

namespace Tools::Platform {

std::string getModuleFile(ModuleHandle module)
{
    std::string name(MAX_PATH, '\0');
    for (;;) {
        const DWORD size = static_cast<DWORD>(name.size());
        const DWORD length = ::GetModuleFileNameA(module, name.data(), size);
        if (length < size) {
            name.resize(length);
            return name;
        }
        name.resize(2 * name.size());
    }
}

}
