#pragma once

#include "text/case_folding.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

// Whether and where two texts differ, sixteen bytes at a time and never reading beyond their ends.
namespace Tools::Comparing {

// How bytes are looked at: as they are, or lowered by the table of `strlwr`.
struct Exact {
    static __m128i block(__m128i v) { return v; }
    static unsigned char byte(char c) { return static_cast<unsigned char>(c); }
};
struct Lowered {
    static __m128i block(__m128i v) { return CaseFolding::lower(v); }
    static unsigned char byte(char c) { return CaseFolding::lower(c); }
};

// Whether a NUL in both texts counts as a difference.
enum class Nul { Ordinary, Ends };

template <class Case, Nul nul>
unsigned differences(__m128i a, __m128i b)
{
    __m128i same = _mm_cmpeq_epi8(Case::block(a), Case::block(b));
    if constexpr (nul == Nul::Ends)
        same = _mm_andnot_si128(_mm_cmpeq_epi8(a, _mm_setzero_si128()), same);
    return static_cast<unsigned>(_mm_movemask_epi8(same)) ^ 0xFFFFU;
}

inline __m128i load16(const char* p)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// The first and the last `Half` bytes of a text of Half to 2 * Half bytes in one block.
template <std::size_t Half>
__m128i loadEnds(const char* p, std::size_t size)
{
    if constexpr (Half == 8) {
        return _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                                  _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + size - 8)));
    } else {
        std::int32_t first = 0;
        std::int32_t last = 0;
        std::memcpy(&first, p, 4);
        std::memcpy(&last, p + size - 4, 4);
        return _mm_unpacklo_epi32(_mm_cvtsi32_si128(first), _mm_cvtsi32_si128(last));
    }
}

template <class Case, Nul nul, std::size_t Half>
std::size_t firstDifferenceOfEnds(const char* a, const char* b, std::size_t size)
{
    const unsigned mask = differences<Case, nul>(loadEnds<Half>(a, size), loadEnds<Half>(b, size)) &
                          ((1U << 2 * Half) - 1);
    if (mask == 0)
        return size;
    const auto index = static_cast<std::size_t>(std::countr_zero(mask));
    return index < Half ? index : size - 2 * Half + index;
}

// The index of the first byte that differs (or, for Nul::Ends, is NUL); `size` if there is none.
template <class Case, Nul nul>
std::size_t firstDifference(const char* a, const char* b, std::size_t size)
{
    if (size < 16) {
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
        const unsigned mask = differences<Case, nul>(load16(a + i), load16(b + i));
        if (mask != 0)
            return i + static_cast<std::size_t>(std::countr_zero(mask));
        if (i + 16 == size)
            return size;
        i = i + 32 <= size ? i + 16 : size - 16;
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
inline __m128i differenceButCase(__m128i a, __m128i b)
{
    const __m128i caseBit = _mm_set1_epi8(0x20);
    const __m128i isLetter = CaseFolding::inRange(_mm_or_si128(a, caseBit), 'a', 'z');
    return _mm_andnot_si128(_mm_and_si128(isLetter, caseBit), _mm_xor_si128(a, b));
}

inline bool isZero(__m128i v)
{
    return _mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_setzero_si128())) == 0xFFFF;
}

// First, middle and last byte of a text of one to three bytes: all of them.
inline __m128i loadUpTo3(const char* p, std::size_t size)
{
    const int bytes = static_cast<unsigned char>(p[0]) |
                      static_cast<unsigned char>(p[size / 2]) << 8 |
                      static_cast<unsigned char>(p[size - 1]) << 16;
    return _mm_cvtsi32_si128(bytes);
}

inline bool isSameButCaseShort(const char* a, const char* b, std::size_t size)
{
    if (size >= 8)
        return isZero(differenceButCase(loadEnds<8>(a, size), loadEnds<8>(b, size)));
    if (size >= 4)
        return isZero(differenceButCase(loadEnds<4>(a, size), loadEnds<4>(b, size)));
    return size == 0 || isZero(differenceButCase(loadUpTo3(a, size), loadUpTo3(b, size)));
}

// Both texts have the same bytes, but for the case of ASCII letters. The last block overlaps the
// one before it.
inline bool isSameButCase(const char* a, const char* b, std::size_t size)
{
    if (size < 16)
        return isSameButCaseShort(a, b, size);
    const auto differenceAt = [a, b](std::size_t i) {
        return differenceButCase(load16(a + i), load16(b + i));
    };
    __m128i different = _mm_or_si128(differenceAt(0), differenceAt(size - 16));
    std::size_t i = 16;
    for (; i + 64 <= size; i += 64) {
        const __m128i first = _mm_or_si128(differenceAt(i), differenceAt(i + 16));
        const __m128i second = _mm_or_si128(differenceAt(i + 32), differenceAt(i + 48));
        different = _mm_or_si128(different, _mm_or_si128(first, second));
        if (!isZero(different))
            return false;
    }
    for (; i + 16 < size; i += 16)
        different = _mm_or_si128(different, differenceAt(i));
    return isZero(different);
}

// A text whose terminator stands at `size`; earlier ones may be in it, and end it.
struct Text {
    Text(const std::string& text) : p(text.c_str()), size(text.size()) {}
    Text(const char* text) : p(text), size(text != nullptr ? std::strlen(text) : 0) {}

    const char* p;
    std::size_t size;
};

// Whether double-byte characters are regarded.
enum class By { Byte, Character };

// -1, 0 or 1: the order of two texts, neither of them null.
template <class Case>
int order(Text a, Text b, By by);

// The same, quicker for texts that are equal but for the case of ASCII letters.
template <class Case>
int compare(Text a, Text b, By by);

}
