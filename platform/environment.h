#pragma once

#include <string>

// The variables of the process, as child processes inherit them. Calls of this library do not
// disturb each other, whatever thread they come from; on Linux others may be disturbed that read
// the variables without it.
namespace Tools::Platform {

// False, and an empty text, if the variable is not set. Names end at their first NUL, and ignore
// case on Windows only.
bool readVariable(const std::string& name, std::string& value);

// False for a name that the system does not take.
bool setVariable(const std::string& name, const std::string& value);

}
