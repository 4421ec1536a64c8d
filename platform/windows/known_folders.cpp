#include "platform/known_folders.h"

#include <array>
#include <shlobj.h>
#include <windows.h>

namespace Tools::Platform {

namespace {

constexpr std::size_t BufferSize = 4096;

}

std::string applicationDataDirectory()
{
    std::array<char, BufferSize> path = {};
    const HRESULT result =
        ::SHGetFolderPathA(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, path.data());
    return SUCCEEDED(result) ? std::string(path.data()) : std::string();
}

// The system makes it with the account.
std::string applicationDataPath()
{
    return applicationDataDirectory();
}

std::string temporaryDirectory()
{
    std::array<char, BufferSize> path = {};
    const DWORD length = ::GetTempPathA(static_cast<DWORD>(path.size()), path.data());
    return length > 0 && length < path.size() ? std::string(path.data()) : std::string(".\\");
}

std::string createTemporaryFile(const std::string& prefix)
{
    std::array<char, MAX_PATH> path = {};
    // Number 0 asks for a free name and makes the file.
    if (::GetTempFileNameA(temporaryDirectory().c_str(), prefix.c_str(), 0, path.data()) == 0)
        return {};
    return path.data();
}

std::string userName()
{
    std::array<char, BufferSize> name = {};
    DWORD size = static_cast<DWORD>(name.size());
    return ::GetUserNameA(name.data(), &size) != FALSE ? std::string(name.data()) : std::string();
}

}
