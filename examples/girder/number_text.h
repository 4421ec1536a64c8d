#pragma once

#include <array>
#include <string>
#include <utility>

namespace Girder {

enum class NumberStyle { Fixed, Scientific, General, Engineering };

// The words for the styles in the settings.
constexpr std::array<std::pair<NumberStyle, const char*>, 4> numberStyleNames = {
    {{NumberStyle::Fixed, "fixed"},
     {NumberStyle::Scientific, "scientific"},
     {NumberStyle::General, "general"},
     {NumberStyle::Engineering, "engineering"}}};

// How numbers are listed.
struct NumberFormat {
    NumberStyle style = NumberStyle::Fixed;
    int decimals = 3;
};

// What is zero, or is rounded to it, has no sign.
std::string toListText(double value, const NumberFormat& format);

// True if the whole of `text` is a number within the range of an int, without a "+".
bool isWholeNumber(const std::string& text, int& value);

// The shortest text that reads back as `value`, with a "." whatever the locale.
std::string toText(double value);

}
