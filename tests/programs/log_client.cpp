#include <mdtools/logger.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

// A program that logs, for tests of several programs on one file and of a program's end.

namespace {

using Tools::FileLogger;
using Tools::LoggerManager;

// Tells its end.
class FinalLogger : public FileLogger {
public:
    using FileLogger::FileLogger;
    void release() override
    {
        writeLine("sink released");
        FileLogger::release();
    }
};

// Made before the manager.
struct LateWriter {
    std::shared_ptr<FileLogger> logger;
    ~LateWriter()
    {
        if (!logger)
            return;
        LoggerManager::get().writeLine("late, by the manager");
        logger->writeLine("late, by the sink");
    }
} s_lateWriter;

void waitForTheEnd()
{
    std::this_thread::sleep_for(std::chrono::minutes(1));
}

void writeLines(const std::string& tag, int count)
{
    for (int i = 0; i < count; ++i)
        LoggerManager::get().writeFormatedLine("%s %d %s", tag.c_str(), i,
                                               std::string(100, tag[0]).c_str());
}

}

int main(int count, char** arguments)
{
    if (count < 4)
        return 2;
    const std::string what = arguments[1];
    if (what == "sleep") {
        waitForTheEnd();
        return 0;
    }
    const bool isLate = what == "late";
    const auto logger =
        isLate ? std::make_shared<FinalLogger>("") : std::make_shared<FileLogger>("");
    logger->initialize(arguments[2]);
    LoggerManager::get().add(logger);
    if (isLate)
        s_lateWriter.logger = logger;
    writeLines(what, std::atoi(arguments[3]));
    if (what == "hold")
        waitForTheEnd();
    return 0;
}
