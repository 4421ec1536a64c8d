#include "format/engineering.h"

#include "format/powers_of_ten.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace Tools {

namespace {

// Every third power: the double nearest to it, and the first double that belongs to it.
struct Step {
    double first;
    double power;
};

constexpr int SmallestStep = -324 / 3;
constexpr int GreatestStep = 309 / 3;
constexpr int SmallestNormalStep = -306 / 3;

// How far the fraction of 10^k is above that of a number whose logarithm still rounds to k.
constexpr std::uint64_t reachBelow(int k)
{
    if (k == 0)
        return 0;
    // Doubles just below k lie 2^(binade - 52) apart. Half that and times ln(10) is the reach, as
    // part of the power.
    const auto distance = static_cast<unsigned>(k < 0 ? -k : k - 1);
    const int binade = static_cast<int>(std::bit_width(distance)) - 1;
    constexpr std::uint64_t LogarithmOfTen = 2472381917; // times 2^-30
    return ((PowersOfTen::fraction(k) >> 32) * LogarithmOfTen) >> (51 - binade);
}

constexpr double firstOf(int k)
{
    const std::uint64_t fraction = PowersOfTen::fraction(k) - reachBelow(k);
    const int exponent = PowersOfTen::binaryExponent(k) + 1022;
    const int shift = 11 + (exponent < 0 ? -exponent : 0);
    const std::uint64_t significand = ((fraction - 1) >> shift) + 1;
    // The highest bit of a normal significand adds itself to the exponent.
    const auto bits = static_cast<std::uint64_t>(exponent < 0 ? 0 : exponent) << 52;
    return std::bit_cast<double>(bits + significand);
}

constexpr std::size_t indexOf(int step)
{
    return static_cast<std::size_t>(step - SmallestStep);
}

constexpr auto Steps = [] {
    std::array<Step, GreatestStep - SmallestStep + 1> table{};
    for (int step = SmallestStep; step <= GreatestStep; ++step) {
        const bool isLast = step == GreatestStep;
        table[indexOf(step)].first = isLast ? std::numeric_limits<double>::infinity()
                                     : step == SmallestStep ? 0.0
                                                            : firstOf(3 * step);
        if (step >= SmallestNormalStep && !isLast)
            table[indexOf(step)].power = PowersOfTen::nearestDouble(3 * step);
    }
    return table;
}();

const Step& at(int step)
{
    return Steps[indexOf(step)];
}

Engineering toTinyEngineering(double magnitude)
{
    int step = SmallestStep;
    while (magnitude >= at(step + 1).first)
        ++step;
    if (step >= SmallestNormalStep)
        return {magnitude / at(step).power, 3 * step};
    const double scaled = magnitude / at(SmallestNormalStep).power;
    return {scaled / at(step - SmallestNormalStep).power, 3 * step};
}

}

Engineering toEngineering(double magnitude)
{
    // The step of 2^b, b being the number's binary exponent, or the next one.
    const int b = static_cast<int>(std::bit_cast<std::uint64_t>(magnitude) >> 52) - 1023;
    int step = static_cast<int>((b * INT64_C(430971328)) >> 32);
    if (step < SmallestNormalStep)
        return toTinyEngineering(magnitude);
    step += magnitude >= at(step + 1).first ? 1 : 0;
    return {magnitude / at(step).power, 3 * step};
}

}
