#include "text/tiny_numbers.h"

#include <bit>
#include <cmath>
#include <limits>
#include <tuple>
#include <vector>

namespace Tools::Numbers {

namespace {

constexpr int MantissaBits = std::numeric_limits<double>::digits;
// Powers of two: of the last bit of a subnormal number, and of the smallest normal number.
constexpr int LeastPower = -1074;
constexpr int LeastNormalPower = -1022;
constexpr double LeastNormal = std::numeric_limits<double>::min();

// A big integer in base 10^9, the lowest limb first.
void multiply(std::vector<std::uint32_t>& number, std::uint32_t factor)
{
    constexpr std::uint64_t Base = 1000000000;
    std::uint64_t carry = 0;
    for (std::uint32_t& limb : number) {
        carry += std::uint64_t{limb} * factor;
        limb = static_cast<std::uint32_t>(carry % Base);
        carry /= Base;
    }
    if (carry != 0)
        number.push_back(static_cast<std::uint32_t>(carry));
}

std::string toText(const std::vector<std::uint32_t>& number)
{
    std::string text;
    for (auto limb = number.rbegin(); limb != number.rend(); ++limb) {
        const std::string digits = std::to_string(*limb);
        text.append(9 - digits.size(), '0').append(digits);
    }
    return text;
}

}

Digits Digits::of(std::string_view text, std::int64_t exponent)
{
    std::string digits;
    for (const char c : text) {
        if (c >= '0' && c <= '9')
            digits += c;
        else if (c != '.')
            break;
    }
    return normalized(digits, exponent);
}

// 2^-power is 5^power * 10^-power.
Digits Digits::ofBinary(std::uint64_t mantissa, int power)
{
    constexpr std::uint32_t FiveTo12 = 244140625;
    std::vector<std::uint32_t> number;
    for (std::uint64_t rest = mantissa; rest != 0; rest /= 1000000000)
        number.push_back(static_cast<std::uint32_t>(rest % 1000000000));
    int left = power;
    for (; left >= 12; left -= 12)
        multiply(number, FiveTo12);
    for (; left > 0; --left)
        multiply(number, 5);
    return normalized(toText(number), -power);
}

Digits Digits::normalized(const std::string& digits, std::int64_t exponent)
{
    Digits result;
    const std::size_t first = digits.find_first_not_of('0');
    if (first == std::string::npos)
        return result;
    result.m_magnitude = exponent + static_cast<std::int64_t>(digits.size() - first);
    const std::size_t last = digits.find_last_not_of('0');
    result.m_digits = digits.substr(first, last + 1 - first);
    return result;
}

// Without zeros at either end, the texts of the digits order as the fractions do.
bool Digits::operator<(const Digits& other) const
{
    return std::tie(m_magnitude, m_digits) < std::tie(other.m_magnitude, other.m_digits);
}

bool Digits::isTooSmallFor(double value) const
{
    if (value > LeastNormal)
        return false;
    if (value == LeastNormal) {
        // From the middle between it and the number before it, were that one a normal number.
        constexpr std::uint64_t Middle = (std::uint64_t{1} << (MantissaBits + 1)) - 1;
        return *this < ofBinary(Middle, MantissaBits + 1 - LeastNormalPower);
    }
    const auto mantissa = static_cast<std::uint64_t>(std::ldexp(value, -LeastPower));
    return !(*this == ofBinary(mantissa, -LeastPower));
}

// Rounds by hand (guard bit and sticky bits), because the bits to keep become fewer below the
// smallest normal number.
double Binary::value(bool& isOutOfRange) const
{
    isOutOfRange = false;
    if (mantissa == 0)
        return 0.0;
    const int shift = std::countl_zero(mantissa);
    const std::uint64_t bits = mantissa << shift;
    // The power of two of the first bit.
    const std::int64_t power = exponent - shift + 63;
    isOutOfRange = true;
    if (power > 1023)
        return std::numeric_limits<double>::infinity();
    if (power < LeastPower - 1)
        return 0.0;
    // Bits to drop: 11 of a normal number, up to all 64.
    const auto dropped =
        static_cast<int>(power >= LeastNormalPower ? 64 - MantissaBits : LeastPower + 63 - power);
    std::uint64_t kept = dropped == 64 ? 0 : bits >> dropped;
    const std::uint64_t half = std::uint64_t{1} << (dropped - 1);
    const std::uint64_t rest = bits & (half | (half - 1));
    if (rest > half || (rest == half && (hasMore || kept % 2 != 0)))
        ++kept;
    const double result =
        std::ldexp(static_cast<double>(kept), static_cast<int>(power) - 63 + dropped);
    // A number just below the smallest normal one is in range if it would round up to that with all
    // its bits, too.
    const bool isNormal = power >= LeastNormalPower ||
                          (power == LeastNormalPower - 1 && bits >= ~std::uint64_t{0} << 10);
    const bool isExact = rest == 0 && !hasMore;
    isOutOfRange = std::isinf(result) || (!isNormal && !isExact);
    return result;
}

}
