#pragma once

#include "platform/clock.h"

#include <string>

namespace Tools {

// " 03.07.2026 09:05:12", with the blank.
std::string toDateAndTime(const Platform::LocalTime& time);

}
