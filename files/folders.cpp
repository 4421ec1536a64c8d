#include <mdtools/folders.h>

#include "platform/filesystem.h"
#include "platform/known_folders.h"

namespace Tools {

std::string getUserDirectory()
{
    std::string path = Platform::applicationDataDirectory();
    if (path.empty())
        return path;
    path += Platform::separator();
    path += "Meroda";
    if (!Platform::isDirectory(path))
        Platform::createDirectory(path);
    return path;
}

std::string getTempPath()
{
    return Platform::temporaryDirectory();
}

std::string getTempFilePath()
{
    return Platform::createTemporaryFile("meroda");
}

std::string getUserName()
{
    return Platform::userName();
}

}
