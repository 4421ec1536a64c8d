#pragma once

#include <cstdint>

// clock.h - time for people and time for measuring.
namespace Tools::Platform {

struct LocalTime {
    int year = 0;
    int month = 0; // 1 to 12
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

LocalTime getLocalTime();

// Milliseconds since the process started, on a clock that is never set back or forward.
std::int64_t getProcessMilliseconds();

}
