#include "trace/format_widths.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwchar>

namespace Tools {

namespace {

// A walk over a format and its arguments, conversion by conversion.
class Conversions {
public:
    Conversions(const char* format, va_list args) : m_next(format) { va_copy(m_args, args); }
    Conversions(const Conversions&) = delete;
    Conversions& operator=(const Conversions&) = delete;
    ~Conversions() { va_end(m_args); }

    // Reads the next conversion; false after the last one, and before one that names its argument
    // by a number, because then the order of the arguments is another one.
    bool next();

    std::size_t width() const { return m_width; }
    std::size_t precision() const { return m_precision; }
    bool isNumber() const { return std::strchr("diouxXfFeEgGaA", m_conversion) != nullptr; }

private:
    std::size_t readCount(bool isPrecision);
    void readLength();
    void skipArgument();
    void skipInteger();
    template <class Argument>
    void skip()
    {
        static_cast<void>(va_arg(m_args, Argument));
    }

    // How long an integer is, by the letter of its length: "H" stands for int and shorter, "q" for
    // long long.
    char m_length = 'H';
    char m_conversion = '\0';
    std::size_t m_width = 0;
    std::size_t m_precision = 0;
    const char* m_next;
    va_list m_args;
};

bool Conversions::next()
{
    m_next = std::strchr(m_next, '%');
    if (m_next == nullptr)
        return false;
    ++m_next;
    m_next += std::strspn(m_next, "-+ #0'");
    m_width = readCount(false);
    if (*m_next == '$')
        return false;
    m_precision = 0;
    if (*m_next == '.') {
        ++m_next;
        m_precision = readCount(true);
    }
    readLength();
    m_conversion = *m_next;
    if (m_conversion == '\0')
        return false;
    ++m_next;
    skipArgument();
    return true;
}

// A negative width is one with a flag before it, a negative precision none.
std::size_t Conversions::readCount(bool isPrecision)
{
    constexpr std::size_t Most = INT32_MAX;
    if (*m_next == '*') {
        ++m_next;
        const std::int64_t count = va_arg(m_args, int);
        return static_cast<std::size_t>(count >= 0 ? count : isPrecision ? 0 : -count);
    }
    std::size_t count = 0;
    for (; *m_next >= '0' && *m_next <= '9'; ++m_next)
        count = std::min(Most, count * 10 + static_cast<std::size_t>(*m_next - '0'));
    return count;
}

void Conversions::readLength()
{
    m_length = 'H';
    if (std::strncmp(m_next, "I64", 3) == 0 || std::strncmp(m_next, "I32", 3) == 0) {
        m_length = m_next[1] == '6' ? 'q' : 'H';
        m_next += 3;
        return;
    }
    for (; *m_next != '\0' && std::strchr("hlqjztLI", *m_next) != nullptr; ++m_next) {
        if (*m_next == 'l' && m_length == 'l')
            m_length = 'q';
        else if (*m_next != 'h')
            m_length = *m_next == 'I' ? 'z' : *m_next;
    }
}

void Conversions::skipArgument()
{
    if (std::strchr("diouxX", m_conversion) != nullptr) {
        skipInteger();
    } else if (isNumber()) {
        if (m_length == 'L')
            skip<long double>();
        else
            skip<double>();
    } else if (m_conversion == 'c' || m_conversion == 'C') {
        skip<int>();
    } else if (std::strchr("sSpn", m_conversion) != nullptr) {
        skip<void*>();
    }
}

void Conversions::skipInteger()
{
    switch (m_length) {
    case 'l':
        skip<long>();
        break;
    case 'q':
    case 'L':
        skip<long long>();
        break;
    // All of 64 bits, as this library's platforms are.
    case 'j':
    case 'z':
    case 't':
        skip<std::intmax_t>();
        break;
    default:
        skip<int>();
        break;
    }
}

}

bool areWidthsWithin(std::size_t most, const char* format, va_list args)
{
    Conversions conversions(format, args);
    while (conversions.next()) {
        const std::size_t mostHere = conversions.isNumber() ? std::min(most, MostOfNumber) : most;
        if (conversions.width() > mostHere ||
            (conversions.isNumber() && conversions.precision() > mostHere))
            return false;
    }
    return true;
}

}
