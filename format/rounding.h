#pragma once

#include <cstdint>

namespace Tools {

// The decimal roundings of the number styles, in exact integer arithmetic: to the nearest, ties
// to even, whatever the rounding mode of the processor. They serve the numbers that listings are
// made of; the rest is left to the standard library.

// whole + fraction / 10^places
struct FixedPoint {
    std::uint64_t whole;
    std::uint64_t fraction;
};

constexpr int MaximalPlaces = 17;
constexpr double EndOfFixed = 0x1p63;

// For 0 to MaximalPlaces, and magnitudes from 0 that are below EndOfFixed.
FixedPoint roundToPlaces(double magnitude, int places);

// digits * 10^(exponent - count + 1), where `digits` has exactly `count` digits.
struct Significant {
    std::uint64_t digits;
    int exponent;
};

constexpr int MaximalDigits = 16;

// `magnitude` is positive and finite, `count` from 1 to MaximalDigits. In the rare case that the
// approximation leaves open which way to round, `digits` is 0.
Significant roundToDigits(double magnitude, int count);

}
