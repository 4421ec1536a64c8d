#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace Tools {

struct Product {
    std::uint64_t high;
    std::uint64_t low;
};

// All 128 bits of a product; standard C++ has no type for them.
constexpr Product multiply(std::uint64_t a, std::uint64_t b)
{
    const std::uint64_t aLow = a & 0xFFFFFFFF;
    const std::uint64_t aHigh = a >> 32;
    const std::uint64_t bLow = b & 0xFFFFFFFF;
    const std::uint64_t bHigh = b >> 32;
    const std::uint64_t low = aLow * bLow;
    const std::uint64_t middle = aHigh * bLow + (low >> 32);
    const std::uint64_t other = aLow * bHigh + (middle & 0xFFFFFFFF);
    return {aHigh * bHigh + (middle >> 32) + (other >> 32), (other << 32) | (low & 0xFFFFFFFF)};
}

constexpr Product multiply(std::uint64_t a, std::uint32_t b)
{
    const std::uint64_t low = (a & 0xFFFFFFFF) * b;
    const std::uint64_t high = (a >> 32) * b + (low >> 32);
    return {high >> 32, (high << 32) | (low & 0xFFFFFFFF)};
}

// Powers of ten as fractions of 64 bits with the highest bit set: 10^k is
// fraction(k) * 2^(binaryExponent(k) - 63), plus less than one unit of the fraction's last bit.
namespace PowersOfTen {

constexpr int Smallest = -324;
constexpr int Greatest = 341;

using Table = std::array<std::uint64_t, Greatest - Smallest + 1>;

// A power times ten, as fractions of 128 bits: times 5/4, and one bit less if that carries.
constexpr Product next(Product power)
{
    const std::uint64_t quarter = (power.high << 62) | (power.low >> 2);
    const std::uint64_t low = power.low + quarter;
    const std::uint64_t high = power.high + (power.high >> 2) + (low < quarter ? 1 : 0);
    if (high >= power.high)
        return {high, low};
    return {(high >> 1) | (UINT64_C(1) << 63), (high << 63) | (low >> 1)};
}

// From the smallest power, and from one, step by step. What the steps cut off adds up to a few
// hundred units of the 128th bit, which changes none of the 64 bits that are kept.
constexpr Table makeTable()
{
    Table table{};
    Product power{UINT64_C(0xCF42894A5DCE35EA), UINT64_C(0x52064CAC828675B9)};
    for (int k = Smallest; k <= Greatest; ++k) {
        if (k == 0)
            power = {UINT64_C(1) << 63, 0};
        table[static_cast<std::size_t>(k - Smallest)] = power.high;
        power = next(power);
    }
    return table;
}

inline constexpr Table Fractions = makeTable();

constexpr std::uint64_t fraction(int k)
{
    return Fractions[static_cast<std::size_t>(k - Smallest)];
}

// Nothing is cut off. No other fraction than these has its last eleven bits zero, so none equals
// the fraction of a double.
constexpr bool isExact(int k)
{
    return k >= 0 && k <= 27;
}

// The exponent of the greatest power of two that is not above 10^k.
constexpr int binaryExponent(int k)
{
    return static_cast<int>((k * INT64_C(14267572527)) >> 32);
}

// The exponent of the greatest power of ten that is not above 2^b.
constexpr int decimalExponent(int b)
{
    return static_cast<int>((b * INT64_C(1292913986)) >> 32);
}

inline constexpr auto Integers = [] {
    std::array<std::uint64_t, 20> table{};
    for (int k = 0; k < 20; ++k)
        table[static_cast<std::size_t>(k)] = fraction(k) >> (63 - binaryExponent(k));
    return table;
}();

// 10^k itself, for 0 to 19.
constexpr std::uint64_t integer(int k)
{
    return Integers[static_cast<std::size_t>(k)];
}

// The double nearest to 10^k, for those that are neither infinite nor subnormal.
constexpr double nearestDouble(int k)
{
    const std::uint64_t bits = fraction(k);
    const std::uint64_t rest = bits & 0x7FF;
    const std::uint64_t odd = isExact(k) ? (bits >> 11) & 1 : 1;
    const std::uint64_t significand = (bits >> 11) + (rest + odd > 0x400 ? 1 : 0);
    // The highest bit of the significand, or a carry beyond it, adds itself to the exponent.
    const int exponent = binaryExponent(k) + 1022;
    return std::bit_cast<double>((static_cast<std::uint64_t>(exponent) << 52) + significand);
}

}

}
