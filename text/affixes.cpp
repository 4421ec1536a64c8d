#include "text/code_page.h"
#include "text/compare.h"

#include <mdtools/encoding.h>
#include <mdtools/strings.h>

#include <algorithm>

namespace Tools {

namespace {

// The character at `p` in lower case, a double-byte one as one number.
unsigned lowerCharacter(const CodePage& page, const char* p, std::size_t bytes)
{
    return bytes == 1 ? page.lower().singles[static_cast<unsigned char>(*p)]
                      : page.lower().pairs[CodePage::pairAt(p)];
}

// Lowering keeps the size of a character, so that texts that are equal when lowered have their
// characters at the same positions.
bool isEqualByCharacters(const CodePage& page, const char* a, const char* b, std::size_t size)
{
    if (!page.hasLeadBytes()) {
        const CodePage::ByteMap& lower = page.lower().singles;
        return std::equal(a, a + size, b, [&lower](char x, char y) {
            return lower[static_cast<unsigned char>(x)] == lower[static_cast<unsigned char>(y)];
        });
    }
    const char* const endB = b + size;
    for (const Character& character : page.characters({a, size})) {
        if (character.bytes != page.length(b, endB) ||
            lowerCharacter(page, character.p, character.bytes) !=
                lowerCharacter(page, b, character.bytes))
            return false;
        b += character.bytes;
    }
    return true;
}

// Equal after toLower, for two texts of one size: first whole blocks by ASCII case, which settles
// most texts; what differs there may still be letters of the page.
bool isEqualLowered(const char* a, const char* b, std::size_t size)
{
    const CodePage& page = CodePage::get();
    return (page.hasPlainAscii() && Comparing::isSameButCase(a, b, size)) ||
           isEqualByCharacters(page, a, b, size);
}

bool isEqual(const char* a, const std::string& b, bool caseSensitive)
{
    return caseSensitive ? Comparing::isSame(a, b.data(), b.size())
                         : isEqualLowered(a, b.data(), b.size());
}

}

bool startsWith(const std::string& s, const std::string& prefix, bool caseSensitive)
{
    return s.size() >= prefix.size() && isEqual(s.data(), prefix, caseSensitive);
}

bool endsWith(const std::string& s, const std::string& suffix, bool caseSensitive)
{
    return s.size() >= suffix.size() &&
           isEqual(s.data() + s.size() - suffix.size(), suffix, caseSensitive);
}

bool Mbcs::startsWith(const std::string& s, const std::string& prefix)
{
    return Tools::startsWith(s, prefix, true);
}

bool Mbcs::endsWith(const std::string& s, const std::string& suffix)
{
    return Tools::endsWith(s, suffix, true);
}

}
