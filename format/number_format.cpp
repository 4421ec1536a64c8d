#include <mdtools/number_format.h>

#include "format/digits.h"
#include "format/engineering.h"
#include "format/powers_of_ten.h"
#include "format/rounding.h"
#include "text/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace Tools {

namespace {

// A text and its terminator fill a buffer of 1,024 characters at most; what does not fit is empty.
constexpr int LongestText = 1023;

// What the functions below print: a finite magnitude and its sign, which is 1 for a minus.
struct Number {
    double magnitude;
    unsigned int sign;
};

// Without a branch, because nobody can predict signs.
constexpr PackedText signOf(Number number)
{
    return {character('-').bytes * number.sign, static_cast<int>(number.sign)};
}

constexpr PackedText exponentOf(int exponent)
{
    const auto magnitude = static_cast<unsigned int>(exponent < 0 ? -exponent : exponent);
    const PackedText letterAndSign{exponent < 0 ? 0x2D45u : 0x2B45u, 2}; // "E-", "E+"
    if (magnitude >= 100)
        return join(letterAndSign, paddedDigits(magnitude, 3));
    const unsigned int tens = (magnitude * 103) >> 10;
    return join(letterAndSign, {0x3030u + tens + ((magnitude - 10 * tens) << 8), 2});
}

std::string printByLibrary(Number number, std::chars_format format, int count, PackedText tail = {})
{
    char text[LongestText];
    text[0] = '-';
    // No number has more significant digits than fit, and more decimals do not fit.
    const auto [end, error] = std::to_chars(text + (number.sign), std::end(text), number.magnitude,
                                            format, std::min(count, LongestText));
    if (error != std::errc() || end + tail.count > std::end(text))
        return {};
    if (void* exponent = std::memchr(text, 'e', static_cast<std::size_t>(end - text)))
        *static_cast<char*>(exponent) = 'E';
    std::memcpy(end, &tail.bytes, static_cast<std::size_t>(tail.count));
    return std::string(text, end + tail.count);
}

bool isUsualFixed(Number number, int decimals)
{
    return decimals <= MaximalPlaces && number.magnitude < EndOfFixed;
}

// The numbers with more digits than most, and those without decimals.
ShortText longFixedText(Number number, FixedPoint fixed, int decimals)
{
    ShortText text;
    text.append(signOf(number));
    text.appendWhole(fixed.whole);
    if (decimals > 0) {
        text.append(character('.'));
        text.appendPadded(fixed.fraction, decimals);
    }
    return text;
}

inline ShortText fixedText(Number number, int decimals)
{
    const FixedPoint fixed = roundToPlaces(number.magnitude, decimals);
    if (fixed.whole >= 10000000 || decimals < 1 || decimals > 7)
        return longFixedText(number, fixed, decimals);
    const auto [whole, fraction] =
        splitDigits(fixed.whole, fixed.fraction * factorToEight(decimals));
    return ShortText(join(signOf(number), withoutLeadingZeros(whole)),
                     join(character('.'), leadingDigits(fraction, decimals)));
}

std::string printFixed(Number number, int decimals)
{
    if (!isUsualFixed(number, decimals))
        return printByLibrary(number, std::chars_format::fixed, decimals);
    return fixedText(number, decimals).toString();
}

// False if the standard library has to print the number. A zero has only digits that are zero.
bool roundForText(double magnitude, int count, Significant& result)
{
    if (count > MaximalDigits)
        return false;
    result = magnitude == 0.0 ? Significant{0, 0} : roundToDigits(magnitude, count);
    return result.digits != 0 || magnitude == 0.0;
}

// `count` digits with a point after the first `whole` ones, unless these are all.
void appendWithPoint(ShortText& text, std::uint64_t digits, int count, int whole)
{
    if (count == whole) {
        text.appendPadded(digits, count);
    } else if (count < 8) {
        const std::uint64_t all = paddedDigits(digits, count).bytes;
        const std::uint64_t behind = all >> (8 * whole) << (8 * whole);
        const std::uint64_t point = character('.').bytes << (8 * whole);
        text.append({(all ^ behind) | point | behind << 8, count + 1});
    } else {
        const std::uint64_t power = PowersOfTen::integer(count - whole);
        text.appendPadded(digits / power, whole);
        text.append(character('.'));
        text.appendPadded(digits % power, count - whole);
    }
}

std::string printScientific(Number number, int decimals)
{
    Significant rounded{};
    // The count of digits is one more, but not if there is no such int.
    if (decimals >= MaximalDigits || !roundForText(number.magnitude, decimals + 1, rounded))
        return printByLibrary(number, std::chars_format::scientific, decimals);
    ShortText text;
    text.append(signOf(number));
    appendWithPoint(text, rounded.digits, decimals + 1, 1);
    text.append(exponentOf(rounded.exponent));
    return text.toString();
}

std::string printGeneral(Number number, int precision)
{
    int count = precision == 0 ? 1 : precision;
    Significant rounded{};
    if (!roundForText(number.magnitude, count, rounded))
        return printByLibrary(number, std::chars_format::general, count);
    const int exponent = rounded.exponent;
    const bool isScientific = exponent < -4 || exponent >= count;
    // Zeros at the end go, but not those before the point.
    const int least = isScientific || exponent < 0 ? 1 : exponent + 1;
    for (; count > least && rounded.digits % 10 == 0; --count)
        rounded.digits /= 10;
    ShortText text;
    text.append(signOf(number));
    if (isScientific) {
        appendWithPoint(text, rounded.digits, count, 1);
        text.append(exponentOf(exponent));
    } else if (exponent < 0) {
        text.append({UINT64_C(0x3030302E30) & lowBytes(1 - exponent), 1 - exponent});
        text.appendPadded(rounded.digits, count);
    } else {
        appendWithPoint(text, rounded.digits, count, exponent + 1);
    }
    return text.toString();
}

std::string printEngineering(Number number, int decimals)
{
    Engineering engineering{0.0, 0};
    if (number.magnitude != 0.0)
        engineering = toEngineering(number.magnitude);
    number.magnitude = engineering.mantissa;
    const PackedText tail = exponentOf(engineering.exponent);
    if (!isUsualFixed(number, decimals))
        return printByLibrary(number, std::chars_format::fixed, decimals, tail);
    ShortText text = fixedText(number, decimals);
    text.append(tail);
    return text.toString();
}

template <std::string (*printNumber)(Number, int)>
std::string print(double value, int decimals, const char* infinity, const char* notANumber)
{
    if (decimals < 0)
        return {};
    const Number number{std::fabs(value), std::signbit(value) ? 1u : 0u};
    if (std::isfinite(value))
        return printNumber(number, decimals);
    return std::string(number.sign != 0 ? "-" : "") + (std::isnan(value) ? notANumber : infinity);
}

// As long as it lives, the process's exponent style is that of two digits.
class TwoDigitExponents {
public:
    TwoDigitExponents() : m_saved(OutputFormat::set(OutputFormat::TwoDigitExponent)) {}
    ~TwoDigitExponents() { OutputFormat::set(m_saved); }
    TwoDigitExponents(const TwoDigitExponents&) = delete;
    TwoDigitExponents& operator=(const TwoDigitExponents&) = delete;

private:
    unsigned int m_saved;
};

}

std::string toStringFix(double value, int decimals)
{
    return print<printFixed>(value, decimals, "inf", "nan");
}

std::string toStringSci(double value, int decimals)
{
    const TwoDigitExponents style;
    return print<printScientific>(value, decimals, "INF", "NAN");
}

std::string toStringAll(double value, int decimals)
{
    const TwoDigitExponents style;
    return print<printGeneral>(value, decimals, "INF", "NAN");
}

std::string toStringEng(double value, int decimals)
{
    return print<printEngineering>(value, decimals, "inf", "nan");
}

std::string toPositiveZero(const std::string& text)
{
    const Numbers::Real number = Numbers::readReal(text.data(), text.data() + text.size());
    if (number.end == text.data())
        throw std::invalid_argument("invalid stod argument");
    if (number.isOutOfRange)
        throw std::out_of_range("stod argument out of range");
    return number.value == 0.0 && text.front() == '-' ? text.substr(1) : text;
}

std::string Mbcs::toStringFix(double value, int decimals)
{
    return Tools::toStringFix(value, decimals);
}

std::string Mbcs::toStringSci(double value, int decimals)
{
    return Tools::toStringSci(value, decimals);
}

std::string Mbcs::toStringAll(double value, int decimals)
{
    return Tools::toStringAll(value, decimals);
}

std::string Mbcs::toStringEng(double value, int decimals)
{
    return Tools::toStringEng(value, decimals);
}

std::atomic<unsigned int> OutputFormat::ms_format{0};

unsigned int OutputFormat::get()
{
    return ms_format.load(std::memory_order_relaxed);
}

unsigned int OutputFormat::set(unsigned int format)
{
    const unsigned int previous = ms_format.load(std::memory_order_relaxed);
    ms_format.store(format, std::memory_order_relaxed);
    return previous;
}

}
