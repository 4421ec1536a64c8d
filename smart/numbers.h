#pragma once

#include "text/decimal.h"

#include <string_view>

namespace Tools::Smart {

// A number as it is written in a record: a real if there is a point or an exponent in it.
using Number = Numbers::Short;

// Makes a whole word a number, exactly rounded and whatever the locale. False if anything but a
// decimal number is in the word (no blanks, no "+" in front, no hexadecimal digits, no "inf" or
// "nan"), and for integers beyond 32 bits. Reals go to infinity and to zero.
bool parseNumber(std::string_view word, Number& number);

// Writes a finite number as "%.6g" does and returns the end of it. Null where there is no quick way
// to know how to round, or the number is very large or small. 16 characters must be writable.
char* writeSixDigits(char* p, double value);

}
