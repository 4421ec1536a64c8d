#include "platform/dynamic_library.h"

#include <windows.h>

namespace Tools::Platform {

Library loadLibrary(const std::string& name)
{
    return ::LoadLibraryA(name.c_str());
}

Function findFunction(Library library, const std::string& name)
{
    return reinterpret_cast<Function>(
        ::GetProcAddress(static_cast<HMODULE>(library), name.c_str()));
}

}
