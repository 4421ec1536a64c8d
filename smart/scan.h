#pragma once

#include <array>
#include <bit>
#include <cstddef>
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

// Each of these returns the first character of its kind in [p, end), or end.

inline const char* findNonBlank(const char* p, const char* end)
{
    for (; end - p >= 16; p += 16) {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i blanks =
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(text, _mm_set1_epi8(' ')),
                                      _mm_cmpeq_epi8(text, _mm_set1_epi8('\t'))),
                         _mm_or_si128(_mm_cmpeq_epi8(text, _mm_set1_epi8('\n')),
                                      _mm_cmpeq_epi8(text, _mm_set1_epi8('\r'))));
        const unsigned others = static_cast<unsigned>(_mm_movemask_epi8(blanks)) ^ 0xFFFFU;
        if (others != 0)
            return p + std::countr_zero(others);
    }
    while (p != end && is(*p, Blank))
        ++p;
    return p;
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
