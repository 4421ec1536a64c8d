#pragma once

#include <array>
#include <emmintrin.h>

// The fixed case tables of `strlwr` and `strupr`, for single bytes and for sixteen at a time.
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

// All bits of each byte of `v` that lies between the two, as unsigned bytes.
inline __m128i inRange(__m128i v, unsigned first, unsigned last)
{
    // Moved so that the range ends at the greatest signed byte: one comparison decides.
    const __m128i moved = _mm_add_epi8(v, _mm_set1_epi8(static_cast<char>(0x7F - last)));
    return _mm_cmpgt_epi8(moved, _mm_set1_epi8(static_cast<char>(0x7E - (last - first))));
}

inline __m128i lower(__m128i v)
{
    const __m128i isUpper = _mm_or_si128(inRange(v, 0x41, 0x5A), inRange(v, 0xC0, 0xDE));
    return _mm_add_epi8(v, _mm_and_si128(isUpper, _mm_set1_epi8(0x20)));
}

}
