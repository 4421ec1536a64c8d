#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace Tools {

// Many bytes looked at at once (SIMD): the one vocabulary of all code that does so. Users step by
// Size and count on nothing but Size <= 64 and one mask bit a byte, so that a wider block is a
// matter of this file. A comparison sets all bits of each byte for which it holds.
class ByteBlock {
public:
    static constexpr std::size_t Size = 16;

    // One bit a byte, the first one lowest.
    using Mask = std::uint32_t;
    static constexpr Mask All = (Mask{1} << Size) - 1;

    // Not initialised.
    ByteBlock() = default;
    explicit ByteBlock(__m128i bits) : m_bits(bits) {}

    static ByteBlock zero() { return ByteBlock(_mm_setzero_si128()); }
    static ByteBlock filled(char c) { return ByteBlock(_mm_set1_epi8(c)); }

    // Size bytes at any address.
    static ByteBlock load(const char* p)
    {
        return ByteBlock(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
    }
    void store(char* p) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), m_bits); }

    // The first and the last `Half` bytes, 4 or 8, of a text of Half to 2 * Half bytes side by side
    // in the first bytes of a block.
    template <std::size_t Half>
    static ByteBlock loadEnds(const char* p, std::size_t size)
    {
        if constexpr (Half == 8) {
            return ByteBlock(_mm_unpacklo_epi64(
                _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + size - 8))));
        } else {
            std::int32_t first = 0;
            std::int32_t last = 0;
            std::memcpy(&first, p, 4);
            std::memcpy(&last, p + size - 4, 4);
            return ByteBlock(_mm_unpacklo_epi32(_mm_cvtsi32_si128(first), _mm_cvtsi32_si128(last)));
        }
    }

    // First, middle and last byte of a text of one to three bytes: all of them.
    static ByteBlock loadUpTo3(const char* p, std::size_t size)
    {
        return ByteBlock(_mm_cvtsi32_si128(static_cast<unsigned char>(p[0]) |
                                           static_cast<unsigned char>(p[size / 2]) << 8 |
                                           static_cast<unsigned char>(p[size - 1]) << 16));
    }

    ByteBlock equals(ByteBlock other) const
    {
        return ByteBlock(_mm_cmpeq_epi8(m_bits, other.m_bits));
    }
    ByteBlock equals(char c) const { return equals(filled(c)); }

    // Between the two, as unsigned bytes.
    ByteBlock isInRange(unsigned first, unsigned last) const
    {
        // Moved so that the range ends at the greatest signed byte: one comparison decides.
        const __m128i moved = _mm_add_epi8(m_bits, _mm_set1_epi8(static_cast<char>(0x7F - last)));
        const char before = static_cast<char>(0x7E - (last - first));
        return ByteBlock(_mm_cmpgt_epi8(moved, _mm_set1_epi8(before)));
    }

    ByteBlock without(ByteBlock other) const
    {
        return ByteBlock(_mm_andnot_si128(other.m_bits, m_bits));
    }
    friend ByteBlock operator&(ByteBlock a, ByteBlock b)
    {
        return ByteBlock(_mm_and_si128(a.m_bits, b.m_bits));
    }
    friend ByteBlock operator|(ByteBlock a, ByteBlock b)
    {
        return ByteBlock(_mm_or_si128(a.m_bits, b.m_bits));
    }
    friend ByteBlock operator^(ByteBlock a, ByteBlock b)
    {
        return ByteBlock(_mm_xor_si128(a.m_bits, b.m_bits));
    }
    // Byte by byte.
    friend ByteBlock operator+(ByteBlock a, ByteBlock b)
    {
        return ByteBlock(_mm_add_epi8(a.m_bits, b.m_bits));
    }

    // The highest bit of each byte.
    Mask mask() const { return static_cast<Mask>(_mm_movemask_epi8(m_bits)); }
    bool isZero() const { return equals(zero()).mask() == All; }

    // For what this vocabulary lacks.
    __m128i bits() const { return m_bits; }

private:
    __m128i m_bits;
};

}
