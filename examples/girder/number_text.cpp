#include "number_text.h"

#include <mdtools/number_format.h>

#include <charconv>
#include <cmath>

namespace Girder {

namespace {

// Smaller numbers are rounding errors, and some of them could not be read back.
constexpr double Smallest = 1e-300;

std::string print(double value, const NumberFormat& format)
{
    switch (format.style) {
    case NumberStyle::Scientific:
        return Tools::toStringSci(value, format.decimals);
    case NumberStyle::General:
        return Tools::toStringAll(value, format.decimals);
    case NumberStyle::Engineering:
        return Tools::toStringEng(value, format.decimals);
    default:
        return Tools::toStringFix(value, format.decimals);
    }
}

}

std::string toListText(double value, const NumberFormat& format)
{
    return Tools::toPositiveZero(print(std::abs(value) < Smallest ? 0.0 : value, format));
}

bool isWholeNumber(const std::string& text, int& value)
{
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    return result.ec == std::errc() && result.ptr == end;
}

std::string toText(double value)
{
    std::array<char, 32> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return std::string(buffer.data(), end.ptr);
}

}
