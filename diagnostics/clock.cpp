#include <mdtools/clock.h>

#include <mdtools/debug_output.h>

#include "platform/clock.h"

namespace Tools {

long Clock::ms_start = 0;
bool Clock::ms_isActive = false;

namespace {

long now()
{
    return static_cast<long>(Platform::getProcessMilliseconds());
}

// Unsigned numbers wrap around, so this is right across the end of the type's range, too.
long difference(long end, long start)
{
    return static_cast<long>(static_cast<unsigned long>(end) - static_cast<unsigned long>(start));
}

}

void Clock::init()
{
    ms_start = now();
}

void Clock::setActive(bool isActive)
{
    ms_isActive = isActive;
}

void Clock::outputDebug(const std::string& text)
{
    if (!ms_isActive)
        return;
    const std::string rule(79, '*');
    debugPrintf("%s\n%s, %ld\n%s\n", rule.c_str(), text.c_str(), difference(now(), ms_start),
                rule.c_str());
}

}
