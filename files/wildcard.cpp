#include "files/wildcard.h"

#include "text/code_page.h"

#include <algorithm>

namespace Tools {

namespace {

constexpr std::size_t WordBits = 64;
// No system has longer names, so a pattern of more characters matches nothing.
constexpr std::size_t LongestName = 319;
constexpr std::size_t MostWords = (LongestName + WordBits) / WordBits;

// The character at the front of the text, which loses it: a byte, or both bytes of a double-byte
// one with the first above.
std::uint16_t takeCharacter(const CodePage& page, std::string_view& text)
{
    const std::size_t length = page.length(text.data(), text.data() + text.size());
    const auto first = static_cast<unsigned char>(text.front());
    const auto last = static_cast<unsigned char>(text[length - 1]);
    text.remove_prefix(length);
    return length == 1 ? first : static_cast<std::uint16_t>(first << 8U | last);
}

std::uint16_t lowered(const CodePage& page, std::uint16_t character)
{
    return character <= 0xFF ? page.lower().singles[character] : page.lower().pairs[character];
}

std::size_t countCharacters(const CodePage& page, std::string_view pattern)
{
    std::size_t count = 0;
    while (!pattern.empty())
        count += takeCharacter(page, pattern) == '*' ? 0 : 1;
    return count;
}

}

Wildcard::Wildcard(std::string_view pattern)
{
    // As every name does, a pattern ends at its first NUL.
    pattern = pattern.substr(0, pattern.find('\0'));
    if (pattern == "*.*")
        pattern = "*";
    m_length = countCharacters(CodePage::get(), pattern);
    m_words = std::min(m_length, LongestName) / WordBits + 1;
    m_stays.resize(m_words);
    m_rows.resize(m_words);
    if (m_length <= LongestName)
        setSteps(pattern);
}

// Compiles the pattern: a row gets bit i when its character may follow the first i.
void Wildcard::setSteps(std::string_view pattern)
{
    const CodePage& page = CodePage::get();
    std::size_t index = 0;
    while (!pattern.empty()) {
        const std::uint16_t character = takeCharacter(page, pattern);
        const std::size_t word = index / WordBits;
        const Word bit = Word{1} << index % WordBits;
        if (character == '*') {
            m_stays[word] |= bit;
            continue;
        }
        const Row row = character == '?' ? Row{0} : rowOf(lowered(page, character));
        m_rows[row * m_words + word] |= bit;
        ++index;
    }
    // What "?" takes, row 0, every other character takes, too.
    for (std::size_t i = m_words; i < m_rows.size(); ++i)
        m_rows[i] |= m_rows[i % m_words];
    shareRowsWithoutCase();
}

Wildcard::Row Wildcard::rowOf(std::uint16_t character)
{
    const Row found = findRow(character);
    if (found != 0)
        return found;
    const auto row = static_cast<Row>(m_rows.size() / m_words);
    m_rows.resize(m_rows.size() + m_words);
    if (character <= 0xFF)
        m_rowOfByte[character] = row;
    else
        m_rowOfPair.insert(
            std::upper_bound(m_rowOfPair.begin(), m_rowOfPair.end(), std::pair(character, row)),
            {character, row});
    return row;
}

Wildcard::Row Wildcard::findRow(std::uint16_t character) const
{
    if (character <= 0xFF)
        return m_rowOfByte[character];
    const auto found =
        std::lower_bound(m_rowOfPair.begin(), m_rowOfPair.end(), std::pair(character, Row{0}));
    return found == m_rowOfPair.end() || found->first != character ? Row{0} : found->second;
}

// Only lowered bytes have rows of their own so far; capitals share those.
void Wildcard::shareRowsWithoutCase()
{
    const CodePage::ByteMap& lower = CodePage::get().lower().singles;
    for (std::size_t byte = 0; byte < m_rowOfByte.size(); ++byte)
        m_rowOfByte[byte] = m_rowOfByte[lower[byte]];
}

template <class Step>
void Wildcard::forEachRow(std::string_view name, Step step) const
{
    const CodePage& page = CodePage::get();
    if (!page.hasLeadBytes()) {
        for (const char c : name)
            step(m_rowOfByte[static_cast<unsigned char>(c)]);
        return;
    }
    while (!name.empty())
        step(findRow(lowered(page, takeCharacter(page, name))));
}

bool Wildcard::matches(std::string_view name) const
{
    if (m_length > LongestName)
        return false;
    return m_words == 1 ? matchesShort(name) : matchesLong(name);
}

bool Wildcard::matchesShort(std::string_view name) const
{
    const Word* const rows = m_rows.data();
    const Word stays = m_stays[0];
    // Shift-And in one register: the bits that may step move up, those before a "*" also stay.
    Word state = 1;
    forEachRow(name, [&](Row row) { state = (state & rows[row]) << 1U | (state & stays); });
    return (state >> m_length & 1U) != 0;
}

bool Wildcard::matchesLong(std::string_view name) const
{
    // The same over several words; the highest bit of a word moves into the next one.
    std::array<Word, MostWords> state = {1};
    forEachRow(name, [&](Row row) {
        Word carry = 0;
        for (std::size_t i = 0; i < m_words; ++i) {
            const Word steps = state[i] & m_rows[row * m_words + i];
            state[i] = steps << 1U | carry | (state[i] & m_stays[i]);
            carry = steps >> (WordBits - 1);
        }
    });
    return (state[m_length / WordBits] >> m_length % WordBits & 1U) != 0;
}

bool Wildcard::isIn(std::string_view text)
{
    return text.find_first_of("*?") != std::string_view::npos;
}

}
