#include "support/process_state.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

namespace MdToolsTest {

namespace {

int countEntries(const std::string& directory)
{
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(directory))
        ++count;
    return count;
}

}

int countThreads()
{
    return countEntries("/proc/self/task");
}

// The one that reads the directory counts each time.
int countHandles()
{
    return countEntries("/proc/self/fd");
}

int countChildren()
{
    int count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream children(task.path() / "children");
        for (std::string id; children >> id;)
            ++count;
    }
    return count;
}

void interrupt(unsigned long processId)
{
    ::kill(static_cast<pid_t>(processId), SIGINT);
}

}
