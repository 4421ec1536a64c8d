#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
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
    using Row = std::uint16_t;

    Row rowOf(std::uint16_t character);
    Row findRow(std::uint16_t character) const;
    void setSteps(std::string_view pattern);
    void shareRowsWithoutCase();
    template <class Step>
    void forEachRow(std::string_view name, Step step) const;
    bool matchesShort(std::string_view name) const;
    bool matchesLong(std::string_view name) const;

    // A Shift-And automaton (Baeza-Yates and Gonnet): all partial matches advance together, one bit
    // each. Bit i is set when the first i characters of the pattern match what was read of the
    // name. A row has the bits that one character of the name takes to the next one; row 0 is that
    // of the characters the pattern does not name. A bit after which the pattern has a "*" may
    // stay.
    std::size_t m_length = 0;
    std::size_t m_words = 1;
    std::vector<Word> m_rows;
    std::vector<Word> m_stays;
    std::array<Row, 256> m_rowOfByte{};
    // Of double-byte characters, lowered and in order.
    std::vector<std::pair<std::uint16_t, Row>> m_rowOfPair;
};

}
