#include <mdtools/debug_output.h>

#include "trace/date_time.h"

#include <cstdio>

namespace Tools {

std::string toDateAndTime(const Platform::LocalTime& time)
{
    char text[96];
    std::snprintf(text, sizeof(text), " %02d.%02d.%04d %02d:%02d:%02d", time.day, time.month,
                  time.year, time.hour, time.minute, time.second);
    return text;
}

std::string DebugReceiverHelper::getDateAndTime()
{
    return toDateAndTime(Platform::getLocalTime());
}

std::string DebugReceiverHelper::getDateAndTimeA()
{
    return getDateAndTime();
}

std::wstring DebugReceiverHelper::getDateAndTimeW()
{
    const std::string text = getDateAndTime();
    return std::wstring(text.begin(), text.end());
}

}
