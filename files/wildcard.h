#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Tools {

// A name pattern: "*" is any run of characters, "?" exactly one, and "*.*" every name. Letters
// match without case, by the code page. A match takes time linear in the name, whatever the
// pattern.
class Wildcard {
public:
    explicit Wildcard(std::string_view pattern);

    bool matches(std::string_view name) const;

    // Whether there is a "*" or a "?" in the text.
    static bool isIn(std::string_view text);

private:
    using Word = std::uint64_t;

    std::size_t rowOf(std::size_t character);
    bool matchesLong(std::string_view name) const;

    // All partial matches advance together, one bit each: bit i is set when the first i characters
    // of the pattern match what was read of the name. A row tells for one character of the name
    // which steps it can take; row 0 is that of the characters the pattern does not name.
    std::size_t m_length = 0;
    std::size_t m_words = 1;
    std::vector<Word> m_rows;
    std::vector<Word> m_stays;
    std::array<std::uint16_t, 256> m_rowOfByte{};
};

}
