#pragma once

#include "text/compare.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace Tools {

// Finds the occurrences of one text in another in linear time, whatever the texts. Both must stay
// as they are while the object lives. NUL bytes are ordinary here. `Folding` is Comparing::Exact or
// Comparing::Lowered.
template <class Folding>
class Search {
public:
    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    // By characters an occurrence must begin at a character of the text (in lowered text those are
    // told by the lowered bytes); what follows is compared as bytes.
    enum class By { Byte, Character };

    Search(std::string_view text, std::string_view sought, By by);

    // The first occurrence at or behind `from`, which never decreases from call to call.
    std::size_t next(std::size_t from);

    // The last occurrence. Not to be mixed with `next`.
    std::size_t last();

private:
    std::size_t findInBlocks(std::size_t& position, std::size_t end);
    bool isOccurrence(std::size_t position);
    bool isCharacter(std::size_t position);
    bool isWorthWhile(std::size_t passed) const;
    template <class Visitor>
    void visitAll(std::size_t from, Visitor visitor);
    void prepareFailures();

    std::string_view m_text;
    std::string_view m_sought;
    // Null when every byte is a character.
    const bool* m_isLead = nullptr;
    // A character of the text begins here; it moves forward with the search.
    std::size_t m_character = 0;
    // Bytes compared since the search was begun or taken up.
    std::size_t m_compared = 0;
    // For each length of a matched beginning of the sought text, the length of the longest shorter
    // beginning that ends it.
    std::vector<std::size_t> m_failures;
};

extern template class Search<Comparing::Exact>;
extern template class Search<Comparing::Lowered>;

}
