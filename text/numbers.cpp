#include "text/numbers.h"

#include "text/tiny_numbers.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string_view>

namespace Tools::Numbers {

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();

// Powers of ten that a double holds exactly.
constexpr double PowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::int64_t GreatestPower = 22;
constexpr std::uint64_t GreatestMantissa = std::uint64_t{1} << 53;

// Far beyond any double's exponent, and far from overflowing when digits are counted in.
constexpr std::int64_t ExponentLimit = std::int64_t{1} << 60;

// Eight digits in one word, the first one in the lowest byte.
bool isEightDigits(std::uint64_t word)
{
    return ((word & 0xF0F0F0F0F0F0F0F0) |
            (((word + 0x0606060606060606) & 0xF0F0F0F0F0F0F0F0) >> 4)) == 0x3333333333333333;
}

std::uint64_t valueOfEightDigits(std::uint64_t word)
{
    // Neighbours are joined: eight digits, four pairs, two fours, one number.
    word = (word & 0x0F0F0F0F0F0F0F0F) * (10 * 0x100 + 1) >> 8;
    word = (word & 0x00FF00FF00FF00FF) * (100 * 0x10000 + 1) >> 16;
    return (word & 0x0000FFFF0000FFFF) * (10000 * 0x100000000 + 1) >> 32;
}

// A decimal number without its sign, as it is written.
struct Decimal {
    const char* first = nullptr;
    const char* end = nullptr;
    // All digits as one number; it has overflowed if there are more than 19.
    std::uint64_t mantissa = 0;
    std::int64_t digits = 0;
    // The power of ten behind the last digit.
    std::int64_t exponent = 0;
};

const char* scanDigits(const char* p, const char* last, std::uint64_t& mantissa)
{
    while (last - p >= 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, p, 8);
        if (!isEightDigits(word))
            break;
        mantissa = mantissa * 100000000 + valueOfEightDigits(word);
        p += 8;
    }
    for (; p != last && isDigit(*p); ++p)
        mantissa = mantissa * 10 + static_cast<std::uint64_t>(*p - '0');
    return p;
}

// The exponent behind its letter. Without digits there is none, and the letter is left to the
// reader.
const char* scanExponent(const char* letter, const char* last, std::int64_t& exponent)
{
    const char* p = letter + 1;
    bool isNegative = false;
    if (p != last && (*p == '+' || *p == '-'))
        isNegative = *p++ == '-';
    if (p == last || !isDigit(*p))
        return letter;
    std::int64_t value = 0;
    for (; p != last && isDigit(*p); ++p) {
        if (value < ExponentLimit / 16)
            value = value * 10 + (*p - '0');
    }
    exponent += isNegative ? -value : value;
    return p;
}

// False if there is no digit.
bool scanDecimal(const char* first, const char* last, Decimal& number)
{
    number.first = first;
    const char* p = scanDigits(first, last, number.mantissa);
    number.digits = p - first;
    if (p != last && *p == '.') {
        const char* const fraction = p + 1;
        p = scanDigits(fraction, last, number.mantissa);
        number.exponent = fraction - p;
        number.digits += p - fraction;
    }
    number.end = p;
    if (number.digits == 0)
        return false;
    if (p != last && (*p == 'e' || *p == 'E'))
        number.end = scanExponent(p, last, number.exponent);
    return true;
}

// A number whose mantissa or power of ten is not exact in a double.
void evaluateSlowly(const Decimal& number, Real& result)
{
    double value = 0.0;
    const auto status = std::from_chars(number.first, number.end, value);
    const bool isBeyond = status.ec == std::errc::result_out_of_range || value == Infinity;
    if (!isBeyond && value > std::numeric_limits<double>::min()) {
        result.value = value;
        return;
    }
    const auto size = static_cast<std::size_t>(number.end - number.first);
    const Digits digits = Digits::of(std::string_view(number.first, size), number.exponent);
    if (digits.isZero())
        return;
    if (isBeyond)
        value = digits.magnitude() > 0 ? Infinity : 0.0;
    result.value = value;
    result.isOutOfRange = isBeyond || digits.isTooSmallFor(value);
}

void evaluate(const Decimal& number, Real& result)
{
    const std::int64_t power = number.exponent < 0 ? -number.exponent : number.exponent;
    if (number.digits > 19 || number.mantissa > GreatestMantissa || power > GreatestPower) {
        evaluateSlowly(number, result);
        return;
    }
    // Both operands are exact, so that one rounding gives the nearest double.
    const auto mantissa = static_cast<double>(number.mantissa);
    result.value =
        number.exponent < 0 ? mantissa / PowersOfTen[power] : mantissa * PowersOfTen[power];
}

int hexDigit(char c)
{
    if (isDigit(c))
        return c - '0';
    const int letter = c | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

// The digits that a mantissa cannot hold leave a mark and move the exponent.
const char* scanHexDigits(const char* p, const char* last, bool isFraction, Binary& number)
{
    for (int digit = 0; p != last && (digit = hexDigit(*p)) >= 0; ++p) {
        if (number.mantissa >> 60 == 0) {
            number.mantissa = number.mantissa << 4 | static_cast<std::uint64_t>(digit);
            number.exponent -= isFraction ? 4 : 0;
        } else {
            number.hasMore = number.hasMore || digit != 0;
            number.exponent += isFraction ? 0 : 4;
        }
    }
    return p;
}

// `first` is behind "0x". False if no digit follows.
bool readHex(const char* first, const char* last, Real& result)
{
    Binary number;
    const char* p = scanHexDigits(first, last, false, number);
    bool hasDigits = p != first;
    if (p != last && *p == '.') {
        const char* const fraction = p + 1;
        p = scanHexDigits(fraction, last, true, number);
        hasDigits = hasDigits || p != fraction;
    }
    if (!hasDigits)
        return false;
    if (p != last && (*p == 'p' || *p == 'P'))
        p = scanExponent(p, last, number.exponent);
    result.end = p;
    result.value = number.value(result.isOutOfRange);
    return true;
}

bool startsWithWord(const char* p, const char* last, std::string_view word)
{
    if (static_cast<std::size_t>(last - p) < word.size())
        return false;
    for (const char c : word) {
        if ((*p++ | 0x20) != c)
            return false;
    }
    return true;
}

bool isLetter(char c)
{
    return (c | 0x20) >= 'a' && (c | 0x20) <= 'z';
}

// "nan" may be followed by a word in parentheses.
const char* skipNan(const char* p, const char* last)
{
    if (p == last || *p != '(')
        return p;
    const char* const start = p++;
    while (p != last && (isDigit(*p) || isLetter(*p) || *p == '_'))
        ++p;
    return p != last && *p == ')' ? p + 1 : start;
}

bool readWord(const char* p, const char* last, Real& result)
{
    if (startsWithWord(p, last, "inf")) {
        result.value = Infinity;
        result.end = p + (startsWithWord(p, last, "infinity") ? 8 : 3);
        return true;
    }
    if (!startsWithWord(p, last, "nan"))
        return false;
    result.value = std::numeric_limits<double>::quiet_NaN();
    result.end = skipNan(p + 3, last);
    return true;
}

const char* skipSign(const char* p, const char* last, bool& isNegative)
{
    isNegative = p != last && *p == '-';
    return p != last && (*p == '-' || *p == '+') ? p + 1 : p;
}

}

Real readDecimal(const char* first, const char* last)
{
    Real result;
    bool isNegative = false;
    Decimal number;
    if (!scanDecimal(skipSign(first, last, isNegative), last, number)) {
        result.end = first;
        return result;
    }
    result.end = number.end;
    evaluate(number, result);
    result.value = isNegative ? -result.value : result.value;
    return result;
}

Real readReal(const char* first, const char* last)
{
    const char* p = first;
    while (p != last && isSpace(*p))
        ++p;
    bool isNegative = false;
    p = skipSign(p, last, isNegative);
    Real result;
    Decimal number;
    if (scanDecimal(p, last, number)) {
        const bool isHex = number.end == p + 1 && *p == '0' && last - p > 2 &&
                           (p[1] | 0x20) == 'x' && readHex(p + 2, last, result);
        if (!isHex) {
            result.end = number.end;
            evaluate(number, result);
        }
    } else if (!readWord(p, last, result)) {
        result.end = first;
        return result;
    }
    result.value = isNegative ? -result.value : result.value;
    return result;
}

}
