#include "trace/formatted_text.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <string>

namespace {

// The text, or "none".
std::string textOf(std::size_t most, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const Tools::FormattedText text(format, args, most);
    va_end(args);
    return text.get() != nullptr ? std::string(text.get(), text.size()) : "none";
}

// Long texts in few words: their length and their last character.
std::string summaryOf(const std::string& text)
{
    return text.size() < 60 ? text : std::to_string(text.size()) + text.back();
}

constexpr int Huge = 2000000000;
constexpr std::size_t Any = SIZE_MAX;

// Nothing is asked for, neither of the memory nor of the run-time, before it is known that the text
// is short enough.
TEST(FormattedText, isBounded)
{
    struct Case {
        std::string text;
        const char* expected;
    };
    const Case cases[] = {
        {textOf(Any, "%s %d%%", "a", 5), "a 5%"},
        {textOf(5, "%s", "12345"), "12345"},
        {textOf(5, "%s", "123456"), "none"},
        {textOf(5, "%5d", 1), "    1"},
        {textOf(5, "%6d", 1), "none"},
        {textOf(5000, "%-2000d|", 1), "2001|"},
        {textOf(Any, nullptr), "none"},
        // Widths and precisions, as arguments and in the format.
        {textOf(65535, "%*d", Huge, 1), "none"},
        {textOf(65535, "%*d", -Huge, 1), "none"},
        {textOf(65535, "%2000000000d", 1), "none"},
        {textOf(65535, "%.99999999999999999999x", 1U), "none"},
        {textOf(65535, "%.*f", Huge, 1.0), "none"},
        {textOf(65535, "%*s", Huge, "a"), "none"},
        {textOf(Any, "%*d", Huge, 1), "none"},
        {textOf(Any, "%*d", 65535, 1), "655351"},
        {textOf(Any, "%*d", 65536, 1), "none"},
        {textOf(Any, "%*s", 70000, "a"), "70000a"},
        {textOf(Any, "%.*d", 65536, 1), "none"},
        {textOf(Any, "%.70000s%d", "a", 5), "a5"},
        // No more than there is, or than a negative one says.
        {textOf(65535, "%.*s", Huge, "abc"), "abc"},
        {textOf(65535, "%.*d", -5, 7), "7"},
        // After arguments of every size.
        {textOf(65535, "%hhd%hd%ld%lld%zu%td%jd%*d", 1, 2, 3L, 4LL, std::size_t{5},
                std::ptrdiff_t{6}, std::intmax_t{7}, Huge, 8),
         "none"},
        {textOf(65535, "%hhd%hd%ld%lld%zu%td%jd%*d", 1, 2, 3L, 4LL, std::size_t{5},
                std::ptrdiff_t{6}, std::intmax_t{7}, 3, 8),
         "1234567  8"},
        {textOf(65535, "%g%Lg%c%s%p%*d", 1.5, 2.5L, 'c', "s", nullptr, Huge, 8), "none"},
        {textOf(Any, "%d%d%d%d%Lg%*d", 1, 2, 3, 4, 2.5L, 65536, 8), "none"},
        {textOf(Any, "%p%*d", nullptr, 65536, 8), "none"},
        {textOf(65535, "%%%*c", Huge, 'c'), "none"},
        {textOf(65535, "%-*.*f|", 8, 2, 1.0), "1.00    |"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(summaryOf(c.text), c.expected);
}

}
