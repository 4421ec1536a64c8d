#include <mdtools/folders.h>

#include "files/separators.h"
#include "platform/filesystem.h"
#include "platform/known_folders.h"

#include <mdtools/application_registry.h>
#include <mdtools/constants.h>
#include <mdtools/environment.h>
#include <mdtools/registry.h>

#include <cstring>

namespace Tools {

namespace {

// The variables' joined values, empty unless both fit the short buffers that callers of old had.
std::string homeDirectory()
{
    constexpr std::size_t BufferSize = 260;
    const std::string drive = Environment("HOMEDRIVE").getValue();
    const std::string path = Environment("HOMEPATH").getValue();
    const bool known = !drive.empty() && !path.empty();
    return known && drive.size() < BufferSize && path.size() < BufferSize ? drive + path
                                                                          : std::string();
}

}

std::string getInstallationDirectory(bool useGroupKey)
{
    // With the flag the group's key alone counts, even where it is missing.
    const std::string path =
        useGroupKey ? getVokMerodaRegistryPath("Install") : getMerodaRegistryPath("Install");
    const RegistryValue value = Registry::find(Registry::LocalMachine, path, false)["Directory"];
    if (value.type() != RegistryValue::String)
        return {};
    std::string directory = value.getString();
    // A newer edition lies beside the older one, under its name and a number.
    const std::string newer = directory + "26" + C::Backslash;
    if (Platform::isDirectory(newer))
        directory = newer;
    if (Separators::endsWithOne(directory))
        directory.pop_back();
    return directory;
}

// All or nothing: a path cut short would be another one.
bool getInstallationDirectory(char* buffer, std::size_t size)
{
    if (buffer == nullptr || size == 0)
        return false;
    const std::string directory = getInstallationDirectory(false);
    const bool fits = !directory.empty() && directory.size() < size;
    std::memcpy(buffer, directory.c_str(), fits ? directory.size() : 0);
    buffer[fits ? directory.size() : 0] = '\0';
    return fits;
}

std::string getInstalledDataDirectory()
{
    return Registrar("Install", Registry::LocalMachine).readString("DataDir").getValue();
}

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

std::string getUserDirectoryOld()
{
    // The settings, the variables, the installation: the first that has an answer.
    const std::string settings = getMerodaRegistryPath("SETTINGS");
    const RegistryValue value =
        Registry::find(Registry::CurrentUser, settings, false)["UserDirectory"];
    if (value.type() == RegistryValue::String) {
        std::string directory = value.getString();
        if (Platform::entryType(directory) != Platform::EntryType::None)
            return directory;
    }
    std::string home = homeDirectory();
    if (!home.empty())
        return home;
    const std::string user = getUserName();
    return getInstallationDirectory(false) + "\\User\\" + (user.empty() ? "Default" : user);
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
