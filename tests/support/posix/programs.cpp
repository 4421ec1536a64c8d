#include "support/programs.h"

#include <filesystem>

namespace MdToolsTest {

namespace {

std::string besideOwnProgram(const std::string& file)
{
    return (std::filesystem::path(ownProgram()).parent_path() / file).string();
}

}

const char PathSeparator = ':';

std::string ownProgram()
{
    return std::filesystem::read_symlink("/proc/self/exe").string();
}

std::string builtProgram(const std::string& name)
{
    return besideOwnProgram(name);
}

std::string builtLibrary(const std::string& target)
{
    return besideOwnProgram("lib" + target + ".so");
}

std::string libraryPath()
{
    return builtLibrary("mdtools");
}

}
