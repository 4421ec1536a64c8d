#include "smart/stream_reader.h"

#include <climits>
#include <cstddef>
#include <streambuf>

namespace Tools::Smart {

namespace {

// Names the protected members of every stream buffer.
class Area : public std::streambuf {
public:
    static const char* begin(const std::streambuf& buffer) { return (buffer.*&Area::eback)(); }
    static const char* next(const std::streambuf& buffer) { return (buffer.*&Area::gptr)(); }
    static const char* end(const std::streambuf& buffer) { return (buffer.*&Area::egptr)(); }
    static void skip(std::streambuf& buffer, int count) { (buffer.*&Area::gbump)(count); }
};

}

StreamReader::StreamReader(std::istream& stream) : m_stream(stream)
{
    // What the stream does before each character, with its answer to a tied stream that throws;
    // once will do.
    if (stream.good() && stream.tie() != nullptr)
        const std::istream::sentry flush(stream, true);
    fetch();
}

// The area is the stream's as of now; without it everything goes through the stream.
void StreamReader::fetch()
{
    const std::streambuf* buffer = m_stream.rdbuf();
    const bool isUsable = buffer != nullptr && m_stream.good();
    m_begin = isUsable ? Area::begin(*buffer) : nullptr;
    m_next = isUsable ? Area::next(*buffer) : nullptr;
    m_end = isUsable ? Area::end(*buffer) : nullptr;
}

// The buffer counts in int.
void StreamReader::commit()
{
    if (m_next == nullptr)
        return;
    std::streambuf& buffer = *m_stream.rdbuf();
    std::ptrdiff_t count = m_next - Area::next(buffer);
    for (; count > INT_MAX; count -= INT_MAX)
        Area::skip(buffer, INT_MAX);
    Area::skip(buffer, static_cast<int>(count));
}

// The area is forgotten first: the stream may throw, and the destructor must not commit twice.
bool StreamReader::getFromStream(char& c)
{
    commit();
    m_begin = m_next = m_end = nullptr;
    const std::istream::int_type got = m_stream.get();
    fetch();
    if (!m_stream.good())
        return false;
    c = std::istream::traits_type::to_char_type(got);
    return true;
}

void StreamReader::putBack(char c)
{
    if (m_next != m_begin && m_next[-1] == c) {
        --m_next;
        return;
    }
    commit();
    m_begin = m_next = m_end = nullptr;
    m_stream.putback(c);
    fetch();
}

}
