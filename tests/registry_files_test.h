#pragma once

#include "support/child_process.h"
#include "support/registry_test.h"

#include <filesystem>
#include <string>
#include <vector>

#include <sys/stat.h>

// What the tests of the stores on Linux share.
namespace MdToolsTest {

namespace fs = std::filesystem;

inline const std::string Machine = std::to_string(Tools::Registry::LocalMachine);
inline const std::string User = std::to_string(Tools::Registry::CurrentUser);

inline fs::path ownStore()
{
    return fs::path(workDirectory()) / "registry";
}

inline int modeOf(const fs::path& path)
{
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? static_cast<int>(info.st_mode & 07777) : -1;
}

// A directory for stores that only child processes use.
class RegistryFiles : public RegistryTest {
protected:
    RegistryFiles() : m_directory(fs::path(workDirectory()) / "stores")
    {
        fs::create_directory(m_directory);
    }
    ~RegistryFiles() override { fs::remove_all(m_directory); }

    Variables variables() const { return {{"MDTOOLS_REGISTRY_DIR", m_directory.string()}}; }

    std::string run(const std::vector<std::string>& arguments) const
    {
        return runChild(builtProgram("settings_child"), arguments, variables()).output;
    }

    fs::path m_directory;
};

}
