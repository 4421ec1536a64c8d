#pragma once

#include "text/case_folding.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// The first difference of two texts, sixteen bytes at a time and never reading beyond their ends.
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

}
