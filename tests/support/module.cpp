#include "support/module.h"

#include "support/child_process.h"

#include <filesystem>

#ifdef _WIN32
#include <windows.h>

#include <tlhelp32.h>
#else
#include <dlfcn.h>
#endif

namespace MdToolsTest {

#ifdef _WIN32

void* loadModule(const std::string& path)
{
    return reinterpret_cast<void*>(::LoadLibraryA(path.c_str()));
}

void* findFunction(void* module, const std::string& name)
{
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(module), name.c_str()));
}

void freeModule(void* module)
{
    ::FreeLibrary(static_cast<HMODULE>(module));
}

bool isModuleLoaded(const std::string& path)
{
    return ::GetModuleHandleA(path.c_str()) != nullptr;
}

int countThreads()
{
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    int count = 0;
    for (BOOL more = ::Thread32First(snapshot, &entry); more;
         more = ::Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
    ::CloseHandle(snapshot);
    return count;
}

std::string libraryPath()
{
    return (std::filesystem::path(ownProgram()).parent_path() / "mdtools.dll").string();
}

#else

void* loadModule(const std::string& path)
{
    return ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* findFunction(void* module, const std::string& name)
{
    return ::dlsym(module, name.c_str());
}

void freeModule(void* module)
{
    ::dlclose(module);
}

bool isModuleLoaded(const std::string& path)
{
    void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (module)
        ::dlclose(module);
    return module != nullptr;
}

int countThreads()
{
    int count = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator("/proc/self/task"))
        ++count;
    return count;
}

std::string libraryPath()
{
    return (std::filesystem::path(ownProgram()).parent_path() / "libmdtools.so").string();
}

#endif

}
