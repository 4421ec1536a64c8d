#include <mdtools/strings.h>

#include "support/files.h"
#include "text/characters.h"
#include "text/code_page.h"
#include "text/conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
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
    {"720", "\x82\x99", L"\u00E9\u0622", "\x82\x99", "\x82\x99", 2},
    {"950", "\xA4\x40 a\xA2\xCF", L"\u4E00 a\uFF21", "\xA4\x40 a\xA2\xE9", "\xA4\x40 A\xA2\xCF", 4},
    // Bytes, but for the conversion: no first bytes, and only ASCII has case.
    {"65001", "\xC3\x84\x41\xF0\x9F\x98\x80", L"\u00C4A\xD83D\xDE00",
     "\xC3\x84\x61\xF0\x9F\x98\x80", "\xC3\x84\x41\xF0\x9F\x98\x80", 7},
    // A byte that the page leaves undefined is no letter.
    {"1255", "A\xDB\xE0", L"A\uF88F\u05D0", "a\xDB\xE0", "A\xDB\xE0", 3},
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

// All that there is in the pages, as the system has it under which the Windows build runs:
// scripts/page-differences measures it. The Windows build can be in some of them only.
struct Content {
    std::string_view name;
    std::uint32_t wide;
    std::uint32_t narrow;
};

const Content Contents[] = {
    {"437", 0x2169AE60U, 0xBD400924U},  {"720", 0xFE012200U, 0x1E976AA4U},
    {"737", 0xBFBAD7C4U, 0x3E09D135U},  {"775", 0xB203A698U, 0x066A9D4CU},
    {"850", 0xB1D98E4EU, 0x5FAFD29EU},  {"852", 0x3BEC0087U, 0x6A1876EAU},
    {"855", 0x1CABC97AU, 0x827F7BB1U},  {"857", 0x330039A9U, 0xDF73BEEAU},
    {"860", 0x5A695F6FU, 0x47F6E19DU},  {"861", 0xFED74FEBU, 0xE0E7F7D7U},
    {"862", 0xFD930766U, 0x2095DAECU},  {"863", 0x82A7CBFFU, 0x94101CDBU},
    {"864", 0x60E35494U, 0x5A3CD502U},  {"865", 0xC5E01888U, 0x2387E7C6U},
    {"866", 0x127DD7C1U, 0xB63567BBU},  {"869", 0x5341BBA3U, 0xEF9EA067U},
    {"874", 0x67EF3BEBU, 0x16014652U},  {"932", 0xBD71232DU, 0xDDFC9A23U},
    {"936", 0xEA6746EEU, 0x2A24A19EU},  {"949", 0x10571D29U, 0x33C8122AU},
    {"950", 0x95DB7492U, 0xB752D9C3U},  {"1250", 0x77E8E41DU, 0xA2CBD038U},
    {"1251", 0x220C1A3FU, 0x7D664449U}, {"1252", 0x05678403U, 0x75365D8DU},
    {"1253", 0x7E3A0390U, 0xCF2199B9U}, {"1254", 0x29FB9A59U, 0x2519CD3FU},
    {"1255", 0x76D23ACCU, 0xB0A5A398U}, {"1256", 0x37ECDDC2U, 0x772D1421U},
    {"1257", 0xBBB2BF9DU, 0xF1AEA3CCU}, {"1258", 0x261A5DC4U, 0x58AC531EU},
};

std::string_view pageName()
{
    const char* const name = std::getenv("MDTOOLS_CODEPAGE");
    return name != nullptr ? name : "";
}

// FNV-1a over numbers.
class Checksum {
public:
    void add(std::uint32_t value) { m_sum = (m_sum ^ value) * 16777619U; }
    std::uint32_t sum() const { return m_sum; }

private:
    std::uint32_t m_sum = 2166136261U;
};

// Comes first, because a process asks for its page with its first text.
TEST(CodePages, areFoundOnceThereAreDescriptors)
{
    const auto* const page = std::find_if(std::begin(Pages), std::end(Pages),
                                          [](const Page& p) { return p.name == pageName(); });
    if (page == std::end(Pages))
        GTEST_SKIP() << "nothing known of the page's characters";
    const int before = MdToolsTest::limitOpenFiles(0);
    const std::string ascii = Tools::toLower("ASCII");
    const std::wstring wide = Tools::toWide("wide");
    MdToolsTest::limitOpenFiles(before);
    EXPECT_EQ(ascii, "ascii");
    EXPECT_EQ(wide, L"wide");
    EXPECT_EQ(Tools::toWide(page->text), page->wide);
    EXPECT_EQ(Tools::toUpper(page->text), page->upper);
}

TEST(CodePages, areThoseOfWindows)
{
    if (pageName() == "65001")
        GTEST_SKIP() << "no table";
    const auto* content = std::find_if(std::begin(Contents), std::end(Contents),
                                       [](const Content& c) { return c.name == pageName(); });
    if (content == std::end(Contents))
        content = std::find_if(std::begin(Contents), std::end(Contents),
                               [](const Content& c) { return c.name == "1252"; });
    Checksum wide;
    const auto addText = [&wide](const std::string& text) {
        for (const wchar_t unit : Tools::toWide(text))
            wide.add(static_cast<std::uint32_t>(unit));
        wide.add(0x10000);
    };
    for (unsigned byte = 0; byte < 0x100; ++byte)
        addText(std::string(1, static_cast<char>(byte)));
    if (Tools::CodePage::get().hasLeadBytes()) {
        for (unsigned pair = 0x8000; pair < 0x10000; ++pair)
            addText({static_cast<char>(pair >> 8), static_cast<char>(pair)});
    }
    EXPECT_EQ(wide.sum(), content->wide);
    Checksum narrow;
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        std::uint32_t bytes = 0;
        for (const char c : Tools::toNarrow(std::wstring(1, static_cast<wchar_t>(unit))))
            bytes = bytes << 8 | static_cast<unsigned char>(c);
        narrow.add(bytes);
    }
    EXPECT_EQ(narrow.sum(), content->narrow);
}

TEST(CodePages, convertAndMap)
{
    const auto* const page = std::find_if(std::begin(Pages), std::end(Pages),
                                          [](const Page& p) { return p.name == pageName(); });
    if (page == std::end(Pages))
        GTEST_SKIP() << "nothing known of the page's characters";
    EXPECT_EQ(Tools::toWide(page->text), page->wide);
    EXPECT_EQ(Tools::toNarrow(page->wide), page->text);
    EXPECT_EQ(Tools::toLower(page->text), page->lower);
    EXPECT_EQ(Tools::toUpper(page->text), page->upper);
    EXPECT_EQ(Tools::Characters::count(page->text), page->characters);
    if (page->name == "65001")
        expectBrokenUtf8();
}

}
