#include "text/byte_block.h"
#include "text/byte_set.h"

#include <mdtools/constants.h>
#include <mdtools/encoding.h>
#include <mdtools/strings.h>

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>

namespace Tools {

namespace {

// Finds which of 64 bytes are delimiters, one bit each. Up to `FewDelimiters` are compared with
// whole blocks, more are looked up in a set.
class DelimiterFinder {
public:
    explicit DelimiterFinder(std::string_view delimiters)
        : m_set(delimiters), m_count(delimiters.size())
    {
        if (m_count <= FewDelimiters) {
            for (std::size_t i = 0; i < m_count; ++i)
                m_delimiters[i] = ByteBlock::filled(delimiters[i]);
        }
    }

    std::uint64_t find(const char* p) const
    {
        if (m_count > FewDelimiters)
            return findInSet(p);
        std::uint64_t found = 0;
        for (std::size_t i = 0; i < 64; i += ByteBlock::Size)
            found |= std::uint64_t{findInBlock(p + i)} << i;
        return found;
    }

    // Fewer than 64 bytes; what is missing counts as delimiters.
    std::uint64_t findInRest(std::string_view rest) const
    {
        char bytes[64] = {};
        std::memcpy(bytes, rest.data(), rest.size());
        return find(bytes) | ~std::uint64_t{0} << rest.size();
    }

private:
    static constexpr std::size_t FewDelimiters = 8;

    ByteBlock::Mask findInBlock(const char* p) const
    {
        const ByteBlock block = ByteBlock::load(p);
        ByteBlock found = ByteBlock::zero();
        for (std::size_t i = 0; i < m_count; ++i)
            found = found | block.equals(m_delimiters[i]);
        return found.mask();
    }

    std::uint64_t findInSet(const char* p) const
    {
        std::uint64_t found = 0;
        for (unsigned i = 0; i < 64; ++i)
            found |= std::uint64_t{m_set.contains(p[i])} << i;
        return found;
    }

    ByteSet m_set;
    std::size_t m_count;
    ByteBlock m_delimiters[FewDelimiters];
};

// Collects the tokens of a text that comes as bitmaps, one bit a byte and 64 a word: the edges
// between tokens and delimiters are found by shifts and counting zeros, never byte by byte.
class Tokenizer {
public:
    explicit Tokenizer(std::string_view text) : m_text(text) {}

    // `tokens` has a set bit for each byte of the text from `begin` on that is no delimiter.
    void read(std::size_t begin, std::uint64_t tokens)
    {
        // Each token has one bit where it begins and one where it has ended.
        std::uint64_t edges = tokens ^ (tokens << 1 | std::uint64_t{m_isInToken});
        if (m_isInToken && edges != 0) {
            add(begin + takeFirst(edges));
            m_isInToken = false;
        }
        while (edges != 0) {
            m_start = begin + takeFirst(edges);
            if (edges == 0) {
                m_isInToken = true;
                return;
            }
            add(begin + takeFirst(edges));
        }
    }

    // Grows geometrically, but never less than needed.
    void expect(std::size_t tokens)
    {
        const std::size_t needed = m_tokens.size() + tokens;
        if (needed > m_tokens.capacity())
            m_tokens.reserve(std::max(needed, 2 * m_tokens.capacity()));
    }

    std::vector<std::string> finish()
    {
        if (m_isInToken)
            add(m_text.size());
        return std::move(m_tokens);
    }

private:
    static std::size_t takeFirst(std::uint64_t& bits)
    {
        const auto first = static_cast<std::size_t>(std::countr_zero(bits));
        bits &= bits - 1;
        return first;
    }

    void add(std::size_t end) { m_tokens.emplace_back(m_text.data() + m_start, end - m_start); }

    std::string_view m_text;
    std::vector<std::string> m_tokens;
    bool m_isInToken = false;
    std::size_t m_start = 0;
};

}

// The text is taken in portions: of each one the tokens are counted before they are made, so that
// the list does not grow one by one.
std::vector<std::string> tokenize(const std::string& s, const std::string& delimiters)
{
    const DelimiterFinder finder(delimiters);
    Tokenizer tokenizer(s);
    std::array<std::uint64_t, 32> masks;
    for (std::size_t begin = 0; begin < s.size(); begin += 64 * masks.size()) {
        const std::size_t size = std::min(s.size() - begin, 64 * masks.size());
        std::size_t count = 0;
        std::size_t tokens = 0;
        for (std::size_t i = 0; i < size; i += 64) {
            const char* const p = s.data() + begin + i;
            const std::uint64_t mask =
                ~(size - i >= 64 ? finder.find(p) : finder.findInRest({p, size - i}));
            tokens += static_cast<std::size_t>(std::popcount(mask & ~(mask << 1)));
            masks[count++] = mask;
        }
        tokenizer.expect(tokens);
        for (std::size_t i = 0; i < count; ++i)
            tokenizer.read(begin + 64 * i, masks[i]);
    }
    return tokenizer.finish();
}

// Greedy, by bytes.
std::vector<std::string> tokenize(const std::string& s, std::size_t maxLength)
{
    std::vector<std::string> lines;
    for (const std::string& word : tokenize(s, std::string(" \t"))) {
        if (!lines.empty() && lines.back().size() + word.size() < maxLength)
            lines.back().append(C::Blank).append(word);
        else
            lines.push_back(word);
    }
    return lines;
}

std::vector<std::wstring> Unicode16::tokenize(const std::wstring& s, const std::wstring& delimiters)
{
    std::wstring sorted = delimiters;
    std::sort(sorted.begin(), sorted.end());
    const auto isDelimiter = [&sorted](wchar_t unit) {
        return std::binary_search(sorted.begin(), sorted.end(), unit);
    };
    std::vector<std::wstring> tokens;
    for (auto p = s.begin();;) {
        const auto first = std::find_if_not(p, s.end(), isDelimiter);
        if (first == s.end())
            return tokens;
        p = std::find_if(first, s.end(), isDelimiter);
        tokens.emplace_back(first, p);
    }
}

}
