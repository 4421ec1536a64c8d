#include "text/character_set.h"

#include "text/code_page.h"

#include <algorithm>

namespace Tools {

namespace {

std::uint16_t pairAt(const char* p)
{
    return static_cast<std::uint16_t>(static_cast<unsigned char>(p[0]) << 8 |
                                      static_cast<unsigned char>(p[1]));
}

}

CharacterSet::CharacterSet(const CodePage& page, std::string_view characters)
{
    const char* const end = characters.data() + characters.size();
    for (const char* p = characters.data(); p < end;) {
        const std::size_t bytes = page.length(p, end);
        if (bytes == 1)
            m_singles.add(*p);
        else
            m_pairs.push_back(pairAt(p));
        p += bytes;
    }
    std::sort(m_pairs.begin(), m_pairs.end());
}

bool CharacterSet::contains(const char* p, std::size_t bytes) const
{
    return bytes == 1 ? m_singles.contains(*p)
                      : std::binary_search(m_pairs.begin(), m_pairs.end(), pairAt(p));
}

}
