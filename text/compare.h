#pragma once

#include "text/case_folding.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

// Whether and where two texts differ, a block at a time and never reading beyond their ends: the
// last block overlaps the one before it, and short texts are looked at from both ends.
namespace Tools::Comparing {

// How bytes are looked at: as they are, or lowered by the table of `strlwr`.
struct Exact {
    static ByteBlock block(ByteBlock block) { return block; }
    static unsigned char byte(char c) { return static_cast<unsigned char>(c); }
};
struct Lowered {
    static ByteBlock block(ByteBlock block) { return CaseFolding::lower(block); }
    static unsigned char byte(char c) { return CaseFolding::lower(c); }
};

// Whether a NUL in both texts counts as a difference.
enum class Nul { Ordinary, Ends };

template <class Case, Nul nul>
ByteBlock::Mask differences(ByteBlock a, ByteBlock b)
{
    ByteBlock same = Case::block(a).equals(Case::block(b));
    if constexpr (nul == Nul::Ends)
        same = same.without(a.equals(ByteBlock::zero()));
    return same.mask() ^ ByteBlock::All;
}

template <class Case, Nul nul, std::size_t Half>
std::size_t firstDifferenceOfEnds(const char* a, const char* b, std::size_t size)
{
    const ByteBlock::Mask mask = differences<Case, nul>(ByteBlock::loadEnds<Half>(a, size),
                                                        ByteBlock::loadEnds<Half>(b, size)) &
                                 ((ByteBlock::Mask{1} << 2 * Half) - 1);
    if (mask == 0)
        return size;
    const auto index = static_cast<std::size_t>(std::countr_zero(mask));
    return index < Half ? index : size - 2 * Half + index;
}

// The index of the first byte that differs (or, for Nul::Ends, is NUL); `size` if there is none.
template <class Case, Nul nul>
std::size_t firstDifference(const char* a, const char* b, std::size_t size)
{
    if (size < ByteBlock::Size) {
        if (size >= 8)
            return firstDifferenceOfEnds<Case, nul, 8>(a, b, size);
        if (size >= 4)
            return firstDifferenceOfEnds<Case, nul, 4>(a, b, size);
        for (std::size_t i = 0; i < size; ++i) {
            if (Case::byte(a[i]) != Case::byte(b[i]) || (nul == Nul::Ends && a[i] == '\0'))
                return i;
        }
        return size;
    }
    std::size_t i = 0;
    for (;;) {
        const ByteBlock::Mask mask =
            differences<Case, nul>(ByteBlock::load(a + i), ByteBlock::load(b + i));
        if (mask != 0)
            return i + static_cast<std::size_t>(std::countr_zero(mask));
        if (i + ByteBlock::Size == size)
            return size;
        i = i + 2 * ByteBlock::Size <= size ? i + ByteBlock::Size : size - ByteBlock::Size;
    }
}

template <class Word>
Word loadWord(const char* p)
{
    Word word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

// The first and the last bytes of short texts are compared as words, which may overlap.
template <class Word>
bool haveSameEnds(const char* a, const char* b, std::size_t size)
{
    const std::size_t last = size - sizeof(Word);
    return ((loadWord<Word>(a) ^ loadWord<Word>(b)) |
            (loadWord<Word>(a + last) ^ loadWord<Word>(b + last))) == 0;
}

inline bool isSame(const char* a, const char* b, std::size_t size)
{
    if (size > 16)
        return std::memcmp(a, b, size) == 0;
    if (size >= 8)
        return haveSameEnds<std::uint64_t>(a, b, size);
    if (size >= 4)
        return haveSameEnds<std::uint32_t>(a, b, size);
    return size == 0 || (a[0] == b[0] && a[size / 2] == b[size / 2] && a[size - 1] == b[size - 1]);
}

// Bits that are set where bytes differ in more than the case of an ASCII letter.
inline ByteBlock differenceButCase(ByteBlock a, ByteBlock b)
{
    const ByteBlock caseBit = ByteBlock::filled(0x20);
    const ByteBlock isLetter = (a | caseBit).isInRange('a', 'z');
    return (a ^ b).without(isLetter & caseBit);
}

inline bool isSameButCaseShort(const char* a, const char* b, std::size_t size)
{
    if (size >= 8)
        return differenceButCase(ByteBlock::loadEnds<8>(a, size), ByteBlock::loadEnds<8>(b, size))
            .isZero();
    if (size >= 4)
        return differenceButCase(ByteBlock::loadEnds<4>(a, size), ByteBlock::loadEnds<4>(b, size))
            .isZero();
    return size == 0 ||
           differenceButCase(ByteBlock::loadUpTo3(a, size), ByteBlock::loadUpTo3(b, size)).isZero();
}

// Both texts have the same bytes, but for the case of ASCII letters.
inline bool isSameButCase(const char* a, const char* b, std::size_t size)
{
    constexpr std::size_t Step = ByteBlock::Size;
    if (size < Step)
        return isSameButCaseShort(a, b, size);
    const auto differenceAt = [a, b](std::size_t i) {
        return differenceButCase(ByteBlock::load(a + i), ByteBlock::load(b + i));
    };
    ByteBlock different = differenceAt(0) | differenceAt(size - Step);
    std::size_t i = Step;
    // Four blocks a turn: there is one exit for all of them.
    for (; i + 4 * Step <= size; i += 4 * Step) {
        const ByteBlock first = differenceAt(i) | differenceAt(i + Step);
        const ByteBlock second = differenceAt(i + 2 * Step) | differenceAt(i + 3 * Step);
        different = different | (first | second);
        if (!different.isZero())
            return false;
    }
    for (; i + Step < size; i += Step)
        different = different | differenceAt(i);
    return different.isZero();
}

// A text whose terminator is at `size`; earlier ones may be in it, and end it.
struct Text {
    Text(const std::string& text) : p(text.c_str()), size(text.size()) {}
    Text(const char* text) : p(text), size(text != nullptr ? std::strlen(text) : 0) {}

    const char* p;
    std::size_t size;
};

// Whether double-byte characters are regarded.
enum class By { Byte, Character };

// -1, 0 or 1: the order of two texts, neither of them null. In a file of its own (order.cpp),
// because the compiler would build it into the short function that tries equality first, and have
// that save and restore registers in each call.
template <class Case>
int order(Text a, Text b, By by);

}
