#include "support/test_environment.h"

#include <cstdlib>

#include <windows.h>

namespace MdToolsTest {

const bool IsWindows = true;

void setVariable(const std::string& name, const std::string& value)
{
    ::_putenv_s(name.c_str(), value.c_str());
}

void removeUserKey(const std::string& path)
{
    ::RegDeleteTreeA(HKEY_CURRENT_USER, path.c_str());
}

}
