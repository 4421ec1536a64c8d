#include "trace/formatted_text.h"

#include "trace/format_widths.h"

#include <cstdio>

namespace Tools {

// The length is known before memory is asked for.
FormattedText::FormattedText(const char* format, va_list args, std::size_t most)
{
    if (!format || !areWidthsWithin(most, format, args))
        return;
    va_list again;
    va_copy(again, args);
    int length = std::vsnprintf(m_short.data(), m_short.size(), format, args);
    const std::size_t size = length < 0 ? 0 : static_cast<std::size_t>(length);
    const char* text = m_short.data();
    if (size >= m_short.size() && size <= most) {
        m_long.reset(new char[size + 1]);
        length = std::vsnprintf(m_long.get(), size + 1, format, again);
        text = m_long.get();
    }
    va_end(again);
    if (length < 0 || size > most)
        return;
    m_text = text;
    m_size = size;
}

}
