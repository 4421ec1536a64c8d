#include <mdtools/dll_util.h>

#include <mdtools/debug_output.h>

#include "platform/dynamic_library.h"

namespace Tools {

namespace {

Platform::Function findFunction(const std::string& library, const std::string& function)
{
    // Never unloaded: the caller keeps the function for as long as it likes.
    const Platform::Library module = Platform::loadLibrary(library);
    if (module == nullptr) {
        debugPrintf("Could not load Dll \"%s\"\n", library.c_str());
        return nullptr;
    }
    const Platform::Function address = Platform::findFunction(module, function);
    if (address == nullptr)
        debugPrintf("Could not get address of function \"%s\"\n", function.c_str());
    return address;
}

}

DllUtil* DllUtil::get()
{
    static DllUtil instance;
    return &instance;
}

int (*DllUtil::getFunction(const std::string& library, const std::string& function))()
{
    return reinterpret_cast<int (*)()>(findFunction(library, function));
}

int (*DllUtil::getArgcArgvFunction(const std::string& library, const std::string& function))(int,
                                                                                             char**)
{
    return reinterpret_cast<int (*)(int, char**)>(findFunction(library, function));
}

}
