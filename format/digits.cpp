#include "format/digits.h"

namespace Tools {

void ShortText::assignLong(std::string& text)
{
    m_words[m_fullWords] = m_low;
    m_words[m_fullWords + 1] = m_high;
    const int size = 8 * m_fullWords + m_count;
    text.assign(reinterpret_cast<const char*>(m_words), static_cast<std::size_t>(size));
}

}
