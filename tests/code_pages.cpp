#include <mdtools/strings.h>

#include "text/characters.h"
#include "text/conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

// The build runs this program once for each page, because a process keeps its page.
namespace {

struct Page {
    std::string_view name;
    const char* text;
    const wchar_t* wide;
    const char* lower;
    const char* upper;
    std::size_t characters;
};

const Page Pages[] = {
    {"1251", "\xCF\xF0\x88", L"\u041F\u0440\u20AC", "\xEF\xF0\x88", "\xCF\xD0\x88", 3},
    {"1253", "\xD3\xF2\xF3", L"\u03A3\u03C2\u03C3", "\xF3\xF2\xF3", "\xD3\xD3\xD3", 3},
    {"936", "\x81\x40 a\xA3\xC1", L"\u4E02 a\uFF21", "\x81\x40 a\xA3\xE1", "\x81\x40 A\xA3\xC1", 4},
    {"949", "\xB0\xA1 a\xA3\xC1", L"\uAC00 a\uFF21", "\xB0\xA1 a\xA3\xE1", "\xB0\xA1 A\xA3\xC1", 4},
    {"950", "\xA4\x40 a\xA2\xCF", L"\u4E00 a\uFF21", "\xA4\x40 a\xA2\xE9", "\xA4\x40 A\xA2\xCF", 4},
    // Bytes, but for the conversion: no first bytes, and only ASCII has case.
    {"65001", "\xC3\x84\x41\xF0\x9F\x98\x80", L"\u00C4A\xD83D\xDE00",
     "\xC3\x84\x61\xF0\x9F\x98\x80", "\xC3\x84\x41\xF0\x9F\x98\x80", 7},
    // A byte that the page leaves undefined is no letter.
    {"1255", "A\xDB\xE0", L"A\uF8DB\u05D0", "a\xDB\xE0", "A\xDB\xE0", 3},
    {"850", "\x8E\x84\xE1", L"\u00C4\u00E4\u00DF", "\x84\x84\xE1", "\x8E\x8E\xE1", 3},
    // No page, or none that this system can hold: 1252.
    {"cp850", "\x8E\x84\xE1", L"\u017D\u201E\u00E1", "\x9E\x84\xE1", "\x8E\x84\xC1", 3},
    {"1361", "\x8E\x84\xE1", L"\u017D\u201E\u00E1", "\x9E\x84\xE1", "\x8E\x84\xC1", 3},
    {"", "\x8E\x84\xE1", L"\u017D\u201E\u00E1", "\x9E\x84\xE1", "\x8E\x84\xC1", 3},
};

void expectBrokenUtf8()
{
    struct Case {
        const char* text;
        const wchar_t* wide;
    };
    static const Case cases[] = {
        {"\x80\x61", L"\uFFFD\x61"},
        {"\xC1\x81", L"\uFFFD\uFFFD"},           // longer than it need be
        {"\xE4\xB8\x61", L"\uFFFD\x61"},         // one for what could have begun a character
        {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"}, // half of a pair
        {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x9F\x98", L"\uFFFD"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Tools::toWide(c.text), c.wide) << c.text;
    EXPECT_EQ(Tools::toNarrow(L"\xD83D"
                              L"a\xDE00"),
              "\xEF\xBF\xBD"
              "a\xEF\xBF\xBD");
    EXPECT_EQ(Tools::toNarrow(L"\u00FF\uFFFF\U0010FFFF"), "\xC3\xBF\xEF\xBF\xBF\xF4\x8F\xBF\xBF");
}

TEST(CodePages, convertAndMap)
{
    const char* const name = std::getenv("MDTOOLS_CODEPAGE");
    const auto* const page =
        std::find_if(std::begin(Pages), std::end(Pages),
                     [name](const Page& p) { return p.name == (name != nullptr ? name : ""); });
    ASSERT_NE(page, std::end(Pages)) << name;
    EXPECT_EQ(Tools::toWide(page->text), page->wide);
    EXPECT_EQ(Tools::toNarrow(page->wide), page->text);
    EXPECT_EQ(Tools::toLower(page->text), page->lower);
    EXPECT_EQ(Tools::toUpper(page->text), page->upper);
    EXPECT_EQ(Tools::Characters::count(page->text), page->characters);
    if (page->name == "65001")
        expectBrokenUtf8();
}

}
