#pragma once

#include "format/powers_of_ten.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>
#include <string>

namespace Tools {

// Up to eight characters packed into a word (SIMD within a register), the first one in the lowest
// byte: what the processor writes to memory in this order. The bytes after them are zero.
struct PackedText {
    std::uint64_t bytes;
    int count;
};

constexpr std::uint64_t lowBytes(int count)
{
    return (UINT64_C(1) << (8 * count)) - 1;
}

constexpr PackedText character(char c)
{
    return {static_cast<unsigned char>(c), 1};
}

// Up to eight characters from less than eight and some more.
constexpr PackedText join(PackedText first, PackedText second)
{
    return {first.bytes | second.bytes << (8 * first.count), first.count + second.count};
}

constexpr std::uint64_t Zeros = UINT64_C(0x3030303030303030);

// The digits of a number below 10^8 as the values 0 to 9 of eight bytes. All eight come out of
// three multiplications.
constexpr std::uint64_t splitDigits(std::uint64_t number)
{
    const std::uint64_t fours = (number / 10000) | ((number % 10000) << 32);
    const std::uint64_t hundreds = ((fours * 10486) >> 20) & UINT64_C(0x0000007F0000007F);
    const std::uint64_t pairs = hundreds | ((fours - hundreds * 100) << 16);
    const std::uint64_t tens = ((pairs * 103) >> 10) & UINT64_C(0x000F000F000F000F);
    return tens | ((pairs - tens * 10) << 8);
}

struct TwoDigits {
    std::uint64_t first;
    std::uint64_t second;
};

// The same for two numbers at once.
inline TwoDigits splitDigits(std::uint64_t first, std::uint64_t second)
{
    const auto constant = [](int number) { return _mm_set1_epi32(number); };
    const __m128i numbers =
        _mm_set_epi64x(static_cast<std::int64_t>(second), static_cast<std::int64_t>(first));
    const __m128i high =
        _mm_srli_epi64(_mm_mul_epu32(numbers, constant(static_cast<int>(0xD1B71759))), 45);
    const __m128i low = _mm_sub_epi32(numbers, _mm_mul_epu32(high, constant(10000)));
    const __m128i fours = _mm_or_si128(high, _mm_slli_epi64(low, 32));
    const __m128i hundreds = _mm_srli_epi16(_mm_mulhi_epu16(fours, constant(10486)), 4);
    const __m128i units = _mm_sub_epi16(fours, _mm_mullo_epi16(hundreds, constant(100)));
    const __m128i pairs = _mm_or_si128(hundreds, _mm_slli_epi32(units, 16));
    const __m128i tens = _mm_mulhi_epu16(pairs, _mm_set1_epi16(6554));
    const __m128i ones = _mm_sub_epi16(pairs, _mm_mullo_epi16(tens, _mm_set1_epi16(10)));
    const __m128i digits = _mm_or_si128(tens, _mm_slli_epi16(ones, 8));
    return {static_cast<std::uint64_t>(_mm_cvtsi128_si64(digits)),
            static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(digits, digits)))};
}

// From split digits as characters: without leading zeros, but with the last digit of a zero.
constexpr PackedText withoutLeadingZeros(std::uint64_t digits)
{
    const int zeros = std::countr_zero(digits | (UINT64_C(1) << 56)) / 8;
    return {(digits | Zeros) >> (8 * zeros), 8 - zeros};
}

// From split digits as characters: the first `count`, 1 to 8, of which the rest are zeros.
constexpr PackedText leadingDigits(std::uint64_t digits, int count)
{
    return {digits | (Zeros >> (64 - 8 * count)), count};
}

// What brings a number of `count` digits, 1 to 8, to eight digits.
constexpr std::uint64_t factorToEight(int count)
{
    return PowersOfTen::integer(8 - count);
}

constexpr PackedText wholeDigits(std::uint64_t number)
{
    return withoutLeadingZeros(splitDigits(number));
}

constexpr PackedText paddedDigits(std::uint64_t number, int count)
{
    return leadingDigits(splitDigits(number * factorToEight(count)), count);
}

// A text of up to 64 characters that is put together in registers. The first fifteen, which is more
// than most numbers have, never go through memory: they also fit into a string without allocation.
class ShortText {
public:
    ShortText() = default;

    // Two times up to eight characters.
    ShortText(PackedText first, PackedText second)
        : m_low(first.bytes | second.bytes << (4 * first.count) << (4 * first.count)),
          m_high(second.bytes >> (32 - 4 * first.count) >> (32 - 4 * first.count)),
          m_count(first.count + second.count)
    {}

    void append(PackedText characters)
    {
        if (m_count + characters.count > 16)
            makeRoom();
        const int shift = 8 * (m_count & 7);
        const std::uint64_t low = characters.bytes << shift;
        // In two shifts, because one by 64 bits is undefined.
        const std::uint64_t high = characters.bytes >> (56 - shift) >> 8;
        const bool isBehind = m_count >= 8;
        m_low |= isBehind ? 0 : low;
        m_high |= isBehind ? low : high;
        m_count += characters.count;
    }

    // The same for any number that has no more than `count` digits, 1 to 24.
    void appendPadded(std::uint64_t number, int count)
    {
        if (count > 8) {
            appendPadded(number / 100000000, count - 8);
            append(paddedDigits(number % 100000000, 8));
        } else {
            append(paddedDigits(number, count));
        }
    }

    void appendWhole(std::uint64_t number)
    {
        if (number >= 100000000) {
            appendWhole(number / 100000000);
            append(paddedDigits(number % 100000000, 8));
        } else {
            append(wholeDigits(number));
        }
    }

    std::string toString()
    {
        // Fifteen characters within the string itself, whatever they are.
        std::string text("               ");
        if (m_fullWords + (m_count >> 4) > 0) {
            assignLong(text);
        } else {
            std::memcpy(text.data(), &m_low, 8);
            std::memcpy(text.data() + 8, &m_high, 7);
            text.resize(static_cast<std::size_t>(m_count));
        }
        return text;
    }

private:
    void makeRoom()
    {
        m_words[m_fullWords++] = m_low;
        m_low = m_high;
        m_high = 0;
        m_count -= 8;
    }

    // Not inline, so that the usual case is.
    void assignLong(std::string& text);

    std::uint64_t m_low = 0;
    std::uint64_t m_high = 0;
    int m_count = 0;
    int m_fullWords = 0;
    std::uint64_t m_words[8];
};

}
