#pragma once

#include "text/process_object.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Tools {

// Which bytes begin a double-byte character in the process's code page, and how its letters change
// case. Made from the page on first use (ProcessObject): any thread may use it at any time.
class CodePage {
public:
    static const CodePage& get()
    {
        const CodePage* const page = ms_page.find();
        return page != nullptr ? *page : provide();
    }

    // One entry a byte.
    using ByteFlags = std::array<bool, 256>;
    using ByteMap = std::array<unsigned char, 256>;

    bool hasLeadBytes() const { return m_hasLeadBytes; }
    const ByteFlags& leadBytes() const { return m_isLead; }

    // The number of bytes of the character at `p`, which is before `end`: 1 or 2. A first byte
    // whose second one is missing or NUL is a character of its own.
    std::size_t length(const char* p, const char* end) const
    {
        return m_isLead[static_cast<unsigned char>(*p)] && end - p > 1 && p[1] != '\0' ? 2 : 1;
    }

    // Whether the byte at `index` is the second one of a character: a byte that cannot be a first
    // one ends a character, so that those directly before `index` need only be counted. The text
    // begins with a character; `fold` is what lead bytes are judged after.
    template <class Fold>
    bool isSecondByte(const char* text, std::size_t index, Fold fold) const
    {
        std::size_t leads = 0;
        while (leads < index && m_isLead[fold(text[index - 1 - leads])])
            ++leads;
        return leads % 2 != 0;
    }

    class CharacterRange;
    // All characters of a text in their order.
    CharacterRange characters(std::string_view text) const;

    // A double-byte character as one number, its first byte above.
    static std::uint16_t pairAt(const char* p)
    {
        const unsigned first = static_cast<unsigned char>(p[0]);
        return static_cast<std::uint16_t>(first << 8 | static_cast<unsigned char>(p[1]));
    }

    // Case of a character: of a single byte, or of both bytes. The number of bytes never
    // changes; a letter without a partner in the page stays.
    struct CaseMap {
        ByteMap singles;
        // Empty in single-byte pages.
        std::vector<std::uint16_t> pairs;
    };
    // Every byte is a character, and the ASCII letters have their usual partners.
    bool hasPlainAscii() const { return m_hasPlainAscii; }

    const CaseMap& lower() const { return m_lower; }
    const CaseMap& upper() const { return m_upper; }
    // Changes the case of whole characters in place: each keeps its size.
    void changeCase(char* p, std::size_t size, const CaseMap& map) const;

private:
    CodePage();
    static const CodePage& provide();
    void readCase();

    static ProcessObject<CodePage> ms_page;

    bool m_hasLeadBytes = false;
    bool m_hasPlainAscii = false;
    ByteFlags m_isLead{};
    CaseMap m_lower;
    CaseMap m_upper;
};

// One character of a text: one or two bytes.
struct Character {
    const char* p;
    std::size_t bytes;
};

// The one walk over characters. What the loop's body writes to the text is not read again.
class CodePage::CharacterRange {
public:
    class Iterator {
    public:
        Iterator(const CodePage& page, const char* p, const char* end)
            : m_page(page), m_character{p, 0}, m_end(end)
        {
            measure();
        }

        const Character& operator*() const { return m_character; }
        Iterator& operator++()
        {
            m_character.p += m_character.bytes;
            measure();
            return *this;
        }
        bool operator!=(const char* end) const { return m_character.p != end; }

    private:
        void measure()
        {
            m_character.bytes = m_character.p != m_end ? m_page.length(m_character.p, m_end) : 0;
        }

        const CodePage& m_page;
        Character m_character;
        const char* m_end;
    };

    CharacterRange(const CodePage& page, std::string_view text) : m_page(page), m_text(text) {}

    Iterator begin() const { return {m_page, m_text.data(), end()}; }
    const char* end() const { return m_text.data() + m_text.size(); }

private:
    const CodePage& m_page;
    std::string_view m_text;
};

inline CodePage::CharacterRange CodePage::characters(std::string_view text) const
{
    return {*this, text};
}

}
