#include "files/wildcard.h"

#include <algorithm>

namespace Tools {

namespace {

constexpr std::size_t WordBits = 64;
// No system has longer names, so a pattern of more characters matches nothing.
constexpr std::size_t LongestName = 319;
constexpr std::size_t MostWords = (LongestName + WordBits) / WordBits;

}

Wildcard::Wildcard(std::string_view pattern)
{
    if (pattern == "*.*")
        pattern = "*";
    m_length =
        pattern.size() - static_cast<std::size_t>(std::count(pattern.begin(), pattern.end(), '*'));
    m_words = std::min(m_length, LongestName) / WordBits + 1;
    m_stays.resize(m_words);
    m_rows.resize(m_words);
    if (m_length > LongestName)
        return;
    std::size_t index = 0;
    for (const char c : pattern) {
        const Word bit = Word{1} << index % WordBits;
        if (c == '*') {
            m_stays[index / WordBits] |= bit;
            continue;
        }
        const std::size_t row = c == '?' ? 0 : rowOf(static_cast<unsigned char>(c));
        m_rows[row * m_words + index / WordBits] |= bit;
        ++index;
    }
    for (std::size_t i = m_words; i < m_rows.size(); ++i)
        m_rows[i] |= m_rows[i % m_words];
}

std::size_t Wildcard::rowOf(std::size_t character)
{
    const std::size_t lowered = character >= 'A' && character <= 'Z' ? character + 32 : character;
    if (m_rowOfByte[lowered] == 0) {
        const std::size_t row = m_rows.size() / m_words;
        m_rows.resize(m_rows.size() + m_words);
        m_rowOfByte[lowered] = static_cast<std::uint16_t>(row);
        if (lowered >= 'a' && lowered <= 'z')
            m_rowOfByte[lowered - 32] = static_cast<std::uint16_t>(row);
    }
    return m_rowOfByte[lowered];
}

bool Wildcard::matches(std::string_view name) const
{
    if (m_length > LongestName)
        return false;
    if (m_words > 1)
        return matchesLong(name);
    const Word* const rows = m_rows.data();
    const Word stays = m_stays[0];
    Word state = 1;
    for (const char c : name)
        state = (state & rows[m_rowOfByte[static_cast<unsigned char>(c)]]) << 1U | (state & stays);
    return (state >> m_length & 1U) != 0;
}

bool Wildcard::matchesLong(std::string_view name) const
{
    std::array<Word, MostWords> state = {1};
    for (const char c : name) {
        const Word* row = &m_rows[m_rowOfByte[static_cast<unsigned char>(c)] * m_words];
        Word carry = 0;
        for (std::size_t i = 0; i < m_words; ++i) {
            const Word steps = state[i] & row[i];
            state[i] = steps << 1U | carry | (state[i] & m_stays[i]);
            carry = steps >> (WordBits - 1);
        }
    }
    return (state[m_length / WordBits] >> m_length % WordBits & 1U) != 0;
}

bool Wildcard::isIn(std::string_view text)
{
    return text.find_first_of("*?") != std::string_view::npos;
}

}
