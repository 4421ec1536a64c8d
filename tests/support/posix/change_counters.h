#pragma once

#include <filesystem>
#include <sstream>
#include <string>

#include <sys/stat.h>

namespace MdToolsTest {

// The shared memory with the number of changes of a database; empty if there is none.
inline std::filesystem::path counterOf(const std::filesystem::path& database)
{
    struct stat info {};
    ::stat(database.c_str(), &info);
    std::ostringstream name;
    name << "mdtools-" << info.st_uid << '-' << std::hex << info.st_dev << '-' << info.st_ino;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm"))
        if (entry.path().filename().string().starts_with(name.str() + '-'))
            return entry.path();
    return {};
}

}
