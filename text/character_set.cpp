#include "text/character_set.h"

#include <algorithm>

namespace Tools {

CharacterSet::CharacterSet(const CodePage& page, std::string_view characters)
{
    for (const Character& character : page.characters(characters)) {
        if (character.bytes == 1)
            m_singles.add(*character.p);
        else
            m_pairs.push_back(CodePage::pairAt(character.p));
    }
    std::sort(m_pairs.begin(), m_pairs.end());
}

bool CharacterSet::containsPair(std::uint16_t pair) const
{
    return std::binary_search(m_pairs.begin(), m_pairs.end(), pair);
}

}
