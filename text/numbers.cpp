#include "text/numbers.h"

#include "text/decimal.h"
#include "text/tiny_numbers.h"

#include <charconv>
#include <cstddef>
#include <limits>
#include <string_view>

namespace Tools::Numbers {

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();

// -1 for any other character.
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

// `first` is after "0x". False if no digit follows.
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

// `word` is in lower case.
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

// A number that the standard library calls out of range or that may be subnormal takes its exact
// digits to tell overflow from underflow, and whether a nearer double was missing.
Real valueOf(const Decimal& number)
{
    Real result;
    result.end = number.end;
    if (number.isPlain()) {
        result.value = number.plainValue();
        return result;
    }
    double value = 0.0;
    const auto status = std::from_chars(number.first, number.end, value);
    const bool isBeyond = status.ec == std::errc::result_out_of_range || value == Infinity;
    if (!isBeyond && value > std::numeric_limits<double>::min()) {
        result.value = value;
        return result;
    }
    const auto size = static_cast<std::size_t>(number.end - number.first);
    const Digits digits = Digits::of(std::string_view(number.first, size), number.exponent);
    if (digits.isZero())
        return result;
    if (isBeyond)
        value = digits.magnitude() > 0 ? Infinity : 0.0;
    result.value = value;
    result.isOutOfRange = isBeyond || digits.isTooSmallFor(value);
    return result;
}

// The sign is applied to the rounded magnitude: rounding to nearest is symmetric.
Real readDecimal(const char* first, const char* last)
{
    Real result;
    bool isNegative = false;
    Decimal number;
    if (!number.scan(skipSign(first, last, isNegative), last)) {
        result.end = first;
        return result;
    }
    result = valueOf(number);
    result.value = isNegative ? -result.value : result.value;
    return result;
}

// The decimal reading decides first, because all other forms begin with "0x" or a letter.
Real readReal(const char* first, const char* last)
{
    const char* p = first;
    while (p != last && isSpace(*p))
        ++p;
    bool isNegative = false;
    p = skipSign(p, last, isNegative);
    Real result;
    Decimal number;
    if (number.scan(p, last)) {
        const bool isHex = number.end == p + 1 && *p == '0' && last - p > 2 &&
                           (p[1] | 0x20) == 'x' && readHex(p + 2, last, result);
        if (!isHex)
            result = valueOf(number);
    } else if (!readWord(p, last, result)) {
        result.end = first;
        return result;
    }
    result.value = isNegative ? -result.value : result.value;
    return result;
}

}
