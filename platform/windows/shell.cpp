#include "platform/shell.h"

#include <windows.h>

#include <shellapi.h>

namespace Tools::Platform {

int shellExecute(const std::string& file, const std::string& parameters)
{
    const HINSTANCE result =
        ::ShellExecuteA(::GetDesktopWindow(), "open", file.c_str(),
                        parameters.empty() ? nullptr : parameters.c_str(), nullptr, SW_SHOW);
    const INT_PTR number = reinterpret_cast<INT_PTR>(result);
    // A large success value is cut to what an int holds.
    return number > 32 ? 33 : static_cast<int>(number);
}

}
