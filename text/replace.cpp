#include "text/character_set.h"
#include "text/search.h"

#include <mdtools/strings.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace Tools {

namespace {

using ExactSearch = Search<Comparing::Exact>;

// A copy of a text with other bytes at some positions. These are collected, so that the copy need
// not grow piece by piece; short pieces are moved in whole blocks, where both texts have room.
class Rebuilder {
public:
    // `removed` bytes go at each position, and `inserted` comes.
    Rebuilder(std::string_view text, std::size_t removed, std::string_view inserted)
        : m_text(text), m_removed(removed), m_inserted(inserted)
    {
        std::memcpy(m_block, inserted.data(), std::min(inserted.size(), BlockSize));
        m_result.reserve(text.size() + BlockSize);
    }

    // Positions come in ascending order.
    void replace(std::size_t position)
    {
        m_positions[m_count++] = position;
        if (m_count == m_positions.size())
            flush();
    }

    std::string finish()
    {
        flush();
        m_result.resize(m_size);
        return std::move(m_result.append(m_text.substr(m_copied)));
    }

private:
    static constexpr std::size_t BlockSize = 16;

    // Writes all that has been collected. The result is longer than what counts in it (m_size) by
    // a block at least, so that short pieces may be written with some bytes too many.
    void flush()
    {
        if (m_count == 0)
            return;
        const std::size_t span = m_positions[m_count - 1] - m_copied;
        const std::size_t needed = m_size + span + m_count * m_inserted.size() + BlockSize;
        if (needed > m_result.size()) {
            m_result.resize(std::max(needed, m_result.capacity()));
        }
        char* to = m_result.data() + m_size;
        for (std::size_t i = 0; i < m_count; ++i) {
            to = copy(to, m_text.substr(m_copied, m_positions[i] - m_copied));
            to = insert(to);
            m_copied = m_positions[i] + m_removed;
        }
        m_size = static_cast<std::size_t>(to - m_result.data());
        m_count = 0;
    }

    // There is room for a block more than is copied.
    char* copy(char* to, std::string_view piece) const
    {
        const auto left = static_cast<std::size_t>(m_text.data() + m_text.size() - piece.data());
        if (piece.size() > 2 * BlockSize || left < 2 * BlockSize) {
            std::memcpy(to, piece.data(), piece.size());
        } else {
            std::memcpy(to, piece.data(), BlockSize);
            if (piece.size() > BlockSize)
                std::memcpy(to + BlockSize, piece.data() + BlockSize, BlockSize);
        }
        return to + piece.size();
    }

    char* insert(char* to) const
    {
        if (m_inserted.size() <= BlockSize)
            std::memcpy(to, m_block, BlockSize);
        else
            std::memcpy(to, m_inserted.data(), m_inserted.size());
        return to + m_inserted.size();
    }

    std::string_view m_text;
    std::size_t m_removed;
    std::string_view m_inserted;
    char m_block[BlockSize] = {};
    std::array<std::size_t, 64> m_positions{};
    std::size_t m_count = 0;
    // All before this is in the result, whose first m_size bytes count.
    std::size_t m_copied = 0;
    std::size_t m_size = 0;
    std::string m_result;
};

}

// Lowering keeps positions and sizes of characters, so that the lowered copy can be walked instead.
bool containsAny(const std::string& s, const std::string& chars, bool caseSensitive)
{
    const CodePage& page = CodePage::get();
    const CharacterSet set(page, chars);
    const std::string lowered = caseSensitive ? std::string() : toLower(s);
    // NOLINTNEXTLINE(readability-use-anyofallof): the walk has no iterators that algorithms take
    for (const Character& character : page.characters(caseSensitive ? s : lowered)) {
        if (set.contains(character))
            return true;
    }
    return false;
}

// The search goes on after each occurrence, so that they never overlap.
std::string replaceAll(const std::string& s, const std::string& from, const std::string& to)
{
    if (from.empty())
        return s;
    ExactSearch search(s, from, Comparing::By::Character);
    Rebuilder result(s, from.size(), to);
    for (std::size_t found = search.next(0); found != ExactSearch::None;
         found = search.next(found + from.size()))
        result.replace(found);
    return result.finish();
}

std::string replaceLast(const std::string& s, const std::string& from, const std::string& to)
{
    if (from.empty())
        return s;
    ExactSearch search(s, from, Comparing::By::Character);
    const std::size_t found = search.last();
    std::string result = s;
    return found == ExactSearch::None ? result : result.replace(found, from.size(), to);
}

// `c` has one byte, so that the text becomes shorter where double-byte characters go.
std::string replaceAny(const std::string& s, const std::string& chars, char c)
{
    const CodePage& page = CodePage::get();
    const CharacterSet set(page, chars);
    std::string result;
    result.reserve(s.size());
    for (const Character& character : page.characters(s)) {
        if (set.contains(character))
            result += c;
        else
            result.append(character.p, character.bytes);
    }
    return result;
}

}
