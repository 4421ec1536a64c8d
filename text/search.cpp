#include "text/search.h"

#include "text/code_page.h"

namespace Tools {

namespace {

using Comparing::Exact;
using Comparing::load16;
using Comparing::Lowered;
using Comparing::Nul;

// How many bytes may be compared in vain for each byte that the search moves on.
constexpr std::size_t ComparedPerByte = 4;

// A byte and the other one that is folded to the same, sixteen times each.
template <class Folding>
class ByteFinder {
public:
    explicit ByteFinder(char sought)
    {
        const unsigned char byte = Folding::byte(sought);
        const auto upper = static_cast<char>(byte - 0x20);
        m_byte = _mm_set1_epi8(static_cast<char>(byte));
        m_upper = Folding::byte(upper) == byte ? _mm_set1_epi8(upper) : m_byte;
    }

    __m128i find(__m128i block) const
    {
        const __m128i found = _mm_cmpeq_epi8(block, m_byte);
        if constexpr (std::is_same_v<Folding, Exact>)
            return found;
        else
            return _mm_or_si128(found, _mm_cmpeq_epi8(block, m_upper));
    }

private:
    __m128i m_byte;
    __m128i m_upper;
};

}

template <class Folding>
Search<Folding>::Search(std::string_view text, std::string_view sought, By by)
    : m_text(text), m_sought(sought)
{
    if (by == By::Character) {
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
    if (from > m_text.size() || m_text.size() - from < m_sought.size())
        return None;
    if (m_sought.empty())
        return from;
    const std::size_t end = m_text.size() - m_sought.size() + 1;
    std::size_t position = from;
    m_compared = 0;
    std::size_t found = findInBlocks(position, end);
    if (found != None)
        return found;
    const unsigned char first = Folding::byte(m_sought.front());
    for (; position < end && isWorthWhile(position - from); ++position) {
        if (Folding::byte(m_text[position]) == first && isOccurrence(position))
            return position;
    }
    if (position < end) {
        visitAll(position, [&found](std::size_t occurrence) {
            found = occurrence;
            return false;
        });
    }
    return found;
}

template <class Folding>
std::size_t Search<Folding>::last()
{
    if (m_sought.size() > m_text.size())
        return None;
    if (m_sought.empty())
        return m_text.size();
    if (m_isLead == nullptr) {
        const unsigned char first = Folding::byte(m_sought.front());
        const std::size_t end = m_text.size() - m_sought.size() + 1;
        m_compared = 0;
        std::size_t position = end;
        while (position > 0 && isWorthWhile(end - position)) {
            --position;
            if (Folding::byte(m_text[position]) == first && isOccurrence(position))
                return position;
        }
        if (position == 0)
            return None;
    }
    std::size_t found = None;
    visitAll(0, [&found](std::size_t occurrence) {
        found = occurrence;
        return true;
    });
    return found;
}

// Looks at sixteen places at once: where the first and the last byte fit the whole is compared.
// Moves `position` to the first place that was not looked at.
template <class Folding>
std::size_t Search<Folding>::findInBlocks(std::size_t& position, std::size_t end)
{
    const ByteFinder<Folding> first(m_sought.front());
    const ByteFinder<Folding> last(m_sought.back());
    const char* const heads = m_text.data();
    const char* const tails = heads + m_sought.size() - 1;
    const std::size_t from = position;
    while (end - position >= 16 && isWorthWhile(position - from)) {
        auto candidates = static_cast<unsigned>(_mm_movemask_epi8(_mm_and_si128(
            first.find(load16(heads + position)), last.find(load16(tails + position)))));
        for (; candidates != 0; candidates &= candidates - 1) {
            const std::size_t place =
                position + static_cast<std::size_t>(std::countr_zero(candidates));
            if (isOccurrence(place))
                return place;
        }
        position += 16;
    }
    return None;
}

template <class Folding>
bool Search<Folding>::isWorthWhile(std::size_t passed) const
{
    return m_compared <= ComparedPerByte * passed + m_sought.size() + 64;
}

template <class Folding>
bool Search<Folding>::isOccurrence(std::size_t position)
{
    const std::size_t same = Comparing::firstDifference<Folding, Nul::Ordinary>(
        m_text.data() + position, m_sought.data(), m_sought.size());
    m_compared += same;
    return same == m_sought.size() && isCharacter(position);
}

// Asked for ascending positions only.
template <class Folding>
bool Search<Folding>::isCharacter(std::size_t position)
{
    if (m_isLead == nullptr)
        return true;
    while (m_character < position) {
        const bool isPair =
            m_isLead[Folding::byte(m_text[m_character])] && m_text[m_character + 1] != '\0';
        m_character += isPair ? 2 : 1;
    }
    return m_character == position;
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
        if (isCharacter(position) && !visitor(position))
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
