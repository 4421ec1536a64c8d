#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Tools::Smart {

// A number as it stands in a record: a real if there is a point or an exponent in it.
struct Number {
    bool isReal = false;
    int decimal = 0;
    double real = 0.0;
};

// Makes a whole word a number, exactly rounded and whatever the locale. False if anything but a
// decimal number stands in the word (no blanks, no "+" in front, no hexadecimal digits, no "inf" or
// "nan"), and for integers beyond 32 bits. Reals go to infinity and to zero.
bool parseNumber(std::string_view word, Number& number);

// Writes a finite number as "%.6g" does and returns the end of it. Null where it cannot tell
// quickly how to round, or the number is very large or small. 16 characters must be writable.
char* writeSixDigits(char* p, double value);

// Exact doubles.
inline constexpr double PowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// How much must be readable from the start of a number on for takeShortNumber.
inline constexpr std::ptrdiff_t ShortNumberSpace = 24;

// Reads a number of few digits and without exponent at `p`; null if it is none. The caller finds
// out from what follows whether that is all of the word.
inline const char* takeShortNumber(const char* p, Number& number)
{
    const auto isDigit = [](char c) { return static_cast<unsigned char>(c - '0') < 10; };
    const bool isNegative = *p == '-';
    const char* const first = isNegative ? p + 1 : p;
    std::int64_t mantissa = 0;
    for (p = first; p - first < 10 && isDigit(*p); ++p)
        mantissa = mantissa * 10 + (*p - '0');
    number.isReal = *p == '.';
    if (!number.isReal) {
        mantissa = isNegative ? -mantissa : mantissa;
        number.decimal = static_cast<int>(mantissa);
        return p != first && number.decimal == mantissa ? p : nullptr;
    }
    // Up to 15 digits altogether are an exact double, as is the power of ten; so the one rounding
    // of the quotient is the right one.
    const char* const fraction = ++p;
    for (; p - first < 16 && isDigit(*p); ++p)
        mantissa = mantissa * 10 + (*p - '0');
    const double real = static_cast<double>(mantissa) / PowersOfTen[p - fraction];
    number.real = isNegative ? -real : real;
    return p - first > 1 ? p : nullptr;
}

}
