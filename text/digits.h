#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace Tools {

// ASCII digits only, whatever the locale; bytes or UTF-16 units.
template <class Char>
constexpr bool isDigit(Char c)
{
    return c >= '0' && c <= '9';
}

// The value of a run of digits; nothing if it exceeds an int.
inline std::optional<int> readDigits(std::string_view digits)
{
    int value = 0;
    const char* end = digits.data() + digits.size();
    const std::from_chars_result result = std::from_chars(digits.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end)
        return std::nullopt;
    return value;
}

}
