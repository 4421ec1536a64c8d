// Tokens must not depend on how much of the input the stream's buffer shows at once, and neither
// must what is left in the stream.

#include <mdtools/smart_token.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <istream>
#include <streambuf>
#include <string>

namespace {

using Tools::Smart::IstreamTokenIterator;
using Tools::Smart::Token;

// Shows `step` characters at once.
class Source : public std::streambuf {
public:
    Source(const char* text, std::size_t size, std::size_t step) : m_text(text, size), m_step(step)
    {
        show(0);
    }

    std::size_t left() const { return m_text.size() - static_cast<std::size_t>(gptr() - begin()); }

protected:
    int_type underflow() override
    {
        show(static_cast<std::size_t>(gptr() - begin()));
        return gptr() == egptr() ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }

private:
    char* begin() const { return const_cast<char*>(m_text.data()); }
    void show(std::size_t from)
    {
        const std::size_t to = from + std::min(m_step, m_text.size() - from);
        // What was shown before can be put back.
        setg(begin(), begin() + from, begin() + to);
    }

    std::string m_text;
    std::size_t m_step;
};

bool areEqual(const Token& a, const Token& b)
{
    const double x = a.getValReal();
    const double y = b.getValReal();
    return a.getType() == b.getType() && a.getValText() == b.getValText() &&
           a.getValDecimal() == b.getValDecimal() && std::memcmp(&x, &y, sizeof x) == 0;
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const char* text = reinterpret_cast<const char*>(data);
    Source all(text, size, size + 1);
    Source little(text, size, 1 + size % 3);
    std::istream first(&all);
    std::istream second(&little);
    IstreamTokenIterator i(first);
    IstreamTokenIterator j(second);
    for (std::size_t n = 0; n <= size; ++n, ++i, ++j)
        if (!areEqual(*i, *j) || i.end() != j.end() || first.rdstate() != second.rdstate() ||
            all.left() != little.left())
            std::abort();
    return 0;
}
