#include "platform/posix/program.h"

#include "platform/environment.h"

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

// A directory has the right to be executed as well, so only plain files count.
bool isExecutableFile(const std::string& name)
{
    struct stat status = {};
    return ::stat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(name.c_str(), X_OK) == 0;
}

enum class Parts { All, Absolute };

// An empty part of the path is the current directory, as shells take it.
std::string findOnPath(const std::string& name, Parts parts)
{
    std::string path;
    if (!readVariable("PATH", path))
        path = "/usr/bin:/bin";
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find(':', start), path.size());
        std::string candidate = path.substr(start, end - start);
        start = end + 1;
        if (parts == Parts::Absolute && !candidate.starts_with('/'))
            continue;
        candidate += candidate.empty() ? name : "/" + name;
        if (isExecutableFile(candidate))
            return candidate;
    }
    return {};
}

}

std::string findProgram(const std::string& name)
{
    if (name.empty())
        return {};
    if (isExecutableFile(name))
        return name;
    return name.find('/') == std::string::npos ? findOnPath(name, Parts::All) : std::string();
}

std::string findOwnTool(const std::string& name)
{
    return findOnPath(name, Parts::Absolute);
}

}
