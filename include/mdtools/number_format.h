#pragma once

#include <mdtools/export.h>

#include <atomic>
#include <string>

namespace Tools {

// Real numbers as text for listings, in one of four styles, with `decimals` as printf has it. The
// text is the exact value of the double rounded to the nearest, ties to even. It is ASCII, and the
// same on every platform and in every locale: "." as decimal point, exponents with a sign and at
// least two digits.
//
// Infinities and not-a-numbers become "inf", "-inf", "nan", "-nan" (upper case in the scientific
// and general style), without an exponent. The sign of a negative zero, and of a number that rounds
// to zero, is kept: see toPositiveZero. The text is empty if `decimals` is negative, or if it would
// have 1,024 characters or more. Any thread may call these functions at any time.

// Fixed point, "%.3f": 12345.678 with 2 decimals is "12345.68".
MDTOOLS_API std::string toStringFix(double value, int decimals);

// Scientific, "%.3E": 1500 with 3 decimals is "1.500E+03".
MDTOOLS_API std::string toStringSci(double value, int decimals);

// General, "%.3G": `decimals` counts the significant digits, zeros at the end are left out, and the
// shorter of both notations is taken: 0.0001 is "0.0001", 0.00001 is "1E-05".
MDTOOLS_API std::string toStringAll(double value, int decimals);

// Engineering: a fixed-point number and an exponent that is a multiple of three; 12345 with 3
// decimals is "12.345E+03". The exponent is taken before rounding, and the number before it is not
// brought back below 1000 after it: 999.999 with 2 decimals is "1000.00E+00".
MDTOOLS_API std::string toStringEng(double value, int decimals);

// The text without its leading "-" when it starts with a number that is zero: "-0.00" becomes
// "0.00". Only the very first character is looked at, so " -0.0" stays. Throws
// std::invalid_argument if the text does not start with a number, std::out_of_range if a double
// cannot hold it.
MDTOOLS_API std::string toPositiveZero(const std::string& text);

// The functions above work on bytes anyway; these are the same.
namespace Mbcs {

MDTOOLS_API std::string toStringFix(double value, int decimals);
MDTOOLS_API std::string toStringSci(double value, int decimals);
MDTOOLS_API std::string toStringAll(double value, int decimals);
MDTOOLS_API std::string toStringEng(double value, int decimals);

}

// The exponent style of this process, for programs that print numbers themselves. toStringSci and
// toStringAll switch it to TwoDigitExponent while they print and back afterwards, which other
// threads can see; what they print does not depend on it.
class MDTOOLS_API OutputFormat {
public:
    static constexpr unsigned int TwoDigitExponent = 1;

    // 0 at first.
    static unsigned int get();

    // Any number is taken. Returns the previous one; not one step with storing the new one.
    static unsigned int set(unsigned int format);

private:
    static std::atomic<unsigned int> ms_format;
};

}
