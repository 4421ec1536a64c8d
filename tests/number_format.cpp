#include <mdtools/number_format.h>

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <stdexcept>

using namespace Tools;

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

struct Case {
    double value;
    int decimals;
    const char* text;
};

template <std::size_t count>
void expectTexts(std::string (*print)(double, int), std::string (*twin)(double, int),
                 const Case (&cases)[count])
{
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(print(c.value, c.decimals), c.text);
        EXPECT_EQ(twin(c.value, c.decimals), c.text);
    }
}

TEST(NumberFormat, fixed)
{
    static const Case cases[] = {
        {12345.678, 2, "12345.68"},
        {-0.0001, 2, "-0.00"},
        {-0.0, 0, "-0"},
        {0.5, 0, "0"}, // ties to even
        {1.5, 0, "2"},
        {2.5, 0, "2"},
        {0.125, 2, "0.12"},
        {0.375, 2, "0.38"},
        {2.675, 2, "2.67"}, // the double lies below the tie
        {9.996, 2, "10.00"},
        {99999999.5, 0, "100000000"},
        {0.99999999999999989, 15, "1.000000000000000"},
        {4503599627370495.5, 1, "4503599627370495.5"},
        {9007199254740993.0, 3, "9007199254740992.000"},
        {9223372036854774784.0, 1, "9223372036854774784.0"},
        {9223372036854775808.0, 1, "9223372036854775808.0"},
        {1e23, 0, "99999999999999991611392"},
        {0.1, 17, "0.10000000000000001"},
        {0.1, 20, "0.10000000000000000555"},
        {5e-324, 3, "0.000"},
        {6e-20, 17, "0.00000000000000000"},
        {Infinity, 3, "inf"},
        {-Infinity, 2000, "-inf"},
        {NotANumber, 0, "nan"},
        {std::copysign(NotANumber, -1.0), 0, "-nan"},
        {1.0, -1, ""},
        {Infinity, -1, ""},
    };
    expectTexts(toStringFix, Mbcs::toStringFix, cases);
}

TEST(NumberFormat, scientific)
{
    static const Case cases[] = {
        {1500.0, 3, "1.500E+03"},
        {0.00002, 3, "2.000E-05"},
        {0.0, 2, "0.00E+00"},
        {-0.0, 0, "-0E+00"},
        {12345.0, 3, "1.234E+04"}, // ties to even, of numbers and of their tenths
        {12355.0, 3, "1.236E+04"},
        {125000.0, 1, "1.2E+05"},
        {2.5, 0, "2E+00"},
        {9.9996, 3, "1.000E+01"},
        {1e22, 15, "1.000000000000000E+22"},
        {1e23, 15, "9.999999999999999E+22"},
        {1e23, 16, "9.9999999999999992E+22"},
        {DBL_MAX, 6, "1.797693E+308"},
        {5e-324, 3, "4.941E-324"},
        {5e-324, 15, "4.940656458412465E-324"},
        {Infinity, 3, "INF"},
        {-Infinity, 3, "-INF"},
        {-NotANumber, 3, "-NAN"},
        {1.0, -3, ""},
    };
    expectTexts(toStringSci, Mbcs::toStringSci, cases);
}

TEST(NumberFormat, general)
{
    static const Case cases[] = {
        {0.0001, 3, "0.0001"},
        {1e-5, 3, "1E-05"},
        {0.00012345, 3, "0.000123"},
        {0.000099996, 4, "0.0001"}, // the rounded number decides
        {999.6, 3, "1E+03"},
        {999.4, 3, "999"},
        {100.0, 3, "100"},
        {100.0, 2, "1E+02"},
        {1200.0, 6, "1200"},
        {12.5, 6, "12.5"},
        {12.5, 0, "1E+01"},
        {1234567.0, 6, "1.23457E+06"},
        {123456789012.0, 13, "123456789012"},
        {0.1, 17, "0.10000000000000001"},
        {1e15, 16, "1000000000000000"},
        {0.0, 3, "0"},
        {-0.0, 3, "-0"},
        {0.1, INT_MAX, "0.1000000000000000055511151231257827021181583404541015625"},
        {Infinity, 3, "INF"},
        {NotANumber, 3, "NAN"},
        {1.0, -1, ""},
    };
    expectTexts(toStringAll, Mbcs::toStringAll, cases);
}

TEST(NumberFormat, engineering)
{
    static const Case cases[] = {
        {12345.0, 3, "12.345E+03"},
        {-0.05, 2, "-50.00E-03"},
        {0.0, 1, "0.0E+00"},
        {-0.0, 1, "-0.0E+00"},
        {1000.0, 2, "1.00E+03"},
        {999.999, 2, "1000.00E+00"}, // rounded after the exponent was taken
        {0.5, 1, "500.0E-03"},
        {0.001, 3, "1.000E-03"},
        {0.0009, 3, "900.000E-06"},
        {1.0, 0, "1E+00"},
        {0.99999999999999989, 3, "1000.000E-03"}, // its logarithm stays below zero
        {999.99999999999989, 3, "1.000E+03"},     // its logarithm rounds to 3
        {999.999999999999, 3, "1000.000E+00"},
        {5e-324, 3, "4.941E-324"},
        {2.2250738585072014e-308, 3, "22.251E-309"},
        {1e-306, 3, "1.000E-306"},
        {1e23, 3, "100.000E+21"},
        {DBL_MAX, 4, "179.7693E+306"},
        {1.5, 20, "1.50000000000000000000E+00"},
        {Infinity, 3, "inf"},
        {-NotANumber, 3, "-nan"},
        {1.0, -1, ""},
    };
    expectTexts(toStringEng, Mbcs::toStringEng, cases);
}

// The logarithm of a number just below a power of ten may round up to the whole number.
TEST(NumberFormat, engineeringBesidePowersOfTen)
{
    struct Step {
        double power;
        int below; // how many doubles before the power belong to it already
        const char* own;
        const char* lower;
    };
    static const Step steps[] = {
        {1e3, 4, "1E+03", "1000E+00"},        {1e6, 8, "1E+06", "1000E+03"},
        {1e9, 17, "1E+09", "1000E+06"},       {1e-3, 2, "1E-03", "1000E-06"},
        {1e-6, 4, "1E-06", "1000E-09"},       {1e300, 440, "1E+300", "1000E+297"},
        {1e-300, 394, "1E-300", "1000E-303"}, {1e-309, 13, "1E-309", "1000E-312"},
    };
    for (const Step& s : steps) {
        SCOPED_TRACE(s.own);
        const auto first = std::bit_cast<std::uint64_t>(s.power) - static_cast<unsigned>(s.below);
        EXPECT_EQ(toStringEng(std::bit_cast<double>(first), 0), s.own);
        EXPECT_EQ(toStringEng(std::bit_cast<double>(first - 1), 0), s.lower);
    }
}

// A buffer of 1,024 characters with its terminator was the limit of old.
TEST(NumberFormat, tooLongTexts)
{
    EXPECT_EQ(toStringFix(1.0, 1021).size(), 1023u);
    EXPECT_EQ(toStringFix(1.0, 1022), "");
    EXPECT_EQ(toStringFix(-1.0, 1021), "");
    EXPECT_EQ(toStringFix(1e300, 721).size(), 1023u);
    EXPECT_EQ(toStringFix(1e300, 722), "");
    EXPECT_EQ(toStringFix(0.0, INT_MAX), "");
    EXPECT_EQ(toStringSci(1.0, 1017).size(), 1023u);
    EXPECT_EQ(toStringSci(1.0, 1018), "");
    EXPECT_EQ(toStringSci(1.0, INT_MAX), "");
    EXPECT_EQ(toStringEng(-1.0, 1016).size(), 1023u);
    EXPECT_EQ(toStringEng(-1.0, 1017), "");
    EXPECT_EQ(toStringAll(-5e-324, 1100).size(), 758u); // 751 digits are all there are
}

// Numbers of every kind: any bits, a listing's magnitudes, ties, neighbours of powers of ten, whole
// ones, tiny ones.
double anyNumber(std::mt19937_64& random)
{
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    const std::uint64_t bits = random();
    switch (random() % 6) {
    case 0:
        return std::bit_cast<double>(bits);
    case 1:
        return std::ldexp(static_cast<double>(bits >> 11), below(200) - 150);
    case 2:
        return (below(2000001) - 1000000) / static_cast<double>(1 << below(12));
    case 3:
        return std::bit_cast<double>(
            std::bit_cast<std::uint64_t>(std::pow(10.0, below(630) - 322)) + bits % 9 - 4);
    case 4:
        return static_cast<double>(bits >> below(64));
    default:
        return std::bit_cast<double>(bits >> 12 >> below(52));
    }
}

TEST(NumberFormat, printsWhatTheLibraryPrints)
{
    std::mt19937_64 random(20);
    for (int i = 0; i < 200000; ++i) {
        double value = anyNumber(random);
        if (!std::isfinite(value))
            value = 1.0;
        const int decimals = static_cast<int>(random() % (random() % 8 == 0 ? 1100 : 10));
        struct Style {
            std::string (*print)(double, int);
            const char* format;
        };
        for (const Style style :
             {Style{toStringFix, "%.*f"}, {toStringSci, "%.*E"}, {toStringAll, "%.*G"}}) {
            char text[1500];
            const int size = std::snprintf(text, sizeof text, style.format, decimals, value);
            ASSERT_EQ(style.print(value, decimals), size > 1023 ? "" : text)
                << std::hexfloat << value << ' ' << style.format << ' ' << decimals;
        }
    }
}

TEST(NumberFormat, engineeringIsAFixedMantissa)
{
    std::mt19937_64 random(21);
    for (int i = 0; i < 50000; ++i) {
        const double value = std::fabs(anyNumber(random));
        const double log = static_cast<double>(std::log10(static_cast<long double>(value)));
        // Close to whole logarithms that of the C library is no judge.
        if (!std::isnormal(value) || log < -300.0 || std::fabs(log - std::round(log)) < 1e-9)
            continue;
        const int exponent = 3 * static_cast<int>(std::floor(std::floor(log) / 3.0));
        char text[64];
        std::snprintf(text, sizeof text, "1e%d", exponent);
        const double mantissa = value / std::strtod(text, nullptr);
        std::snprintf(text, sizeof text, "%.9fE%+03d", mantissa, exponent);
        ASSERT_EQ(toStringEng(value, 9), text) << std::hexfloat << value;
    }
}

TEST(NumberFormat, localeDoesNotMatter)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "de_DE", "German"}) {
        if (std::setlocale(LC_ALL, name) != nullptr)
            break;
    }
    EXPECT_EQ(toStringFix(1.25, 1), "1.2");
    EXPECT_EQ(toStringFix(1.25, 20), "1.25000000000000000000");
    EXPECT_EQ(toStringEng(1.25, 2), "1.25E+00");
    EXPECT_EQ(toPositiveZero("-0.0"), "0.0");
    EXPECT_EQ(toPositiveZero("-0.5"), "-0.5");
    std::setlocale(LC_ALL, before.c_str());
}

TEST(NumberFormat, positiveZero)
{
    struct Zero {
        const char *text, *result;
    };
    static const Zero cases[] = {
        {"-0.000", "0.000"}, {"-0.000E+00", "0.000E+00"}, {"-0 kN", "0 kN"}, // what follows is kept
        {"-0x0", "0x0"},     {"-0e99999", "0e99999"},     {" -0.0", " -0.0"},
        {"0.0", "0.0"},      {"-0.001", "-0.001"},        {"-inf", "-inf"},
        {"nan", "nan"},
    };
    for (const Zero& c : cases)
        EXPECT_EQ(toPositiveZero(c.text), c.result) << c.text;
    EXPECT_EQ(toPositiveZero(toStringFix(-0.0001, 2)), "0.00");
}

TEST(NumberFormat, positiveZeroNeedsANumber)
{
    const auto messageOf = [](const std::string& text) -> std::string {
        try {
            return "no exception: " + toPositiveZero(text);
        } catch (const std::invalid_argument& error) {
            return std::string("invalid: ") + error.what();
        } catch (const std::out_of_range& error) {
            return std::string("range: ") + error.what();
        }
    };
    for (const char* text : {"", "-", " ", "abc", "- 0", ".", "e5"})
        EXPECT_EQ(messageOf(text), "invalid: invalid stod argument") << text;
    for (const char* text : {"1e999", "-1e999", "-1e-999", "1e-310"})
        EXPECT_EQ(messageOf(text), "range: stod argument out of range") << text;
}

TEST(OutputFormat, keepsWhatIsSet)
{
    EXPECT_EQ(OutputFormat::get(), 0u);
    EXPECT_EQ(OutputFormat::set(5), 0u);
    EXPECT_EQ(toStringSci(1500.0, 1), "1.5E+03");
    EXPECT_EQ(toStringAll(1500.0, 1), "2E+03");
    EXPECT_EQ(OutputFormat::get(), 5u);
    EXPECT_EQ(OutputFormat::set(OutputFormat::TwoDigitExponent), 5u);
    EXPECT_EQ(OutputFormat::set(0), 1u);
}

}
