#include "platform/clock.h"

#include <algorithm>
#include <chrono>

#include <windows.h>

namespace Tools::Platform {

namespace {

std::int64_t steadyMilliseconds()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// File times count tenths of a microsecond.
std::int64_t toMilliseconds(const FILETIME& time)
{
    const auto high = static_cast<std::uint64_t>(time.dwHighDateTime) << 32U;
    return static_cast<std::int64_t>((high | time.dwLowDateTime) / 10'000);
}

// On the clock of steadyMilliseconds(). The age is taken from the adjustable clock, but only once.
std::int64_t processStart()
{
    FILETIME created{}, ended{}, kernel{}, user{}, now{};
    ::GetProcessTimes(::GetCurrentProcess(), &created, &ended, &kernel, &user);
    ::GetSystemTimeAsFileTime(&now);
    const std::int64_t age = toMilliseconds(now) - toMilliseconds(created);
    return steadyMilliseconds() - std::max<std::int64_t>(0, age);
}

}

LocalTime getLocalTime()
{
    SYSTEMTIME time{};
    ::GetLocalTime(&time);
    return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
}

std::int64_t getProcessMilliseconds()
{
    static const std::int64_t start = processStart();
    return steadyMilliseconds() - start;
}

}
