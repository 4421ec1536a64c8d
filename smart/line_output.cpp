#include "smart/line_output.h"

#include <cmath>
#include <locale>
#include <sstream>
#include <typeinfo>

namespace Tools::Smart {

namespace {

// How much waits for a string stream.
constexpr std::size_t PageSize = 1 << 16;

constexpr int MaxPrecision = 40;
// The largest number in fixed style.
constexpr std::size_t MaxLength = 320 + MaxPrecision;

bool isStringStream(const std::ostream& stream)
{
    const std::streambuf* buffer = stream.rdbuf();
    return buffer != nullptr && typeid(*buffer) == typeid(std::stringbuf);
}

}

LineOutput::LineOutput(std::ostream& stream)
    : m_stream(stream), m_isPlain(readSettings()), m_isString(m_isPlain && isStringStream(stream))
{}

// True if the stream's output is that of std::to_chars.
bool LineOutput::readSettings()
{
    const std::ios_base::fmtflags flags = m_stream.flags();
    const std::ios_base::fmtflags harmless = std::ios_base::dec | std::ios_base::floatfield |
                                             std::ios_base::adjustfield | std::ios_base::skipws |
                                             std::ios_base::boolalpha;
    const std::ios_base::fmtflags style = flags & std::ios_base::floatfield;
    if (style == std::ios_base::fixed)
        m_format = std::chars_format::fixed;
    else if (style == std::ios_base::scientific)
        m_format = std::chars_format::scientific;
    else if (style != std::ios_base::fmtflags())
        return false;
    if (m_stream.precision() < 0 || m_stream.precision() > MaxPrecision)
        return false;
    m_precision = static_cast<int>(m_stream.precision());
    return (flags & ~harmless) == std::ios_base::fmtflags() &&
           (flags & std::ios_base::dec) != std::ios_base::fmtflags() && m_stream.width() == 0 &&
           m_stream.getloc() == std::locale::classic();
}

void LineOutput::write(std::string_view text)
{
    if (m_isPlain)
        m_text.append(text);
    else
        m_stream << text;
}

void LineOutput::write(int value)
{
    if (!m_isPlain) {
        m_stream << value;
        return;
    }
    char digits[16];
    m_text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

void LineOutput::write(double value)
{
    if (!m_isPlain || !std::isfinite(value)) {
        finish();
        m_stream << value;
        return;
    }
    char digits[MaxLength];
    m_text.append(digits,
                  std::to_chars(digits, digits + sizeof digits, value, m_format, m_precision).ptr);
}

void LineOutput::endLine()
{
    if (!m_isPlain) {
        m_stream << std::endl;
        return;
    }
    m_text += '\n';
    if (m_isString && m_text.size() < PageSize)
        return;
    finish();
    m_stream.flush();
}

void LineOutput::finish()
{
    if (m_text.empty())
        return;
    m_stream.write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
    m_text.clear();
}

}
