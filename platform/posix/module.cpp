#include "platform/module.h"

#include <climits>
#include <cstdint>
#include <dlfcn.h>
#include <fstream>
#include <link.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

constexpr char OwnProgram[] = "/proc/self/exe";

bool isSameFile(const char* a, const char* b)
{
    struct stat first = {};
    struct stat second = {};
    return ::stat(a, &first) == 0 && ::stat(b, &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

// The path, unless the program's file has been removed or replaced since: then the system's own
// reference to it, which still opens the right one.
std::string ownProgramFile()
{
    std::string name(PATH_MAX, '\0');
    const ssize_t length = ::readlink(OwnProgram, name.data(), name.size());
    name.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return isSameFile(name.c_str(), OwnProgram) ? name : OwnProgram;
}

// The whole path of the file that `address` is mapped from; empty if the system does not say. A
// line has the range, four words about it, and the path.
std::string mappedFile(std::uintptr_t address)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream stream(line);
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char dash = 0;
        std::string skipped;
        stream >> std::hex >> begin >> dash >> end;
        if (address < begin || address >= end)
            continue;
        for (int i = 0; i < 4; ++i)
            stream >> skipped;
        std::string path;
        std::getline(stream >> std::ws, path);
        return path;
    }
    return {};
}

}

std::string getModuleFile(ModuleHandle module)
{
    link_map* map = nullptr;
    if (module == nullptr || ::dlinfo(module, RTLD_DI_LINKMAP, &map) != 0 || map->l_name[0] == '\0')
        return ownProgramFile();
    std::string name = map->l_name;
    if (name.front() == '/')
        return name;
    // Loaded by a relative name, which the current directory may not fit any more.
    const std::string file = mappedFile(reinterpret_cast<std::uintptr_t>(map->l_ld));
    return file.empty() ? name : file;
}

}
