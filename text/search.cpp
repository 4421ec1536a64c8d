#include "text/search.h"

#include "text/code_page.h"

#include <type_traits>

namespace Tools {

using Comparing::Exact;
using Comparing::load16;
using Comparing::Lowered;
using Comparing::Nul;

template <class Folding>
ByteFinder<Folding>::ByteFinder(char sought)
{
    const unsigned char byte = Folding::byte(sought);
    const auto upper = static_cast<char>(byte - 0x20);
    m_byte = _mm_set1_epi8(static_cast<char>(byte));
    m_upper = Folding::byte(upper) == byte ? _mm_set1_epi8(upper) : m_byte;
}

template <class Folding>
inline __m128i ByteFinder<Folding>::find(__m128i block) const
{
    const __m128i found = _mm_cmpeq_epi8(block, m_byte);
    if constexpr (std::is_same_v<Folding, Exact>)
        return found;
    else
        return _mm_or_si128(found, _mm_cmpeq_epi8(block, m_upper));
}

template <class Folding>
Search<Folding>::Search(std::string_view text, std::string_view sought, Comparing::By by)
    : m_text(text),
      m_sought(sought),
      m_first(sought.front()),
      m_last(sought.back()),
      m_places(text.size() < sought.size() ? 0 : text.size() - sought.size() + 1)
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
        const std::size_t place =
            m_block + static_cast<std::size_t>(std::countr_zero(m_candidates));
        m_candidates &= m_candidates - 1;
        if (place < from)
            continue;
        if (isOccurrence(place))
            return place;
        if (isHopeless(place))
            return nextWithoutCandidates(place + 1);
    }
    return None;
}

// Looks at 32 places at once; the last ones are looked at together with some before them.
template <class Folding>
bool Search<Folding>::findCandidates(std::size_t from)
{
    std::size_t position = m_position < from ? from : m_position;
    while (position < m_places) {
        m_block = position;
        if (m_places - position >= 32) {
            m_candidates = candidatesAt(position) | candidatesAt(position + 16) << 16;
            position += 32;
        } else if (m_places - position >= 16) {
            m_candidates = candidatesAt(position);
            position += 16;
        } else if (m_places >= 16) {
            m_block = m_places - 16;
            m_candidates = candidatesAt(m_block) >> (position - m_block) << (position - m_block);
            position = m_places;
        } else {
            m_candidates = candidatesOneByOne(position);
            position = m_places;
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
    const char* const p = m_text.data() + position;
    return static_cast<std::uint32_t>(_mm_movemask_epi8(
        _mm_and_si128(m_first.find(load16(p)), m_last.find(load16(p + m_sought.size() - 1)))));
}

// For the few places from `position` to the end.
template <class Folding>
std::uint32_t Search<Folding>::candidatesOneByOne(std::size_t position) const
{
    const unsigned char first = Folding::byte(m_sought.front());
    const unsigned char last = Folding::byte(m_sought.back());
    const std::size_t tail = m_sought.size() - 1;
    std::uint32_t candidates = 0;
    for (std::size_t i = position; i < m_places; ++i) {
        if (Folding::byte(m_text[i]) == first && Folding::byte(m_text[i + tail]) == last)
            candidates |= std::uint32_t{1} << (i - position);
    }
    return candidates;
}

// Asked for candidates only: of these the first and the last byte fit.
template <class Folding>
bool Search<Folding>::isOccurrence(std::size_t position)
{
    const std::size_t size = m_sought.size();
    if (size > 2) {
        const std::size_t same = Comparing::firstDifference<Folding, Nul::Ordinary>(
            m_text.data() + position, m_sought.data(), size);
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
    return m_compared > ComparedPerByte * passed + m_sought.size() + 64;
}

// Asked for ascending positions only.
template <class Folding>
bool Search<Folding>::isCharacter(std::size_t position)
{
    while (m_character < position) {
        const bool isPair =
            m_isLead[Folding::byte(m_text[m_character])] && m_text[m_character + 1] != '\0';
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

template <class Folding>
std::size_t Search<Folding>::last()
{
    std::size_t found = None;
    if (m_isLead == nullptr) {
        const unsigned char first = Folding::byte(m_sought.front());
        const unsigned char last = Folding::byte(m_sought.back());
        const std::size_t tail = m_sought.size() - 1;
        std::size_t place = m_places;
        while (place > 0 && !isHopeless(m_places - place)) {
            --place;
            if (Folding::byte(m_text[place]) == first &&
                Folding::byte(m_text[place + tail]) == last && isOccurrence(place))
                return place;
        }
        if (place == 0)
            return None;
    }
    visitAll(0, [&found](std::size_t occurrence) {
        found = occurrence;
        return true;
    });
    return found;
}

// The method of Knuth, Morris and Pratt: calls visitor(position) for every occurrence, overlapping
// ones too, until it returns false.
template <class Folding>
template <class Visitor>
void Search<Folding>::visitAll(std::size_t from, Visitor visitor)
{
    prepareFailures();
    std::size_t matched = 0;
    for (std::size_t i = from; i < m_text.size(); ++i) {
        const unsigned char byte = Folding::byte(m_text[i]);
        while (matched != 0 && Folding::byte(m_sought[matched]) != byte)
            matched = m_failures[matched - 1];
        if (Folding::byte(m_sought[matched]) == byte)
            ++matched;
        if (matched < m_sought.size())
            continue;
        const std::size_t position = i + 1 - matched;
        if ((m_isLead == nullptr || isCharacter(position)) && !visitor(position))
            return;
        matched = m_failures[matched - 1];
    }
}

template <class Folding>
void Search<Folding>::prepareFailures()
{
    if (!m_failures.empty())
        return;
    m_failures.assign(m_sought.size(), 0);
    std::size_t matched = 0;
    for (std::size_t i = 1; i < m_sought.size(); ++i) {
        const unsigned char byte = Folding::byte(m_sought[i]);
        while (matched != 0 && Folding::byte(m_sought[matched]) != byte)
            matched = m_failures[matched - 1];
        if (Folding::byte(m_sought[matched]) == byte)
            ++matched;
        m_failures[i] = matched;
    }
}

template class Search<Exact>;
template class Search<Lowered>;

}
