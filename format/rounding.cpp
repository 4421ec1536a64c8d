#include "format/rounding.h"

#include "format/powers_of_ten.h"

#include <bit>
#include <cmath>

namespace Tools {

namespace {

// magnitude == significand * 2^exponent
struct Binary {
    std::uint64_t significand;
    int exponent;
};

Binary split(double magnitude)
{
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const std::uint64_t fraction = bits & ((UINT64_C(1) << 52) - 1);
    const int exponent = static_cast<int>(bits >> 52);
    if (exponent == 0)
        return {fraction, -1074};
    return {fraction | (UINT64_C(1) << 52), exponent - 1075};
}

// The same with the significand's highest bit set. Not for zero.
Binary splitNormalized(double magnitude)
{
    const Binary binary = split(magnitude);
    const int shift = std::countl_zero(binary.significand);
    return {binary.significand << shift, binary.exponent - shift};
}

constexpr std::uint64_t Half = UINT64_C(1) << 63;

constexpr std::uint64_t lowBits(int count)
{
    return (UINT64_C(1) << count) - 1;
}

// number / 2^shift for a shift of 65 to 127, ties to even.
std::uint64_t shiftAndRound(Product number, int shift)
{
    const std::uint64_t quotient = number.high >> (shift - 64);
    // What is cut off, from the highest bit on; the lowest one is set for any bit below it (a
    // sticky bit).
    const std::uint64_t rest = (number.high << (128 - shift)) | (number.low != 0 ? 1 : 0);
    return quotient + (rest > Half || (rest == Half && (quotient & 1) != 0) ? 1 : 0);
}

// significand / 2^shift * power for shifts from 64 on, where a significand of 53 bits leaves less
// than 2^-11.
std::uint64_t roundSmall(std::uint64_t significand, int shift, std::uint64_t power)
{
    // Even the largest power leaves less than a half.
    if (shift > 116)
        return 0;
    return shiftAndRound(multiply(significand << 11, power), shift + 11);
}

// number / 10^power for whole numbers.
std::uint64_t divideAndRound(std::uint64_t number, int power)
{
    const std::uint64_t divisor = PowersOfTen::integer(power);
    const std::uint64_t quotient = number / divisor;
    const std::uint64_t rest = number % divisor;
    const bool up = rest > divisor - rest || (rest == divisor - rest && (quotient & 1) != 0);
    return quotient + (up ? 1 : 0);
}

// The floor of the exact logarithm.
int decimalExponent(const Binary& normalized)
{
    const int binaryExponent = normalized.exponent + 63;
    const int next = PowersOfTen::decimalExponent(binaryExponent) + 1;
    const int nextExponent = PowersOfTen::binaryExponent(next);
    const bool reached =
        binaryExponent > nextExponent ||
        (binaryExponent == nextExponent && normalized.significand >= PowersOfTen::fraction(next));
    return reached ? next : next - 1;
}

// The product of a number and a power of ten is so close to a tie that it must be looked at
// closely; 0 if that does not help.
std::uint64_t decideTie(double magnitude, Product product, int shift, int power)
{
    if (PowersOfTen::isExact(power))
        return shiftAndRound(product, shift);
    if (power < 0 && magnitude < EndOfFixed && magnitude == std::trunc(magnitude))
        return divideAndRound(static_cast<std::uint64_t>(magnitude), -power);
    return 0;
}

// magnitude * 10^power, which is below 2^57; 0 if it cannot be decided which way to round.
std::uint64_t digitsOf(double magnitude, const Binary& normalized, int power)
{
    const Product product = multiply(normalized.significand, PowersOfTen::fraction(power));
    const int shift = 63 - PowersOfTen::binaryExponent(power) - normalized.exponent;
    // What the power has lost makes the product too small by less than one unit of its upper half.
    const std::uint64_t rest = product.high & lowBits(shift - 64);
    const std::uint64_t half = UINT64_C(1) << (shift - 65);
    if (rest + 1 == half || (rest == half && product.low == 0))
        return decideTie(magnitude, product, shift, power);
    return (product.high >> (shift - 64)) + (rest >= half ? 1 : 0);
}

}

FixedPoint roundToPlaces(double magnitude, int places)
{
    const Binary binary = split(magnitude);
    if (binary.exponent >= 0)
        return {binary.significand << binary.exponent, 0};
    const int shift = -binary.exponent;
    const std::uint64_t power = PowersOfTen::integer(places);
    if (shift >= 64)
        return {0, roundSmall(binary.significand, shift, power)};
    // The bits after the point, from the highest bit on: times a power of ten, that is a whole
    // number and what is left after the point.
    const std::uint64_t whole = binary.significand >> shift;
    const std::uint64_t bits = binary.significand << (64 - shift);
    const Product product =
        places < 10 ? multiply(bits, static_cast<std::uint32_t>(power)) : multiply(bits, power);
    // The last digit is one of the whole number if there are no decimals.
    const std::uint64_t odd = ((whole & power) ^ product.high) & 1;
    const std::uint64_t fraction = product.high + (product.low > Half - odd ? 1 : 0);
    const bool carry = fraction == power;
    return {whole + (carry ? 1 : 0), carry ? 0 : fraction};
}

Significant roundToDigits(double magnitude, int count)
{
    const Binary binary = splitNormalized(magnitude);
    const int exponent = decimalExponent(binary);
    const std::uint64_t digits = digitsOf(magnitude, binary, count - 1 - exponent);
    if (digits == PowersOfTen::integer(count))
        return {PowersOfTen::integer(count - 1), exponent + 1};
    return {digits, exponent};
}

}
