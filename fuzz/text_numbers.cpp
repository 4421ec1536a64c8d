#include "text/numbers.h"

#include <mdtools/strings.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

// Holds the reading of numbers against the C library's, which rounds correctly, too. The program
// stays in the "C" locale.
namespace {

void check(bool condition)
{
    if (!condition)
        std::abort();
}

bool isSameValue(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

// The C library drops digits of hexadecimal numbers that are too small for a full mantissa, and
// reports an overflow of the word behind "nan".
bool isTrusted(const std::string& text, double value)
{
    const bool isHex = text.find_first_of("xX") != std::string::npos;
    return std::isnan(value) ? text.find('(') == std::string::npos
                             : !isHex || std::fabs(value) > std::numeric_limits<double>::min();
}

void checkReal(const std::string& text)
{
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(text.c_str(), &end);
    const bool isOutOfRange = errno == ERANGE;
    const Tools::Numbers::Real read =
        Tools::Numbers::readReal(text.data(), text.data() + text.size());
    check(read.end - text.data() == end - text.c_str());
    if (!isTrusted(text, value))
        return;
    check(isSameValue(read.value, value) && read.isOutOfRange == isOutOfRange);
    const mdt::Nullable<double> parsed = Tools::tryParseDouble(text);
    check(parsed.hasValue() == (end != text.c_str() && !isOutOfRange));
    check(!parsed.hasValue() || isSameValue(parsed.getValue(), value));
    check(isSameValue(Tools::atof(text.c_str()), value));
}

void checkInteger(const std::string& text)
{
    char* end = nullptr;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    const bool fits = end != text.c_str() && value >= INT32_MIN && value <= INT32_MAX;
    const mdt::Nullable<int> parsed = Tools::tryParseInt(text);
    check(parsed.hasValue() == fits && (!fits || parsed.getValue() == value));
    const int saturated = static_cast<int>(value < INT32_MIN   ? INT32_MIN
                                           : value > INT32_MAX ? INT32_MAX
                                                               : value);
    check(Tools::atoi(text.c_str()) == saturated);
    const bool fitsUnsigned =
        end != text.c_str() && value >= -static_cast<long long>(UINT32_MAX) && value <= UINT32_MAX;
    const mdt::Nullable<unsigned int> word = Tools::tryParseUInt(text);
    check(word.hasValue() == fitsUnsigned);
    check(!fitsUnsigned || word.getValue() == static_cast<std::uint32_t>(value));
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // A C text, so that both readers stop at the same place.
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string text = bytes.c_str();
    checkReal(text);
    checkInteger(text);
    return 0;
}
