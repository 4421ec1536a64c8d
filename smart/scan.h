#pragma once

#include "text/byte_block.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Tools::Smart {

// The classes of characters that the lexer distinguishes, by table.
enum CharacterClass : unsigned char { Blank = 1, Delimiter = 2, NumberStart = 4, Digit = 8 };

inline constexpr std::array<unsigned char, 256> CharacterClasses = [] {
    std::array<unsigned char, 256> classes{};
    for (const char c : {' ', '\t', '\n', '\r'})
        classes[static_cast<unsigned char>(c)] = Blank | Delimiter;
    for (const char c : {'=', '(', ')', '[', ']'})
        classes[static_cast<unsigned char>(c)] = Delimiter;
    for (const char c : {'-', '.'})
        classes[static_cast<unsigned char>(c)] = NumberStart;
    for (char c = '0'; c <= '9'; ++c)
        classes[static_cast<unsigned char>(c)] = NumberStart | Digit;
    return classes;
}();

inline bool is(char c, CharacterClass characterClass)
{
    return (CharacterClasses[static_cast<unsigned char>(c)] & characterClass) != 0;
}

// A bit for each character of the block at `p` that is not a blank.
inline ByteBlock::Mask nonBlanks(const char* p)
{
    const ByteBlock text = ByteBlock::load(p);
    const ByteBlock blanks =
        (text.equals(' ') | text.equals('\t')) | (text.equals('\n') | text.equals('\r'));
    return blanks.mask() ^ ByteBlock::All;
}

inline constexpr auto BlockSize = static_cast<std::ptrdiff_t>(ByteBlock::Size);

// Each of these returns the first character of its kind in [p, end), or end.

inline const char* findNonBlank(const char* p, const char* end)
{
    for (; end - p >= BlockSize; p += BlockSize) {
        const ByteBlock::Mask found = nonBlanks(p);
        if (found != 0)
            return p + std::countr_zero(found);
    }
    while (p != end && is(*p, Blank))
        ++p;
    return p;
}

// As findNonBlank, when probably `expected` blanks come first; sets it to their number. Confirming
// a guess lets the processor go on with what follows, while counting would make it wait. Two blocks
// must be readable.
inline const char* skipBlanks(const char* p, const char* end, std::uint32_t& expected)
{
    std::uint64_t found = nonBlanks(p);
    if (expected >= ByteBlock::Size)
        found |= std::uint64_t{nonBlanks(p + ByteBlock::Size)} << ByteBlock::Size;
    const std::uint64_t wanted = std::uint64_t{1} << expected;
    if ((found & (2 * wanted - 1)) == wanted)
        return p + expected;
    const char* const next = findNonBlank(p, end);
    expected = next - p < 2 * BlockSize ? static_cast<std::uint32_t>(next - p) : 0;
    return next;
}

inline const char* findQuoteOrBackslash(const char* p, const char* end)
{
    for (; end - p >= BlockSize; p += BlockSize) {
        const ByteBlock text = ByteBlock::load(p);
        const ByteBlock::Mask mask = (text.equals('"') | text.equals('\\')).mask();
        if (mask != 0)
            return p + std::countr_zero(mask);
    }
    while (p != end && *p != '"' && *p != '\\')
        ++p;
    return p;
}

// True if the text at `p` begins with the first `size` characters of the block `start`. A block
// must be readable.
inline bool startsWith(const char* p, const char* start, std::uint32_t size)
{
    const ByteBlock::Mask wanted = (ByteBlock::Mask{1} << size) - 1;
    return (ByteBlock::load(p).equals(ByteBlock::load(start)).mask() & wanted) == wanted;
}

inline const char* findDelimiter(const char* p, const char* end)
{
    while (p != end && !is(*p, Delimiter))
        ++p;
    return p;
}

inline const char* findLineFeed(const char* p, const char* end)
{
    const void* found =
        p != end ? std::memchr(p, '\n', static_cast<std::size_t>(end - p)) : nullptr;
    return found != nullptr ? static_cast<const char*>(found) : end;
}

}
