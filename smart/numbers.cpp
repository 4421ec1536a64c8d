#include "smart/numbers.h"

#include "smart/scan.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

namespace Tools::Smart {

namespace {

// Exponents beyond this are as good as infinite, and are not counted any further.
constexpr long long HugeExponent = 1'000'000'000'000'000;

// The parts of a decimal number: mantissa * 10^exponent.
struct Parts {
    // Of the first 18 or 19 digits behind leading zeros; exact if there are no more.
    std::uint64_t mantissa = 0;
    int digits = 0;
    long long exponent = 0;
    bool isNegative = false;
    bool isExact = true;
};

// Appends eight digits at once, if there are eight.
bool takeEightDigits(const char* p, std::uint64_t& mantissa)
{
    std::uint64_t word;
    std::memcpy(&word, p, 8);
    word ^= 0x3030303030303030U;
    // The high bit of a byte is set here if one up to that byte is above 9.
    if ((((word + 0x7676767676767676U) | word) & 0x8080808080808080U) != 0)
        return false;
    // Pairs, fours, eight.
    word = word * 10 + (word >> 8);
    word = ((word & 0x000000FF000000FFU) * 0x000F424000000064U +
            (word >> 16 & 0x000000FF000000FFU) * 0x0000271000000001U) >>
           32;
    mantissa = mantissa * 100'000'000 + word;
    return true;
}

const char* takeDigits(const char* p, const char* end, Parts& number)
{
    while (end - p >= 8 && number.digits + 8 <= 19 && takeEightDigits(p, number.mantissa)) {
        number.digits = number.mantissa != 0 ? number.digits + 8 : 0;
        p += 8;
    }
    for (; p != end && is(*p, Digit); ++p) {
        if (number.digits == 19) {
            number.isExact = false;
            ++number.exponent;
            continue;
        }
        number.mantissa = number.mantissa * 10 + static_cast<std::uint64_t>(*p - '0');
        number.digits = number.mantissa != 0 ? number.digits + 1 : 0;
    }
    return p;
}

// Null if there is no exponent where one has begun.
const char* takeExponent(const char* p, const char* end, Parts& number)
{
    const bool isNegative = p != end && *p == '-';
    if (p != end && (*p == '-' || *p == '+'))
        ++p;
    if (p == end || !is(*p, Digit))
        return nullptr;
    long long exponent = 0;
    for (; p != end && is(*p, Digit); ++p)
        if (exponent < HugeExponent)
            exponent = exponent * 10 + (*p - '0');
    number.exponent += isNegative ? -exponent : exponent;
    return p;
}

bool split(std::string_view word, Parts& number)
{
    const char* p = word.data();
    const char* const end = p + word.size();
    number.isNegative = p != end && *p == '-';
    if (number.isNegative)
        ++p;
    const char* const digits = p;
    p = takeDigits(p, end, number);
    auto count = p - digits;
    if (p != end && *p == '.') {
        const char* const fraction = p + 1;
        p = takeDigits(fraction, end, number);
        number.exponent -= p - fraction;
        count += p - fraction;
    }
    if (count == 0)
        return false;
    if (p != end && (*p == 'e' || *p == 'E'))
        p = takeExponent(p + 1, end, number);
    return p == end;
}

// The word is a number by now.
double convertExactly(std::string_view word, const Parts& number)
{
    double value = 0.0;
    const char* const end = word.data() + word.size();
    if (std::from_chars(word.data(), end, value).ec != std::errc::result_out_of_range)
        return value;
    const bool isHuge = number.exponent + number.digits > 0;
    value = isHuge ? std::numeric_limits<double>::infinity() : 0.0;
    return number.isNegative ? -value : value;
}

bool parseReal(std::string_view word, double& value)
{
    Parts number;
    if (!split(word, number))
        return false;
    // Both factors are exact doubles, so the one rounding of the product is the right one.
    constexpr std::uint64_t MaxExact = std::uint64_t{1} << 53;
    if (number.isExact && number.mantissa <= MaxExact && number.exponent >= -22 &&
        number.exponent <= 22) {
        const auto mantissa = static_cast<double>(number.mantissa);
        const double result = number.exponent < 0 ? mantissa / PowersOfTen[-number.exponent]
                                                  : mantissa * PowersOfTen[number.exponent];
        value = number.isNegative ? -result : result;
        return true;
    }
    value = convertExactly(word, number);
    return true;
}

bool parseDecimal(std::string_view word, int& value)
{
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    return error == std::errc() && stop == end;
}

// d.ddddd * 10^exponent; `count` tells how many digits there are without zeros at the end.
struct SixDigits {
    char digits[6];
    int count;
    int exponent;
};

// Of a positive value. False beyond the table of powers, and if the value lies too near to the
// middle between two results.
bool toSixDigits(double value, SixDigits& result)
{
    // The exponent of the value, or one too low.
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    const int binary = static_cast<int>(bits >> 52) - 1023;
    int exponent = (binary * 1233 - (binary < 0 ? 4095 : 0)) / 4096;
    if (exponent < -17 || exponent > 21)
        return false;
    const auto scale = [&] {
        return exponent <= 5 ? value * PowersOfTen[5 - exponent]
                             : value / PowersOfTen[exponent - 5];
    };
    double scaled = scale();
    if (scaled >= 1e6) {
        ++exponent;
        scaled = scale();
    }
    // One rounding of a number below 2^20: exact to 2^-33.
    auto digits = static_cast<std::uint32_t>(scaled);
    const double rest = scaled - digits;
    if (digits < 100'000 || std::abs(rest - 0.5) < 1e-9)
        return false;
    digits += rest > 0.5 ? 1 : 0;
    if (digits == 1'000'000) {
        digits = 100'000;
        ++exponent;
    }
    result.exponent = exponent;
    for (int i = 6; i-- > 0; digits /= 10)
        result.digits[i] = static_cast<char>('0' + digits % 10);
    result.count = 6;
    while (result.count > 1 && result.digits[result.count - 1] == '0')
        --result.count;
    return true;
}

char* writeFixed(char* p, const SixDigits& number)
{
    if (number.exponent < 0) {
        std::copy_n("0.000", 5, p);
        p += 1 - number.exponent;
        return std::copy(number.digits, number.digits + number.count, p);
    }
    const int whole = number.exponent + 1;
    p = std::copy(number.digits, number.digits + whole, p);
    if (number.count <= whole)
        return p;
    *p = '.';
    return std::copy(number.digits + whole, number.digits + number.count, p + 1);
}

char* writeScientific(char* p, const SixDigits& number)
{
    *p++ = number.digits[0];
    if (number.count > 1) {
        *p = '.';
        p = std::copy(number.digits + 1, number.digits + number.count, p + 1);
    }
    const int exponent = std::abs(number.exponent);
    *p++ = 'e';
    *p++ = number.exponent < 0 ? '-' : '+';
    *p++ = static_cast<char>('0' + exponent / 10);
    *p++ = static_cast<char>('0' + exponent % 10);
    return p;
}

}

char* writeSixDigits(char* p, double value)
{
    *p = '-';
    p += std::signbit(value) ? 1 : 0;
    value = std::abs(value);
    if (value == 0.0) {
        *p = '0';
        return p + 1;
    }
    SixDigits number;
    if (!toSixDigits(value, number))
        return nullptr;
    return number.exponent < -4 || number.exponent > 5 ? writeScientific(p, number)
                                                       : writeFixed(p, number);
}

bool parseNumber(std::string_view word, Number& number)
{
    number.isReal = word.find_first_of(".eE") != std::string_view::npos;
    return number.isReal ? parseReal(word, number.real) : parseDecimal(word, number.decimal);
}

}
