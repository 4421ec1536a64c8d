#include "text/character_set.h"

#include "text/code_page.h"

#include <algorithm>

namespace Tools {

CharacterSet::CharacterSet(const CodePage& page, std::string_view characters)
{
    const char* const end = characters.data() + characters.size();
    for (const char* p = characters.data(); p < end;) {
        const std::size_t bytes = page.length(p, end);
        if (bytes == 1)
            m_singles.add(*p);
        else
            m_pairs.push_back(CodePage::pairAt(p));
        p += bytes;
    }
    std::sort(m_pairs.begin(), m_pairs.end());
}

bool CharacterSet::contains(const char* p, std::size_t bytes) const
{
    return bytes == 1 ? m_singles.contains(*p)
                      : std::binary_search(m_pairs.begin(), m_pairs.end(), CodePage::pairAt(p));
}

}
