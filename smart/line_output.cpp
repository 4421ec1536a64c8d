#include "smart/line_output.h"

#include "smart/numbers.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>
#include <typeinfo>
#include <utility>

namespace Tools::Smart {

namespace {

using std::ios_base;

constexpr ios_base::fmtflags None{};

bool isStringStream(const std::ostream& stream)
{
    const std::streambuf* buffer = stream.rdbuf();
    return buffer != nullptr && typeid(*buffer) == typeid(std::stringbuf);
}

}

// Notation and precision may be chosen; all else that changes or adds to the text of a number must
// be at its default.
bool PlainOutput::serves(const std::ostream& stream)
{
    const ios_base::fmtflags harmless = ios_base::dec | ios_base::fixed | ios_base::scientific |
                                        ios_base::adjustfield | ios_base::skipws |
                                        ios_base::boolalpha;
    const ios_base::fmtflags flags = stream.flags();
    const bool isHexadecimal = (flags & ios_base::floatfield) == ios_base::floatfield;
    return (flags & ~harmless) == None && (flags & ios_base::dec) != None && !isHexadecimal &&
           stream.precision() >= 0 && stream.precision() <= MaxPrecision && stream.width() == 0 &&
           stream.getloc() == std::locale::classic();
}

// The stream's settings are read once: nobody changes them while a tree is written.
PlainOutput::PlainOutput(std::ostream& stream)
    : m_stream(stream),
      m_format(std::chars_format::general),
      m_precision(static_cast<int>(stream.precision())),
      m_isString(isStringStream(stream))
{
    if ((stream.flags() & ios_base::fixed) != None)
        m_format = std::chars_format::fixed;
    else if ((stream.flags() & ios_base::scientific) != None)
        m_format = std::chars_format::scientific;
}

void PlainOutput::write(int value)
{
    char* const digits = reserve(MaxLength);
    char* const end = std::to_chars(digits, digits + MaxLength, value).ptr;
    m_size += static_cast<std::size_t>(end - digits);
}

// Infinities and not-a-numbers are left to the stream, whose library has its own words for them.
void PlainOutput::write(double value)
{
    if (!std::isfinite(value)) {
        finish();
        m_stream << value;
        return;
    }
    char* const digits = reserve(MaxLength);
    char* end = nullptr;
    if (m_format == std::chars_format::general && m_precision == 6)
        end = writeSixDigits(digits, value);
    if (end == nullptr)
        end = std::to_chars(digits, digits + MaxLength, value, m_format, m_precision).ptr;
    m_size += static_cast<std::size_t>(end - digits);
}

// What the stream's write() and flush() do, when there is nothing for them to prepare.
void PlainOutput::flush()
{
    if (!m_stream.good() || m_stream.tie() != nullptr) {
        finish();
        m_stream.flush();
        return;
    }
    bool isWritten = false;
    try {
        std::streambuf& buffer = *m_stream.rdbuf();
        const auto size = static_cast<std::streamsize>(std::exchange(m_size, 0));
        isWritten = buffer.sputn(m_buffer.get(), size) == size;
        if (isWritten && buffer.pubsync() != -1)
            return;
    } catch (...) {
        setBad();
        if ((m_stream.exceptions() & ios_base::badbit) != ios_base::goodbit)
            throw;
    }
    m_stream.setstate(ios_base::badbit);
    if (!isWritten)
        m_stream.flush();
}

// Leaves it to the caller to throw.
void PlainOutput::setBad()
{
    try {
        m_stream.setstate(ios_base::badbit);
    } catch (const ios_base::failure&) {
        return;
    }
}

void PlainOutput::finish()
{
    if (m_size > 0)
        m_stream.write(m_buffer.get(), static_cast<std::streamsize>(std::exchange(m_size, 0)));
}

void PlainOutput::grow(std::size_t size)
{
    const std::size_t capacity = std::max({2 * m_capacity, m_size + size, std::size_t{1024}});
    auto buffer = std::make_unique<char[]>(capacity);
    if (m_size > 0)
        std::memcpy(buffer.get(), m_buffer.get(), m_size);
    m_buffer = std::move(buffer);
    m_capacity = capacity;
}

}
