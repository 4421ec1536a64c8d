#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The exact side of reading real numbers: whether a number is too small to be held with all its
// digits needs more than the digits of a double.
namespace Tools::Numbers {

// An exact decimal number of any length: 0.DIGITS * 10^magnitude, without zeros at either end of
// the digits.
class Digits {
public:
    // `text` has digits, a point and an exponent; the last digit counts 10^exponent.
    static Digits of(std::string_view text, std::int64_t exponent);

    bool isZero() const { return m_digits.empty(); }
    std::int64_t magnitude() const { return m_magnitude; }

    // `value` is the nearest double to this number, but there is a nearer one if small numbers kept
    // all their digits: what the C library reports as underflow.
    bool isTooSmallFor(double value) const;

private:
    // mantissa * 2^-power
    static Digits ofBinary(std::uint64_t mantissa, int power);
    static Digits normalized(const std::string& digits, std::int64_t exponent);

    bool operator<(const Digits& other) const;
    bool operator==(const Digits& other) const = default;

    std::string m_digits;
    std::int64_t m_magnitude = 0;
};

// mantissa * 2^exponent, a little more if `hasMore`.
struct Binary {
    std::uint64_t mantissa = 0;
    std::int64_t exponent = 0;
    bool hasMore = false;

    // The nearest double, ties to even; out of range as isTooSmallFor has it, or if infinite.
    double value(bool& isOutOfRange) const;
};

}
