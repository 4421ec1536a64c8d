#include <mdtools/number_format.h>

#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#if defined(HAVE_FMT)
#include <fmt/format.h>
#endif
#if defined(HAVE_DOUBLE_CONVERSION)
#include <double-conversion/double-conversion.h>
#endif

// Every row turns the same mixed numbers into texts of 3 to 6 decimals, one text an iteration.
namespace {

constexpr std::size_t ItemCount = 4096;

struct Item {
    double value;
    int decimals;
};

// What stands in listings: both signs, fifteen orders of magnitude, now and then a round number.
const std::vector<Item>& items()
{
    static const std::vector<Item> numbers = [] {
        std::mt19937_64 random(1);
        std::uniform_real_distribution<double> exponent(-6.0, 9.0);
        std::vector<Item> result;
        for (std::size_t i = 0; i < ItemCount; ++i) {
            double value = std::pow(10.0, exponent(random));
            if (i % 8 == 0)
                value = std::round(value * 4.0) / 4.0;
            result.push_back(
                {random() % 2 == 0 ? value : -value, 3 + static_cast<int>(random() % 4)});
        }
        return result;
    }();
    return numbers;
}

using Format = std::string (*)(double, int);

template <Format format>
void run(benchmark::State& state)
{
    const Item* const first = items().data();
    std::size_t i = 0;
    for (auto _ : state) {
        const Item& item = first[i++ % ItemCount];
        benchmark::DoNotOptimize(format(item.value, item.decimals));
    }
}

// What a peer's user writes for the engineering style, but for the printing itself.
struct Engineering {
    double mantissa;
    int exponent;
};

Engineering engineering(double value)
{
    int exponent = value == 0.0 ? 0 : static_cast<int>(std::floor(std::log10(std::fabs(value))));
    while (exponent % 3 != 0)
        --exponent;
    return {value / std::pow(10.0, exponent), exponent};
}

std::string printfFix(double value, int decimals)
{
    char text[512];
    return {text,
            static_cast<std::size_t>(std::snprintf(text, sizeof text, "%.*f", decimals, value))};
}

std::string printfSci(double value, int decimals)
{
    char text[512];
    return {text,
            static_cast<std::size_t>(std::snprintf(text, sizeof text, "%.*E", decimals, value))};
}

std::string printfAll(double value, int decimals)
{
    char text[512];
    return {text,
            static_cast<std::size_t>(std::snprintf(text, sizeof text, "%.*G", decimals, value))};
}

std::string printfEng(double value, int decimals)
{
    const Engineering number = engineering(value);
    char text[512];
    return {text, static_cast<std::size_t>(std::snprintf(text, sizeof text, "%.*fE%+03d", decimals,
                                                         number.mantissa, number.exponent))};
}

template <std::chars_format format>
std::string charconv(double value, int decimals)
{
    char text[512];
    return {text, std::to_chars(text, text + sizeof text, value, format, decimals).ptr};
}

std::string charconvEng(double value, int decimals)
{
    const Engineering number = engineering(value);
    char text[512];
    char* end =
        std::to_chars(text, text + 500, number.mantissa, std::chars_format::fixed, decimals).ptr;
    *end++ = 'E';
    *end++ = number.exponent < 0 ? '-' : '+';
    if (std::abs(number.exponent) < 10)
        *end++ = '0';
    return {text, std::to_chars(end, text + sizeof text, std::abs(number.exponent)).ptr};
}

BENCHMARK(run<Tools::toStringFix>)->Name("toStringFix/mdtools");
BENCHMARK(run<Tools::toStringSci>)->Name("toStringSci/mdtools");
BENCHMARK(run<Tools::toStringAll>)->Name("toStringAll/mdtools");
BENCHMARK(run<Tools::toStringEng>)->Name("toStringEng/mdtools");
BENCHMARK(run<printfFix>)->Name("toStringFix/snprintf");
BENCHMARK(run<printfSci>)->Name("toStringSci/snprintf");
BENCHMARK(run<printfAll>)->Name("toStringAll/snprintf");
BENCHMARK(run<printfEng>)->Name("toStringEng/snprintf");
BENCHMARK(run<charconv<std::chars_format::fixed>>)->Name("toStringFix/to_chars");
BENCHMARK(run<charconv<std::chars_format::scientific>>)->Name("toStringSci/to_chars");
BENCHMARK(run<charconv<std::chars_format::general>>)->Name("toStringAll/to_chars");
BENCHMARK(run<charconvEng>)->Name("toStringEng/to_chars");

#if defined(HAVE_FMT)

std::string fmtFix(double value, int decimals)
{
    return fmt::format(FMT_STRING("{:.{}f}"), value, decimals);
}

std::string fmtSci(double value, int decimals)
{
    return fmt::format(FMT_STRING("{:.{}E}"), value, decimals);
}

std::string fmtAll(double value, int decimals)
{
    return fmt::format(FMT_STRING("{:.{}G}"), value, decimals);
}

std::string fmtEng(double value, int decimals)
{
    const Engineering number = engineering(value);
    return fmt::format(FMT_STRING("{:.{}f}E{:+03d}"), number.mantissa, decimals, number.exponent);
}

BENCHMARK(run<fmtFix>)->Name("toStringFix/fmt");
BENCHMARK(run<fmtSci>)->Name("toStringSci/fmt");
BENCHMARK(run<fmtAll>)->Name("toStringAll/fmt");
BENCHMARK(run<fmtEng>)->Name("toStringEng/fmt");

#endif

#if defined(HAVE_DOUBLE_CONVERSION)

using double_conversion::DoubleToStringConverter;
using double_conversion::StringBuilder;

template <class Print>
std::string doubleConversion(Print print)
{
    static const DoubleToStringConverter converter(
        DoubleToStringConverter::EMIT_POSITIVE_EXPONENT_SIGN, "inf", "nan", 'E', -5, 15, 4, 0, 2);
    char text[512];
    StringBuilder builder(text, sizeof text);
    print(converter, builder);
    const auto length = static_cast<std::size_t>(builder.position());
    return {builder.Finalize(), length};
}

std::string conversionFix(double value, int decimals)
{
    return doubleConversion([&](const DoubleToStringConverter& converter, StringBuilder& builder) {
        converter.ToFixed(value, decimals, &builder);
    });
}

std::string conversionSci(double value, int decimals)
{
    return doubleConversion([&](const DoubleToStringConverter& converter, StringBuilder& builder) {
        converter.ToExponential(value, decimals, &builder);
    });
}

std::string conversionAll(double value, int decimals)
{
    return doubleConversion([&](const DoubleToStringConverter& converter, StringBuilder& builder) {
        converter.ToPrecision(value, decimals, &builder);
    });
}

std::string conversionEng(double value, int decimals)
{
    const Engineering number = engineering(value);
    return doubleConversion([&](const DoubleToStringConverter& converter, StringBuilder& builder) {
        converter.ToFixed(number.mantissa, decimals, &builder);
        char exponent[8];
        builder.AddCharacter('E');
        builder.AddCharacter(number.exponent < 0 ? '-' : '+');
        if (std::abs(number.exponent) < 10)
            builder.AddCharacter('0');
        const auto end = std::to_chars(exponent, exponent + 8, std::abs(number.exponent)).ptr;
        builder.AddSubstring(exponent, static_cast<int>(end - exponent));
    });
}

BENCHMARK(run<conversionFix>)->Name("toStringFix/double-conversion");
BENCHMARK(run<conversionSci>)->Name("toStringSci/double-conversion");
BENCHMARK(run<conversionAll>)->Name("toStringAll/double-conversion");
BENCHMARK(run<conversionEng>)->Name("toStringEng/double-conversion");

#endif

}
