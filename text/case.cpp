#include "text/case_folding.h"
#include "text/code_page.h"

#include <mdtools/encoding.h>
#include <mdtools/strings.h>

#include <algorithm>
#include <cstring>

namespace Tools {

namespace {

// The fixed tables are for bytes, whatever the page.
void mapBytes(char* p, std::size_t size, const CaseFolding::Table& table)
{
    std::transform(p, p + size, p, [&table](char c) {
        return static_cast<char>(table[static_cast<unsigned char>(c)]);
    });
}

// A character keeps its size, so that the text is mapped in place.
void mapCharacters(std::string& text, const CodePage& page, const CodePage::CaseMap& map)
{
    for (const Character& character : page.characters(text)) {
        char* const p = text.data() + (character.p - text.data());
        if (character.bytes == 1) {
            *p = static_cast<char>(map.singles[static_cast<unsigned char>(*p)]);
            continue;
        }
        const std::uint16_t mapped = map.pairs[CodePage::pairAt(p)];
        p[0] = static_cast<char>(mapped >> 8);
        p[1] = static_cast<char>(mapped & 0xFF);
    }
}

std::string mapped(std::string text, const CodePage& page, const CodePage::CaseMap& map)
{
    if (page.hasLeadBytes())
        mapCharacters(text, page, map);
    else
        mapBytes(text.data(), text.size(), map.singles);
    return text;
}

}

std::string toLower(const std::string& s)
{
    const CodePage& page = CodePage::get();
    return mapped(s, page, page.lower());
}

std::string toUpper(const std::string& s)
{
    const CodePage& page = CodePage::get();
    return mapped(s, page, page.upper());
}

char* strlwr(char* p)
{
    if (p != nullptr)
        mapBytes(p, std::strlen(p), CaseFolding::LowerTable);
    return p;
}

char* strupr(char* p)
{
    if (p != nullptr)
        mapBytes(p, std::strlen(p), CaseFolding::UpperTable);
    return p;
}

std::string& strlwr(std::string& s)
{
    mapBytes(s.data(), s.size(), CaseFolding::LowerTable);
    return s;
}

std::string& strupr(std::string& s)
{
    mapBytes(s.data(), s.size(), CaseFolding::UpperTable);
    return s;
}

}
