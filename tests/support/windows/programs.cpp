#include "support/programs.h"

#include <filesystem>

#include <windows.h>

namespace MdToolsTest {

namespace {

std::string besideOwnProgram(const std::string& file)
{
    return (std::filesystem::path(ownProgram()).parent_path() / file).string();
}

}

const char PathSeparator = ';';

std::string ownProgram()
{
    char name[MAX_PATH] = {};
    ::GetModuleFileNameA(nullptr, name, MAX_PATH);
    return name;
}

std::string builtProgram(const std::string& name)
{
    return besideOwnProgram(name + ".exe");
}

std::string builtLibrary(const std::string& target)
{
    return besideOwnProgram("lib" + target + ".dll");
}

std::string libraryPath()
{
    return besideOwnProgram("mdtools.dll");
}

}
