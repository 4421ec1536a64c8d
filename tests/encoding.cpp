#include <mdtools/encoding.h>

#include "text/conversion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

namespace Tools {

// Reaches the text that a WriteAsStringA would write.
class WriteAsStringATest {
public:
    static std::string convert(const std::string& text) { return WriteAsStringA(text).convert(); }
};

}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Tools::toNarrow;
using Tools::toWide;
namespace Mbcs = Tools::Mbcs;
namespace Unicode16 = Tools::Unicode16;

std::string everyByte()
{
    std::string text;
    for (int byte = 0; byte < 256; ++byte)
        text += static_cast<char>(byte);
    return text;
}

TEST(Encoding, conversion)
{
    EXPECT_EQ(toWide(""), L"");
    EXPECT_EQ(toNarrow(L""), "");
    EXPECT_EQ(toWide(static_cast<const char*>(nullptr)), L"");
    EXPECT_EQ(toNarrow(static_cast<const wchar_t*>(nullptr)), "");
    EXPECT_EQ(toWide("\x80\x8A\xC4\xDF"), L"\u20AC\u0160\u00C4\u00DF");
    EXPECT_EQ(toWide(std::string("a\0b", 3)), std::wstring(L"a\0b", 3));
    EXPECT_EQ(toNarrow(L"\u20AC \u00C4"), "\x80 \xC4");
    // The five bytes that the page leaves open mean themselves.
    EXPECT_EQ(toWide("\x81\x8D\x8F\x90\x9D"), std::wstring({0x81, 0x8D, 0x8F, 0x90, 0x9D}));
    EXPECT_EQ(toNarrow(toWide(everyByte())), everyByte());
    // One replacement for each unit that is not in the page.
    EXPECT_EQ(toNarrow(L"a\u4E00b"), "a?b");
    EXPECT_EQ(toNarrow({wchar_t(0xD83D), wchar_t(0xDE00), L'.'}), "??.");
    EXPECT_EQ(toNarrow(L"\U0001F600"), "??");
}

// Blocks of plain text with one other character at every place.
TEST(Encoding, conversionAtEveryLength)
{
    for (std::size_t size = 1; size < 70; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            for (const auto& [byte, unit] : {std::pair('\xE9', L'\u00E9'),
                                             {'\x99', L'\u2122'},
                                             {'\x80', L'\u20AC'},
                                             {'\x9F', L'\u0178'}}) {
                std::string narrow(size, 'x');
                std::wstring wide(size, L'x');
                narrow[place] = byte;
                wide[place] = unit;
                EXPECT_EQ(toWide(narrow), wide) << place << " of " << size;
                EXPECT_EQ(toNarrow(wide), narrow) << place << " of " << size;
            }
        }
    }
    std::string large;
    large.resize(40000000, '\xE9');
    EXPECT_TRUE(toNarrow(toWide(large)) == large);
}

TEST(Encoding, writeAsString)
{
    EXPECT_EQ(Tools::WriteAsStringATest::convert(everyByte()), everyByte());
    EXPECT_EQ(Tools::WriteAsStringATest::convert(""), "");
}

TEST(Mbcs, comparisons)
{
    EXPECT_EQ(Mbcs::strcmp("b", "a"), 1);
    EXPECT_EQ(Mbcs::strcmp("a", "\xFF"), -1);
    EXPECT_EQ(Mbcs::strcmp("", nullptr), 1);
    EXPECT_EQ(Mbcs::stricmp("a", "B"), -1);
    EXPECT_EQ(Mbcs::stricmp("\xC4", std::string("\xE4")), 0);
    EXPECT_EQ(Mbcs::stricmp(nullptr, nullptr), -1);
    EXPECT_TRUE(Mbcs::Streq(nullptr, nullptr));
    EXPECT_FALSE(Mbcs::Streq(std::string("a"), nullptr));
    EXPECT_TRUE(Mbcs::Strieq("aB", std::string("Ab")));
    EXPECT_FALSE(Mbcs::Strieq("x", nullptr));
    EXPECT_TRUE(Mbcs::stristr("Hello", "LL"));
    EXPECT_FALSE(Mbcs::stristr("Hello", nullptr));
    EXPECT_FALSE(Mbcs::startsWith("Abc", "ab"));
    EXPECT_TRUE(Mbcs::startsWith("Abc", "Ab"));
    EXPECT_TRUE(Mbcs::endsWith("Abc", "bc"));
    EXPECT_FALSE(Mbcs::endsWith("c", "bc"));
    EXPECT_THAT(Mbcs::tokenize("a;;b", ";"), ElementsAre("a", "b"));
}

TEST(Mbcs, sameAsForText)
{
    std::string text = "\xC4 aB";
    EXPECT_EQ(&Mbcs::strlwr(text), &text);
    EXPECT_EQ(text, "\xE4 ab");
    EXPECT_EQ(&Mbcs::strupr(text), &text);
    EXPECT_EQ(text, "\xC4 AB");
    EXPECT_EQ(Mbcs::strlwr(text.data()), text.data());
    EXPECT_EQ(text, "\xE4 ab");
    EXPECT_EQ(Mbcs::strupr(text.data()), text.data());
    EXPECT_EQ(text, "\xC4 AB");
    EXPECT_EQ(Mbcs::toLower("\x8A\xD7Q"), "\x9A\xD7q");
    EXPECT_EQ(Mbcs::toUpper("\x9A\xF7q"), "\x8A\xF7Q");
    EXPECT_EQ(Mbcs::trim(" a ", " "), "a");
    EXPECT_EQ(Mbcs::trimStart(" a ", " "), "a ");
    EXPECT_EQ(Mbcs::trimEnd(" a ", " "), " a");
    EXPECT_EQ(Mbcs::tryParseInt("7x").getValue(), 7);
    EXPECT_EQ(Mbcs::tryParseLong(" -8").getValue(), -8);
    EXPECT_FALSE(Mbcs::tryParseLong("2147483648").hasValue());
    EXPECT_EQ(Mbcs::tryParseDouble("1.5x").getValue(), 1.5);
}

TEST(Unicode16, equality)
{
    EXPECT_TRUE(Unicode16::Streq(L"a", std::wstring(L"a\0b", 3)));
    EXPECT_FALSE(Unicode16::Streq(L"a", L"A"));
    EXPECT_FALSE(Unicode16::Streq(nullptr, L""));
    struct Case {
        const wchar_t *a, *b;
        bool isEqual;
    };
    static const Case cases[] = {
        {L"ABC", L"abc", true},
        {L"\u00C4\u0416\u03A9", L"\u00E4\u0436\u03C9", true},
        {L"\u0130", L"i", true},
        {L"\u212A", L"k", true},             // Kelvin
        {L"Stra\u00DFe", L"STRASSE", false}, // unit by unit
        {L"\u03C2", L"\u03C3", false},       // final sigma has its own lower case
        {L"\u00D7", L"\u00F7", false},       // no letters
        {L"\u0131", L"I", false},            // lowering, not raising
        {L"\u01C4", L"\u01C6", true},
        {L"\u01C5", L"\u01C6", true},
        {L"\u0100", L"\u0101", true},
        {L"\u0101", L"\u0102", false},
        {L"ab", L"abc", false},
        // Beyond 16 bits letters keep their case, and nothing is cut off.
        {L"\U00010400", L"\U00010428", false},
        {L"\U00010400", L"\U00010400", true},
        {L"\U00010041", L"a", false},
        {L"\U00010041", L"\U00010061", false},
        {nullptr, nullptr, true},
        {L"", nullptr, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        EXPECT_EQ(Unicode16::Strieq(c.a, c.b), c.isEqual);
        EXPECT_EQ(Unicode16::Strieq(c.b, c.a), c.isEqual);
        const std::wstring a = c.a != nullptr ? c.a : L"";
        EXPECT_EQ(Unicode16::Strieq(a, c.b), c.b != nullptr && c.isEqual);
    }
}

TEST(Unicode16, tokensAndNumbers)
{
    EXPECT_THAT(Unicode16::tokenize(L"a;;b", L";"), ElementsAre(L"a", L"b"));
    EXPECT_THAT(Unicode16::tokenize(L"\u4E00,b;", L";,"), ElementsAre(L"\u4E00", L"b"));
    EXPECT_THAT(Unicode16::tokenize(L"", L";"), IsEmpty());
    EXPECT_EQ(Unicode16::tryParseInt(L" -12x").getValue(), -12);
    EXPECT_FALSE(Unicode16::tryParseInt(L"").hasValue());
    EXPECT_FALSE(Unicode16::tryParseInt(L"\u0661").hasValue());
    EXPECT_FALSE(Unicode16::tryParseLong(L"2147483648").hasValue());
    EXPECT_EQ(Unicode16::tryParseLong(L"-2147483648").getValue(), INT_MIN);
    EXPECT_EQ(Unicode16::tryParseDouble(L"\t-1.5e3\u00E9").getValue(), -1500.0);
    EXPECT_FALSE(Unicode16::tryParseDouble(L"\u00E91").hasValue());
    EXPECT_FALSE(Unicode16::tryParseDouble(L"1e999").hasValue());
}

}
