#pragma once

#include "text/byte_block.h"

#include <array>

// The fixed case tables of `strlwr` and `strupr`, for single bytes and for blocks.
namespace Tools::CaseFolding {

using Table = std::array<unsigned char, 256>;

constexpr Table makeLowerTable()
{
    Table table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        const bool isUpper = (byte >= 0x41 && byte <= 0x5A) || (byte >= 0xC0 && byte <= 0xDE);
        table[byte] = static_cast<unsigned char>(isUpper ? byte + 0x20 : byte);
    }
    return table;
}

// 0xF7 is no letter and stays, although lowering maps 0xD7 to it.
constexpr Table makeUpperTable()
{
    Table table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        const bool isLower =
            (byte >= 0x61 && byte <= 0x7A) || (byte >= 0xE0 && byte <= 0xFE && byte != 0xF7);
        table[byte] = static_cast<unsigned char>(isLower ? byte - 0x20 : byte);
    }
    return table;
}

inline constexpr Table LowerTable = makeLowerTable();
inline constexpr Table UpperTable = makeUpperTable();

inline unsigned char lower(char c)
{
    return LowerTable[static_cast<unsigned char>(c)];
}

inline ByteBlock lower(ByteBlock block)
{
    const ByteBlock isUpper = block.isInRange(0x41, 0x5A) | block.isInRange(0xC0, 0xDE);
    return block + (isUpper & ByteBlock::filled(0x20));
}

}
