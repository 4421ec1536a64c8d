#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace Tools {

// The text of a call in the manner of printf. A short one needs no allocation, and one that is
// longer than wanted gets none.
class FormattedText {
public:
    // A text of more than `most` characters counts as one that cannot be formatted. So does, with
    // any limit, one with a number of more than 65,535.
    FormattedText(const char* format, va_list args, std::size_t most = SIZE_MAX);

    // Null if the text cannot be formatted. It ends at its first NUL.
    const char* get() const { return m_text; }
    // Of all that was formatted.
    std::size_t size() const { return m_size; }

private:
    std::array<char, 1024> m_short;
    std::unique_ptr<char[]> m_long;
    const char* m_text = nullptr;
    std::size_t m_size = 0;
};

}
