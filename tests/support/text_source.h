#pragma once

#include <cstddef>
#include <istream>
#include <stdexcept>
#include <streambuf>
#include <string>

namespace MdToolsTest {

// A stream buffer over a text, with a get area of a given size (none at all with 0) that is filled
// anew with each underflow and gives characters back beyond its start only if it can put back. It
// ends, or throws, after the text.
class TextSource : public std::streambuf {
public:
    struct Kind {
        std::size_t area;
        bool canPutBack;
    };
    static constexpr Kind Kinds[] = {{0, false}, {0, true}, {1, false}, {1, true},   {2, true},
                                     {3, false}, {5, true}, {16, true}, {17, false}, {1000, true}};

    TextSource(std::string text, Kind kind, bool throwsAtEnd = false)
        : m_text(std::move(text)), m_kind(kind), m_throwsAtEnd(throwsAtEnd)
    {}

    static TextSource& of(std::istream& stream)
    {
        return static_cast<TextSource&>(*stream.rdbuf());
    }

    // How many characters were taken.
    std::size_t position() const { return m_next - static_cast<std::size_t>(egptr() - gptr()); }

protected:
    int_type underflow() override
    {
        if (m_next == m_text.size())
            return end();
        if (m_kind.area > 0) {
            m_area = m_text.substr(m_next, m_kind.area);
            m_next += m_area.size();
            setg(m_area.data(), m_area.data(), m_area.data() + m_area.size());
            return traits_type::to_int_type(*gptr());
        }
        return traits_type::to_int_type(m_text[m_next]);
    }

    int_type uflow() override
    {
        if (m_kind.area > 0)
            return std::streambuf::uflow();
        return m_next < m_text.size() ? traits_type::to_int_type(m_text[m_next++]) : end();
    }

    int_type pbackfail(int_type c) override
    {
        const std::size_t here = position();
        if (!m_kind.canPutBack || here == 0 || m_text[here - 1] != traits_type::to_char_type(c))
            return traits_type::eof();
        setg(nullptr, nullptr, nullptr);
        m_next = here - 1;
        return c;
    }

private:
    int_type end() const
    {
        if (m_throwsAtEnd)
            throw std::runtime_error("the source is broken");
        return traits_type::eof();
    }

    std::string m_text;
    std::string m_area;
    Kind m_kind;
    bool m_throwsAtEnd;
    std::size_t m_next = 0;
};

}
