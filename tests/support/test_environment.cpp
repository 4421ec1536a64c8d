#include "support/test_environment.h"

#include <cstdlib>
#include <filesystem>
#include <random>

namespace MdToolsTest {

namespace {

std::string& directory()
{
    static std::string text;
    return text;
}

}

const std::string& workDirectory()
{
    return directory();
}

void createWorkDirectory()
{
    namespace fs = std::filesystem;
    std::random_device random;
    fs::path path;
    do {
        path = fs::temp_directory_path() / ("mdtools-test-" + std::to_string(random()));
    } while (!fs::create_directory(path));
    directory() = path.string();
    // A test that starts itself again as a child hands its directories on.
    if (std::getenv("MDTOOLS_TEST_CHILD") != nullptr)
        return;
    setVariable("MDTOOLS_TEST_CHILD", "1");
    for (const char* name : {"registry", "config", "runtime"}) {
        fs::create_directory(path / name);
        fs::permissions(path / name, fs::perms::owner_all);
    }
    setVariable("MDTOOLS_REGISTRY_DIR", (path / "registry").string());
    setVariable("XDG_CONFIG_HOME", (path / "config").string());
    setVariable("XDG_RUNTIME_DIR", (path / "runtime").string());
}

void removeWorkDirectory()
{
    std::error_code error;
    std::filesystem::remove_all(directory(), error);
}

}
