#include "platform/shell.h"

#include <windows.h>

#include <shellapi.h>

namespace Tools::Platform {

namespace {

// The shell opens no longer ones, and Wine's does not survive them.
bool isTooLong(const std::string& file)
{
    constexpr std::size_t LongestUrl = 2083;
    const std::size_t colon = file.find(':');
    const bool isUrl = colon != std::string::npos && colon > 1;
    return file.size() > (isUrl ? LongestUrl : MAX_PATH);
}

}

int shellExecute(const std::string& file, const std::string& parameters, ArgumentSplitter)
{
    constexpr int FileNotFound = 2;
    if (isTooLong(file))
        return FileNotFound;
    const HINSTANCE result =
        ::ShellExecuteA(::GetDesktopWindow(), "open", file.c_str(),
                        parameters.empty() ? nullptr : parameters.c_str(), nullptr, SW_SHOW);
    const INT_PTR number = reinterpret_cast<INT_PTR>(result);
    // A large success value is cut to what an int holds.
    return number > 32 ? 33 : static_cast<int>(number);
}

}
