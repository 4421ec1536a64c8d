#pragma once

#include "text/byte_set.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace Tools {

class CodePage;

// A set of characters of the code page, single-byte and double-byte ones.
class CharacterSet {
public:
    CharacterSet(const CodePage& page, std::string_view characters);

    // `bytes` is the size of the character at `p`.
    bool contains(const char* p, std::size_t bytes) const;

private:
    ByteSet m_singles;
    // In ascending order.
    std::vector<std::uint16_t> m_pairs;
};

}
