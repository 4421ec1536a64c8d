#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace MdToolsTest {

using Variables = std::vector<std::pair<std::string, std::string>>;

// A program as the system runs it, its output in files. What Child asks of the platform.
class SystemProcess {
public:
    struct Start {
        const std::string& program;
        const std::vector<std::string>& arguments;
        const Variables& variables;
        // The files that take the standard output and the standard error.
        const std::string& output;
        const std::string& errors;
    };
    explicit SystemProcess(const Start& start);
    ~SystemProcess();
    SystemProcess(const SystemProcess&) = delete;
    SystemProcess& operator=(const SystemProcess&) = delete;

    // False if the program could not be started.
    bool valid() const { return m_handle != None; }
    unsigned long id() const { return m_id; }
    // False as soon as the process is dead, waited for or not.
    bool isRunning() const;
    void kill();
    // The exit code, 128 + n after death by signal n; nothing if the process outlives `time`. It
    // may be asked for once.
    std::optional<long> waitFor(std::chrono::milliseconds time);

private:
    // A process handle on Windows, a descriptor of the process on Linux.
    static constexpr std::intptr_t None = -1;
    std::intptr_t m_handle = None;
    unsigned long m_id = 0;
};

}
