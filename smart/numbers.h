#pragma once

#include "text/decimal.h"

#include <cstdint>
#include <string_view>

namespace Tools::Smart {

// A number as it is written in a record: a real if there is a point or an exponent in it.
struct Number {
    bool isReal = false;
    int decimal = 0;
    double real = 0.0;
};

// Makes a whole word a number, exactly rounded and whatever the locale. False if anything but a
// decimal number is in the word (no blanks, no "+" in front, no hexadecimal digits, no "inf" or
// "nan"), and for integers beyond 32 bits. Reals go to infinity and to zero.
bool parseNumber(std::string_view word, Number& number);

// The end of a number of few digits without exponent at `p`, null if there is none. As
// Numbers::Short.
inline const char* readShortNumber(const char* p, Number& number)
{
    const bool isNegative = *p == '-';
    const Numbers::Short digits(isNegative ? p + 1 : p);
    number.isReal = digits.isReal;
    if (digits.isReal) {
        number.real = isNegative ? -digits.real : digits.real;
        return digits.end;
    }
    const std::int64_t value = isNegative ? -digits.whole : digits.whole;
    number.decimal = static_cast<int>(value);
    return number.decimal == value ? digits.end : nullptr;
}

// Writes a finite number as "%.6g" does and returns the end of it. Null where there is no quick way
// to know how to round, or the number is very large or small. 16 characters must be writable.
char* writeSixDigits(char* p, double value);

}
