#include "support/files.h"

#include "support/test_environment.h"

#include <fstream>
#include <sstream>

namespace MdToolsTest {

namespace {

std::string readAll(const std::string& path, std::ios::openmode mode)
{
    std::ostringstream bytes;
    bytes << std::ifstream(path, mode).rdbuf();
    return bytes.str();
}

}

std::string workPath(const std::string& name)
{
    return workDirectory() + "/" + name;
}

void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string readFile(const std::string& path)
{
    return readAll(path, std::ios::in | std::ios::binary);
}

std::string readText(const std::string& path)
{
    return readAll(path, std::ios::in);
}

std::vector<std::string> readLines(const std::string& path)
{
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

}
