#pragma once

#include <string_view>

namespace Tools::Smart {

// Whole words as numbers, exactly rounded and whatever the locale. Both are false if anything but a
// decimal number stands in the word: no blanks, no "+" in front, no hexadecimal digits, no "inf" or
// "nan".

// Also false beyond 32 bits.
bool parseDecimal(std::string_view word, int& value);

// Infinity beyond the largest number, zero below the smallest.
bool parseReal(std::string_view word, double& value);

}
