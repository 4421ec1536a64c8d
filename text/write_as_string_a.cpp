#include "text/conversion.h"

#include <mdtools/encoding.h>

namespace Tools {

const char* LossyConversionError::what() const noexcept
{
    return "Unicode string _cannot_ be losslessly converted To MBCS";
}

WriteAsStringA::WriteAsStringA(const std::string& text) : m_text(text) {}

std::string WriteAsStringA::convert() const
{
    std::string text = toNarrow(toWide(m_text));
    if (text != m_text)
        throw LossyConversionError();
    return text;
}

}
