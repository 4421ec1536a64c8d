#pragma once

#include "text/digits.h"

#include <cstdint>

// Reading numbers at the front of a text. The decimal point is "." whatever the locale; nothing is
// allocated for ordinary numbers.
namespace Tools::Numbers {

// The value is what strtod gives: infinite on overflow, zero or a subnormal number on underflow.
struct Real {
    double value = 0.0;
    // The end of the number; where the reading began if there is none.
    const char* end = nullptr;
    // Overflow, underflow, or a number that is too small for all its digits.
    bool isOutOfRange = false;
};

// A sign, digits with or without a point, an exponent; no white space before it.
Real readDecimal(const char* first, const char* last);

// All that strtod takes: white space before the number, hexadecimal numbers, infinity, NaN.
Real readReal(const char* first, const char* last);

// A whole number, its magnitude cut at 2^34: that is beyond every range of 32 bits.
struct Integer {
    bool hasDigits = false;
    bool isNegative = false;
    std::uint64_t magnitude = 0;
};

// White space as `isspace` has it for ASCII; bytes or UTF-16 units.
template <class Char>
constexpr bool isSpace(Char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Ten digits are below 2^34; more are, too, if the first ones are zeros.
template <class Char>
std::uint64_t magnitudeOfMany(const Char* digits, const Char* end)
{
    while (digits != end && *digits == '0')
        ++digits;
    if (end - digits > 10)
        return std::uint64_t{1} << 34;
    std::uint64_t magnitude = 0;
    for (; digits != end; ++digits)
        magnitude = magnitude * 10 + static_cast<std::uint64_t>(*digits - '0');
    return magnitude;
}

// A text that ends with a terminator may be given with a null `last`.
template <class Char>
inline Integer readInteger(const Char* p, const Char* last)
{
    Integer result;
    while (p != last && isSpace(*p))
        ++p;
    if (p != last && (*p == '+' || *p == '-'))
        result.isNegative = *p++ == '-';
    const Char* const digits = p;
    for (; p != last && isDigit(*p); ++p)
        result.magnitude = result.magnitude * 10 + static_cast<std::uint64_t>(*p - '0');
    result.hasDigits = p != digits;
    if (p - digits > 10)
        result.magnitude = magnitudeOfMany(digits, p);
    return result;
}

}
