#pragma once

#include "text/numbers.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

// The front half of reading numbers, built into its callers: an ordinary number is read without a
// call. This is Clinger's fast path: where both the digits and the power of ten are exact doubles,
// the one rounding of their product or quotient is the right one. All else goes to valueOf.
namespace Tools::Numbers {

// Powers of ten that a double holds exactly.
inline constexpr double PowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Eight digits in one word, the first one in the lowest byte.
inline bool isEightDigits(std::uint64_t word)
{
    return ((word & 0xF0F0F0F0F0F0F0F0) |
            (((word + 0x0606060606060606) & 0xF0F0F0F0F0F0F0F0) >> 4)) == 0x3333333333333333;
}

inline std::uint64_t valueOfEightDigits(std::uint64_t word)
{
    // Neighbours are joined: eight digits, four pairs, two fours, one number.
    word = (word & 0x0F0F0F0F0F0F0F0F) * (10 * 0x100 + 1) >> 8;
    word = (word & 0x00FF00FF00FF00FF) * (100 * 0x10000 + 1) >> 16;
    return (word & 0x0000FFFF0000FFFF) * (10000 * 0x100000000 + 1) >> 32;
}

// Appends the digits at `p` to the mantissa, modulo 2^64; returns their end.
inline const char* scanDigits(const char* p, const char* last, std::uint64_t& mantissa)
{
    for (; p != last && isDigit(*p); ++p)
        mantissa = mantissa * 10 + static_cast<std::uint64_t>(*p - '0');
    return p;
}

// For parts of a number that are often long.
inline const char* scanManyDigits(const char* p, const char* last, std::uint64_t& mantissa)
{
    while (last - p >= 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, p, 8);
        if (!isEightDigits(word))
            break;
        mantissa = mantissa * 100000000 + valueOfEightDigits(word);
        p += 8;
    }
    return scanDigits(p, last, mantissa);
}

// Adds the exponent after its letter and returns its end. Without digits there is none, and the
// letter is left to the reader.
inline const char* scanExponent(const char* letter, const char* last, std::int64_t& exponent)
{
    // Far beyond any double's exponent, and far from overflowing when digits are counted in.
    constexpr std::int64_t Limit = std::int64_t{1} << 56;
    const char* p = letter + 1;
    bool isNegative = false;
    if (p != last && (*p == '+' || *p == '-'))
        isNegative = *p++ == '-';
    if (p == last || !isDigit(*p))
        return letter;
    std::int64_t value = 0;
    for (; p != last && isDigit(*p); ++p) {
        if (value < Limit)
            value = value * 10 + (*p - '0');
    }
    exponent += isNegative ? -value : value;
    return p;
}

// A decimal number without its sign, as it is written.
struct Decimal {
    const char* first;
    const char* end;
    // All digits as one number; it has overflowed if there are more than 19.
    std::uint64_t mantissa;
    std::int64_t digits;
    // The power of ten that the last digit counts.
    std::int64_t exponent;

    // False if there is no digit.
    bool scan(const char* begin, const char* last)
    {
        first = begin;
        mantissa = 0;
        exponent = 0;
        const char* p = scanDigits(first, last, mantissa);
        digits = p - first;
        if (p != last && *p == '.') {
            const char* const fraction = p + 1;
            p = scanManyDigits(fraction, last, mantissa);
            exponent = fraction - p;
            digits += p - fraction;
        }
        end = p != last && (*p == 'e' || *p == 'E') && digits != 0 ? scanExponent(p, last, exponent)
                                                                   : p;
        return digits != 0;
    }

    // The mantissa and the power of ten are exact in a double, so that one rounding gives the
    // nearest double.
    bool isPlain() const
    {
        return digits <= 19 && mantissa <= std::uint64_t{1} << 53 && exponent >= -22 &&
               exponent <= 22;
    }
    double plainValue() const
    {
        const auto value = static_cast<double>(static_cast<std::int64_t>(mantissa));
        return exponent < 0 ? value / PowersOfTen[-exponent] : value * PowersOfTen[exponent];
    }
};

// Correctly rounded for every decimal number.
Real valueOf(const Decimal& number);

// How much must be readable from the start of a number on for the readers of short numbers, unless
// a terminator ends the text.
inline constexpr std::ptrdiff_t ShortSpace = 24;

// A number of few digits without sign and exponent: a real if there is a point in it. The caller
// finds out from what follows whether that is all of the number.
struct Short {
    bool isReal;
    // Up to ten digits.
    std::int64_t whole = 0;
    double real = 0.0;
    // Null if there is no short number.
    const char* end = nullptr;

    explicit Short(const char* first)
    {
        const char* p = first;
        for (; p - first < 10 && isDigit(*p); ++p)
            whole = whole * 10 + (*p - '0');
        isReal = *p == '.';
        if (!isReal) {
            end = p != first ? p : nullptr;
            return;
        }
        // 15 digits and the point.
        std::int64_t mantissa = whole;
        const char* const fraction = ++p;
        for (; p - first < 16 && isDigit(*p); ++p)
            mantissa = mantissa * 10 + (*p - '0');
        real = static_cast<double>(mantissa) / PowersOfTen[p - fraction];
        end = p - first > 1 ? p : nullptr;
    }
};

// What readReal reads, if it is a plain decimal number without white space and "+" before it; else
// false.
inline bool readPlainReal(const char* first, const char* last, double& value)
{
    const bool isNegative = first != last && *first == '-';
    const char* const digits = first + (isNegative ? 1 : 0);
    Decimal number;
    if (!number.scan(digits, last) || !number.isPlain())
        return false;
    // It may be the beginning of a hexadecimal one.
    if (number.end != last && (*number.end | 0x20) == 'x')
        return false;
    value = isNegative ? -number.plainValue() : number.plainValue();
    return true;
}

}
