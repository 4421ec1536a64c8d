#include "support/test_environment.h"

#include <cstdlib>

namespace MdToolsTest {

const bool IsWindows = false;

void setVariable(const std::string& name, const std::string& value)
{
    ::setenv(name.c_str(), value.c_str(), 1);
}

void removeUserKey(const std::string&) {}

}
