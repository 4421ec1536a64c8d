#include "platform/environment.h"

#include <windows.h>

namespace Tools::Platform {

bool readVariable(const std::string& name, std::string& value)
{
    value.clear();
    // The needed size counts the NUL, the final length does not. An empty variable has length 0.
    ::SetLastError(ERROR_SUCCESS);
    DWORD size = ::GetEnvironmentVariableA(name.c_str(), nullptr, 0);
    while (size > value.size()) {
        value.resize(size);
        size = ::GetEnvironmentVariableA(name.c_str(), value.data(), size);
    }
    value.resize(size);
    return size > 0 || ::GetLastError() != ERROR_ENVVAR_NOT_FOUND;
}

bool setVariable(const std::string& name, const std::string& value)
{
    return ::SetEnvironmentVariableA(name.c_str(), value.c_str()) != FALSE;
}

}
