#pragma once

#include <cstdarg>
#include <cstddef>

namespace Tools {

// Whether a text in the manner of printf can be formatted without harm: no field is wider than
// `most` characters, and no number wider or more precise than MostOfNumber. The run-time of Windows
// puts a whole number on the stack, and every run-time takes its time for a field of two
// thousand million blanks. Nothing is formatted for the answer.
constexpr std::size_t MostOfNumber = 65535;
bool areWidthsWithin(std::size_t most, const char* format, va_list args);

}
