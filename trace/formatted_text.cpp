#include "trace/formatted_text.h"

#include <cstdio>

namespace Tools {

FormattedText::FormattedText(const char* format, va_list args)
{
    if (!format)
        return;
    va_list again;
    va_copy(again, args);
    int length = std::vsnprintf(m_short.data(), m_short.size(), format, args);
    m_text = m_short.data();
    m_size = length < 0 ? 0 : static_cast<std::size_t>(length);
    if (m_size >= m_short.size()) {
        m_long.reset(new char[m_size + 1]);
        length = std::vsnprintf(m_long.get(), m_size + 1, format, again);
        m_text = m_long.get();
    }
    va_end(again);
    if (length < 0)
        m_text = nullptr;
}

}
