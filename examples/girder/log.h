#pragma once

#include <memory>
#include <string>

namespace Tools {
class FileLogger;
}

namespace Girder {

// What the program did, line by line with date and time, in a file that grows from run to run. One
// object at a time; while it lives, its file is one of the process's log sinks.
class Log {
public:
    // In this directory; without one nothing is logged.
    explicit Log(const std::string& directory);
    ~Log();
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    static void write(const std::string& text);

private:
    std::shared_ptr<Tools::FileLogger> m_file;
};

}
