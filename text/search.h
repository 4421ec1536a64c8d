#pragma once

#include "text/compare.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Tools {

// A byte and the other one that is folded to the same, each a block of them.
template <class Folding>
class ByteFinder {
public:
    explicit ByteFinder(char sought);

    // All bits of each byte of the block that fits.
    ByteBlock find(ByteBlock block) const;

private:
    ByteBlock m_byte;
    ByteBlock m_upper;
};

// Finds the occurrences of one text, the needle, in another, the haystack. A filter looks for the
// needle's first and last byte in whole blocks and compares what passes; when it has compared too
// much in vain, the automaton of Knuth, Morris and Pratt takes over, so that the time is linear
// whatever the texts. Both must stay as they are while the object lives. NUL bytes are ordinary
// here. `Folding` is Comparing::Exact or Comparing::Lowered. By characters an occurrence must begin
// at a character of the haystack (in lowered text the lowered bytes decide where those begin); what
// follows is compared as bytes.
template <class Folding>
class Search {
public:
    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    // `needle` is not empty.
    Search(std::string_view haystack, std::string_view needle, Comparing::By by);

    // The first occurrence from `from` on, which never decreases from call to call.
    std::size_t next(std::size_t from);

    // The last occurrence. Not to be mixed with `next`.
    std::size_t last();

private:
    bool findCandidates(std::size_t from);
    std::uint32_t candidatesAt(std::size_t position) const;
    std::uint32_t candidatesOneByOne(std::size_t position) const;
    bool isOccurrence(std::size_t position);
    bool isCharacter(std::size_t position);
    bool isHopeless(std::size_t passed) const;
    std::size_t nextWithoutCandidates(std::size_t from);
    template <class Visitor>
    void visitAll(std::size_t from, Visitor visitor);
    void prepareFailures();

    std::string_view m_haystack;
    std::string_view m_needle;
    ByteFinder<Folding> m_first;
    ByteFinder<Folding> m_last;
    // The number of positions where the needle could begin.
    std::size_t m_positions;
    // Positions where the first and last byte fit: one bit for each from m_block on. The next ones
    // to be looked at begin at m_position.
    std::uint32_t m_candidates = 0;
    std::size_t m_block = 0;
    std::size_t m_position = 0;
    // Null when every byte is a character.
    const bool* m_isLead = nullptr;
    // A character of the haystack begins here; it moves forward with the search.
    std::size_t m_character = 0;
    // Bytes of candidates that have been compared.
    std::size_t m_compared = 0;
    // The failure function: for each length of a matched beginning of the needle, the length of the
    // longest shorter beginning that ends it. Made when candidates turn out to be too many.
    std::vector<std::size_t> m_failures;
};

extern template class Search<Comparing::Exact>;
extern template class Search<Comparing::Lowered>;

}
