#include "text/conversion.h"

#include <mdtools/encoding.h>

namespace Tools {

const char* LossyConversionError::what() const noexcept
{
    return "Unicode string _cannot_ be losslessly converted To MBCS";
}

WriteAsStringA::WriteAsStringA(const std::string& text) : m_text(text) {}

// There and back: what the page cannot hold, or holds twice, comes back as something else.
std::string WriteAsStringA::convert() const
{
    std::string text = toNarrow(toWide(m_text));
    if (text != m_text)
        throw LossyConversionError();
    return text;
}

}
