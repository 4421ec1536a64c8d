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

}

std::string toLower(const std::string& s)
{
    const CodePage& page = CodePage::get();
    std::string result = s;
    page.changeCase(result.data(), result.size(), page.lower());
    return result;
}

std::string toUpper(const std::string& s)
{
    const CodePage& page = CodePage::get();
    std::string result = s;
    page.changeCase(result.data(), result.size(), page.upper());
    return result;
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
