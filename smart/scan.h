#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace Tools::Smart {

// The classes of characters that the lexer tells apart.
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

// A bit for each of the 16 characters at `p` that is not a blank.
inline std::uint32_t nonBlanks(const char* p)
{
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i blanks = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(text, _mm_set1_epi8(' ')),
                                                     _mm_cmpeq_epi8(text, _mm_set1_epi8('\t'))),
                                        _mm_or_si128(_mm_cmpeq_epi8(text, _mm_set1_epi8('\n')),
                                                     _mm_cmpeq_epi8(text, _mm_set1_epi8('\r'))));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(blanks)) ^ 0xFFFFU;
}

// Each of these returns the first character of its kind in [p, end), or end.

inline const char* findNonBlank(const char* p, const char* end)
{
    for (; end - p >= 16; p += 16) {
        const std::uint32_t found = nonBlanks(p);
        if (found != 0)
            return p + std::countr_zero(found);
    }
    while (p != end && is(*p, Blank))
        ++p;
    return p;
}

// As findNonBlank, when probably `expected` blanks come first; sets it to their number. Confirming
// a guess lets the processor go on with what follows, while counting would make it wait. 32
// characters must be readable.
inline const char* skipBlanks(const char* p, const char* end, std::uint32_t& expected)
{
    std::uint64_t found = nonBlanks(p);
    if (expected >= 16)
        found |= std::uint64_t{nonBlanks(p + 16)} << 16;
    const std::uint64_t wanted = std::uint64_t{1} << expected;
    if ((found & (2 * wanted - 1)) == wanted)
        return p + expected;
    const char* const next = findNonBlank(p, end);
    expected = next - p < 32 ? static_cast<std::uint32_t>(next - p) : 0;
    return next;
}

inline const char* findQuoteOrBackslash(const char* p, const char* end)
{
    for (; end - p >= 16; p += 16) {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i found = _mm_or_si128(_mm_cmpeq_epi8(text, _mm_set1_epi8('"')),
                                           _mm_cmpeq_epi8(text, _mm_set1_epi8('\\')));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(found));
        if (mask != 0)
            return p + std::countr_zero(mask);
    }
    while (p != end && *p != '"' && *p != '\\')
        ++p;
    return p;
}

// True if the text at `p` begins with the first `size` of the `start`'s 16 bytes. 16 bytes must be
// readable.
inline bool startsWith(const char* p, const char* start, std::uint32_t size)
{
    const __m128i equal = _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)),
                                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(start)));
    const std::uint32_t wanted = (1U << size) - 1;
    return (static_cast<std::uint32_t>(_mm_movemask_epi8(equal)) & wanted) == wanted;
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
