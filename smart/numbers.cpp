#include "smart/numbers.h"

#include "smart/scan.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <system_error>

namespace Tools::Smart {

namespace {

constexpr double PowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Exponents beyond this are as good as infinite, and are not counted any further.
constexpr long long HugeExponent = 1'000'000'000'000'000;

// The parts of a decimal number: digits.digits e exponent.
struct Decimal {
    // Of the first 19 digits behind leading zeros; exact if there are no more.
    std::uint64_t mantissa = 0;
    int digits = 0;
    // The number is mantissa * 10^exponent.
    long long exponent = 0;
    bool isNegative = false;
    bool isExact = true;
};

bool eightDigits(const char* p, std::uint64_t& value)
{
    std::uint64_t word;
    std::memcpy(&word, p, 8);
    const std::uint64_t isNoDigit = (word & 0xF0F0F0F0F0F0F0F0U) ^ 0x3030303030303030U;
    const std::uint64_t isAboveNine =
        ((word + 0x0606060606060606U) & 0xF0F0F0F0F0F0F0F0U) ^ 0x3030303030303030U;
    if ((isNoDigit | isAboveNine) != 0)
        return false;
    word -= 0x3030303030303030U;
    word = word * 10 + (word >> 8);
    value = ((word & 0x000000FF000000FFU) * 0x000F424000000064U +
             (word >> 16 & 0x000000FF000000FFU) * 0x0000271000000001U) >>
            32;
    return true;
}

const char* takeDigits(const char* p, const char* end, Decimal& number)
{
    std::uint64_t eight = 0;
    while (end - p >= 8 && number.digits + 8 <= 19 && eightDigits(p, eight)) {
        number.mantissa = number.mantissa * 100'000'000 + eight;
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
const char* takeExponent(const char* p, const char* end, Decimal& number)
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

bool split(std::string_view word, Decimal& number)
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
double convertExactly(std::string_view word, const Decimal& number)
{
    double value = 0.0;
    const char* const end = word.data() + word.size();
    if (std::from_chars(word.data(), end, value).ec != std::errc::result_out_of_range)
        return value;
    const bool isHuge = number.exponent + number.digits > 0;
    value = isHuge ? std::numeric_limits<double>::infinity() : 0.0;
    return number.isNegative ? -value : value;
}

}

bool parseDecimal(std::string_view word, int& value)
{
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    return error == std::errc() && stop == end;
}

bool parseReal(std::string_view word, double& value)
{
    Decimal number;
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

}
