#include "smart/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace Tools::Smart {

namespace {

// Digits are the only thing that has to be there, and nothing may follow the number.
bool parseReal(std::string_view word, double& value)
{
    const char* const first = word.data();
    const char* const last = first + word.size();
    const bool isNegative = !word.empty() && *first == '-';
    Numbers::Decimal number;
    if (!number.scan(first + (isNegative ? 1 : 0), last) || number.end != last)
        return false;
    value = number.isPlain() ? number.plainValue() : Numbers::valueOf(number).value;
    value = isNegative ? -value : value;
    return true;
}

// The whole word, within 32 bits.
bool parseDecimal(std::string_view word, int& value)
{
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    return error == std::errc() && stop == end;
}

// d.ddddd * 10^exponent; `count` is the number of digits without zeros at the end.
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
        return exponent <= 5 ? value * Numbers::PowersOfTen[5 - exponent]
                             : value / Numbers::PowersOfTen[exponent - 5];
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

// The styles of "%g": this one for exponents from -4 to 5.
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
