#pragma once

#include <string>
#include <vector>

namespace Tools::Platform {

// Takes a program's parameters to pieces, for systems that do not do that themselves.
using ArgumentSplitter = std::vector<std::string> (*)(const std::string& parameters);

// Opens a document or starts a program as the desktop does. Above 32 is success; else the numbers
// of Windows: 2 no such file, 3 no such path, 5 no access, 11 no valid program, 31 nothing to open
// it with.
int shellExecute(const std::string& file, const std::string& parameters, ArgumentSplitter split);

}
