#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tools {

// Which bytes begin a double-byte character in the process's code page, and how its letters change
// case. Made from the page on first use and never changed or destroyed, so that any thread may use
// it at any time.
class CodePage {
public:
    static const CodePage& get();

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

private:
    CodePage();
    void readCase();

    bool m_hasLeadBytes = false;
    bool m_hasPlainAscii = false;
    ByteFlags m_isLead{};
    CaseMap m_lower;
    CaseMap m_upper;
};

}
