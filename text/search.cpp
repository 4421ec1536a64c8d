#include "text/search.h"

#include "text/code_page.h"

#include <type_traits>

namespace Tools {

using Comparing::Exact;
using Comparing::Lowered;
using Comparing::Nul;

// Folding lowers letters by 0x20; a byte that no letter is folded to is sought alone.
template <class Folding>
ByteFinder<Folding>::ByteFinder(char sought)
{
    const unsigned char byte = Folding::byte(sought);
    const auto upper = static_cast<char>(byte - 0x20);
    m_byte = ByteBlock::filled(static_cast<char>(byte));
    m_upper = Folding::byte(upper) == byte ? ByteBlock::filled(upper) : m_byte;
}

template <class Folding>
inline ByteBlock ByteFinder<Folding>::find(ByteBlock block) const
{
    const ByteBlock found = block.equals(m_byte);
    if constexpr (std::is_same_v<Folding, Exact>)
        return found;
    else
        return found | block.equals(m_upper);
}

// Pages without double-byte characters need no test of where a character begins.
template <class Folding>
Search<Folding>::Search(std::string_view haystack, std::string_view needle, Comparing::By by)
    : m_haystack(haystack),
      m_needle(needle),
      m_first(needle.front()),
      m_last(needle.back()),
      m_positions(haystack.size() < needle.size() ? 0 : haystack.size() - needle.size() + 1)
{
    if (by == Comparing::By::Character) {
        const CodePage& page = CodePage::get();
        if (page.hasLeadBytes())
            m_isLead = page.leadBytes().data();
    }
}

// Comparing candidates whole is quick on any ordinary text. Text made to defeat it (long
// repetitions) is left to the method that never looks back.
template <class Folding>
std::size_t Search<Folding>::next(std::size_t from)
{
    if (!m_failures.empty())
        return nextWithoutCandidates(from);
    while (m_candidates != 0 || findCandidates(from)) {
        const std::size_t position =
            m_block + static_cast<std::size_t>(std::countr_zero(m_candidates));
        m_candidates &= m_candidates - 1;
        if (position < from)
            continue;
        if (isOccurrence(position))
            return position;
        if (isHopeless(position))
            return nextWithoutCandidates(position + 1);
    }
    return None;
}

// Looks at 32 positions at once; the last ones are looked at together with some before them.
template <class Folding>
bool Search<Folding>::findCandidates(std::size_t from)
{
    std::size_t position = m_position < from ? from : m_position;
    while (position < m_positions) {
        m_block = position;
        if (m_positions - position >= 32) {
            m_candidates = candidatesAt(position) | candidatesAt(position + 16) << 16;
            position += 32;
        } else if (m_positions - position >= 16) {
            m_candidates = candidatesAt(position);
            position += 16;
        } else if (m_positions >= 16) {
            m_block = m_positions - 16;
            m_candidates = candidatesAt(m_block) >> (position - m_block) << (position - m_block);
            position = m_positions;
        } else {
            m_candidates = candidatesOneByOne(position);
            position = m_positions;
        }
        if (m_candidates != 0) {
            m_position = position;
            return true;
        }
    }
    m_position = position;
    return false;
}

template <class Folding>
std::uint32_t Search<Folding>::candidatesAt(std::size_t position) const
{
    const char* const p = m_haystack.data() + position;
    const ByteBlock last = m_last.find(ByteBlock::load(p + m_needle.size() - 1));
    return (m_first.find(ByteBlock::load(p)) & last).mask();
}

// For the few positions from `position` to the end.
template <class Folding>
std::uint32_t Search<Folding>::candidatesOneByOne(std::size_t position) const
{
    const unsigned char first = Folding::byte(m_needle.front());
    const unsigned char last = Folding::byte(m_needle.back());
    const std::size_t tail = m_needle.size() - 1;
    std::uint32_t candidates = 0;
    for (std::size_t i = position; i < m_positions; ++i) {
        if (Folding::byte(m_haystack[i]) == first && Folding::byte(m_haystack[i + tail]) == last)
            candidates |= std::uint32_t{1} << (i - position);
    }
    return candidates;
}

// Asked for candidates only: of these the first and the last byte fit.
template <class Folding>
bool Search<Folding>::isOccurrence(std::size_t position)
{
    const std::size_t size = m_needle.size();
    if (size > 2) {
        const std::size_t same = Comparing::firstDifference<Folding, Nul::Ordinary>(
            m_haystack.data() + position, m_needle.data(), size);
        m_compared += same;
        if (same != size)
            return false;
    }
    return m_isLead == nullptr || isCharacter(position);
}

// How much may be compared in vain for each byte that the search has moved on.
template <class Folding>
bool Search<Folding>::isHopeless(std::size_t passed) const
{
    constexpr std::size_t ComparedPerByte = 4;
    return m_compared > ComparedPerByte * passed + m_needle.size() + 64;
}

// Walks from character to character, never back: asked for ascending positions only.
template <class Folding>
bool Search<Folding>::isCharacter(std::size_t position)
{
    while (m_character < position) {
        const bool isPair =
            m_isLead[Folding::byte(m_haystack[m_character])] && m_haystack[m_character + 1] != '\0';
        m_character += isPair ? 2 : 1;
    }
    return m_character == position;
}

template <class Folding>
std::size_t Search<Folding>::nextWithoutCandidates(std::size_t from)
{
    std::size_t found = None;
    visitAll(from, [&found](std::size_t occurrence) {
        found = occurrence;
        return false;
    });
    return found;
}

// From the back as long as that is cheap. Where characters begin is only known from the front, so
// that double-byte pages, and hopeless texts, take the last one of all occurrences.
template <class Folding>
std::size_t Search<Folding>::last()
{
    std::size_t found = None;
    if (m_isLead == nullptr) {
        const unsigned char first = Folding::byte(m_needle.front());
        const unsigned char last = Folding::byte(m_needle.back());
        const std::size_t tail = m_needle.size() - 1;
        std::size_t position = m_positions;
        while (position > 0 && !isHopeless(m_positions - position)) {
            --position;
            if (Folding::byte(m_haystack[position]) == first &&
                Folding::byte(m_haystack[position + tail]) == last && isOccurrence(position))
                return position;
        }
        if (position == 0)
            return None;
    }
    visitAll(0, [&found](std::size_t occurrence) {
        found = occurrence;
        return true;
    });
    return found;
}

// The automaton of Knuth, Morris and Pratt: `matched` is its state, the length of the longest
// beginning of the needle that ends at the current byte. Calls visitor(position) for every
// occurrence, overlapping ones too, until it returns false.
template <class Folding>
template <class Visitor>
void Search<Folding>::visitAll(std::size_t from, Visitor visitor)
{
    prepareFailures();
    std::size_t matched = 0;
    for (std::size_t i = from; i < m_haystack.size(); ++i) {
        const unsigned char byte = Folding::byte(m_haystack[i]);
        while (matched != 0 && Folding::byte(m_needle[matched]) != byte)
            matched = m_failures[matched - 1];
        if (Folding::byte(m_needle[matched]) == byte)
            ++matched;
        if (matched < m_needle.size())
            continue;
        const std::size_t position = i + 1 - matched;
        if ((m_isLead == nullptr || isCharacter(position)) && !visitor(position))
            return;
        matched = m_failures[matched - 1];
    }
}

// The same automaton, run over the needle itself.
template <class Folding>
void Search<Folding>::prepareFailures()
{
    if (!m_failures.empty())
        return;
    m_failures.assign(m_needle.size(), 0);
    std::size_t matched = 0;
    for (std::size_t i = 1; i < m_needle.size(); ++i) {
        const unsigned char byte = Folding::byte(m_needle[i]);
        while (matched != 0 && Folding::byte(m_needle[matched]) != byte)
            matched = m_failures[matched - 1];
        if (Folding::byte(m_needle[matched]) == byte)
            ++matched;
        m_failures[i] = matched;
    }
}

template class Search<Exact>;
template class Search<Lowered>;

}
