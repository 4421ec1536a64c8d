#include "platform/clock.h"

#include "platform/posix/file_descriptor.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

constexpr int StartTimeField = 22;

std::int64_t millisecondsSinceBoot()
{
    timespec now = {};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

std::string readProcessStatus()
{
    const FileDescriptor file(::open("/proc/self/stat", O_RDONLY | O_CLOEXEC));
    char text[2048];
    const ssize_t size = ::read(file.get(), text, sizeof(text));
    return std::string(text, static_cast<std::size_t>(std::max<ssize_t>(0, size)));
}

// On the clock of millisecondsSinceBoot(); now, where the system does not report it.
std::int64_t processStart()
{
    const std::string status = readProcessStatus();
    // The second field, the program's name in parentheses, may hold anything.
    std::size_t position = status.rfind(')');
    for (int field = 2; field < StartTimeField && position != std::string::npos; ++field)
        position = status.find(' ', position + 1);
    if (position == std::string::npos)
        return millisecondsSinceBoot();
    const std::int64_t ticks = std::strtoll(status.c_str() + position, nullptr, 10);
    return ticks * 1000 / ::sysconf(_SC_CLK_TCK);
}

}

LocalTime getLocalTime()
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    ::localtime_r(&now, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
            local.tm_hour,        local.tm_min,     local.tm_sec};
}

std::int64_t getProcessMilliseconds()
{
    static const std::int64_t start = processStart();
    return std::max<std::int64_t>(0, millisecondsSinceBoot() - start);
}

}
