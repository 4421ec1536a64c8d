#pragma once

#include "text/byte_set.h"
#include "text/code_page.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace Tools {

// A set of characters of the code page: a bitmap of the single-byte ones, and a sorted array of the
// double-byte ones.
class CharacterSet {
public:
    CharacterSet(const CodePage& page, std::string_view characters);

    bool contains(const Character& character) const
    {
        return character.bytes == 1 ? m_singles.contains(*character.p)
                                    : containsPair(CodePage::pairAt(character.p));
    }

private:
    bool containsPair(std::uint16_t pair) const;

    ByteSet m_singles;
    // In ascending order.
    std::vector<std::uint16_t> m_pairs;
};

}
