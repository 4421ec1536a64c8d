#include <mdtools/encoding.h>
#include <mdtools/strings.h>

#include "text/characters.h"
#include "text/conversion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

// Text in page 932, in which the build starts this program: a character is one byte, or a first
// byte 81-9F or E0-FC with a second one, which may look like a letter or a backslash.
namespace Tools {

class WriteAsStringATest {
public:
    static std::string convert(const std::string& text) { return WriteAsStringA(text).convert(); }
};

}

namespace {

namespace Characters = Tools::Characters;
namespace Mbcs = Tools::Mbcs;

// "so", with a second byte like a backslash, and "a" of katakana, with one like "A".
const std::string So = "\x83\x5C";
const std::string A = "\x83\x41";

int sign(int value)
{
    return value < 0 ? -1 : static_cast<int>(value > 0);
}

TEST(DoubleByte, conversion)
{
    ASSERT_EQ(Tools::toWide(So + "\xB1"), L"\u30BD\uFF71") << "This program needs page 932.";
    EXPECT_EQ(Tools::toNarrow(L"\u30BD\uFF71\\"), So + "\xB1\\");
    EXPECT_EQ(Tools::toNarrow(L"\u0E01\U0001F600."), "\x3F\x3F\x3F.");
    // Half a character, and a pair that is none.
    EXPECT_EQ(Tools::toWide(std::string("a\x83\0b\xFC\xFC\x83", 7)),
              std::wstring(L"a\u30FB\0b\u30FB\u30FB", 6));
    // Of two pairs for one letter the one that is written.
    EXPECT_EQ(Tools::toNarrow(Tools::toWide("\xED\x40\x87\x90")), "\xFA\x5C\x81\xE0");
    EXPECT_EQ(Tools::WriteAsStringATest::convert(So), So);
    EXPECT_THROW(Tools::WriteAsStringATest::convert("a\x83"), Tools::LossyConversionError);
    try {
        Tools::WriteAsStringATest::convert("\x83");
        FAIL();
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "Unicode string _cannot_ be losslessly converted To MBCS");
    }
}

TEST(DoubleByte, order)
{
    struct Case {
        const char *a, *b;
        int order, bytewise;
    };
    static const Case cases[] = {
        {"\x83\x41", "\xB1", 1, -1}, // any double-byte character is the greater one
        {"\x83\x41", "\x83\x5C", -1, -1},
        {"\x83\x41", "\x84\x40", -1, -1},
        {"a\x83", "a", 0, 1}, // half a character is the end
        {"a\x83", "a\x84", 0, -1},
        {"a\x83", "a\x83\x41", -1, -1},
        {"\x83\x83", "\x83\x83\x83", 0, -1},
        {"\x83\x83\x83\x41", "\x83\x83\xB1", 1, -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        EXPECT_EQ(sign(Tools::strcmp(c.a, c.b)), c.order);
        EXPECT_EQ(sign(Tools::strcmp(c.b, c.a)), -c.order);
        EXPECT_EQ(Tools::Streq(std::string(c.a), c.b), c.order == 0);
        EXPECT_EQ(Mbcs::strcmp(c.a, c.b), c.bytewise);
    }
    // Second bytes are lowered, too: these are different characters, equal without case.
    EXPECT_TRUE(Tools::Strieq(A, "\x83\x61"));
    // The lowered byte decides: 0xC1 becomes a first byte, and what follows its second one.
    EXPECT_EQ(sign(Tools::stricmp("\xC1\x41", "\xB1")), 1);
    EXPECT_EQ(sign(Tools::stricmp("\xC1", "")), 0);
}

TEST(DoubleByte, search)
{
    EXPECT_FALSE(Tools::stristr(So, "\\"));
    EXPECT_TRUE(Mbcs::stristr(So, "\\"));
    EXPECT_TRUE(Tools::stristr(So + "\\", "\\"));
    EXPECT_TRUE(Tools::stristr("x" + So, So));
    EXPECT_FALSE(Tools::stristr("\x83\x83\x5C", So)); // the first byte is another's second one
    EXPECT_TRUE(Tools::stristr(So, "\x83"));          // bytes are compared from there on
    EXPECT_FALSE(Tools::stristr("\xC1"
                                "b",
                                "b")); // 0xC1 is a first byte when lowered
    EXPECT_EQ(Tools::replaceAll(So + "\\" + So, "\\", "/"), So + "/" + So);
    EXPECT_EQ(Tools::replaceLast("\\" + So, "\\", "/"), "/" + So);
    EXPECT_EQ(Tools::replaceAll("\x83\x83\x5C\x83\x5C", So, "!"), "\x83\x83\x5C!");
    // A first byte before a NUL is a character of its own.
    const std::string half("\x83\0a\x83\0", 5);
    EXPECT_EQ(Tools::replaceAll(half, "a", "b"), std::string("\x83\0b\x83\0", 5));
    EXPECT_EQ(Tools::replaceAll(half, std::string(1, '\0'), "0"), "\x83"
                                                                  "0a\x83"
                                                                  "0");
    EXPECT_EQ(Tools::replaceAll(half, "\x83", "c"), std::string("c\0ac\0", 5));
    // Every other candidate lies between characters.
    std::string text;
    for (int i = 0; i < 200000; ++i)
        text += A;
    EXPECT_FALSE(Tools::stristr(text, text.substr(1, 100001)));
}

// The rule, literally: compare at every character.
bool containsLiterally(std::string text, std::string sub)
{
    Tools::strlwr(text);
    Tools::strlwr(sub);
    for (std::size_t i = 0; i + sub.size() <= text.size();) {
        if (text.compare(i, sub.size(), sub) == 0)
            return true;
        i += Characters::length(text, i);
    }
    return false;
}

TEST(DoubleByte, searchAgreesWithTheRule)
{
    std::mt19937 random(1);
    const std::string alphabet = "\x83\x41\x5C\x61\xC1\xE1";
    const auto randomText = [&](std::size_t size) {
        std::string text;
        while (text.size() < size)
            text += alphabet[random() % alphabet.size()];
        return text;
    };
    for (int i = 0; i < 20000; ++i) {
        const std::string text = randomText(random() % 50);
        const std::string sub = randomText(1 + random() % 4);
        EXPECT_EQ(Tools::stristr(text, sub), containsLiterally(text, sub)) << i;
    }
}

TEST(DoubleByte, characters)
{
    EXPECT_FALSE(Tools::containsAny(So, "\\", true));
    EXPECT_TRUE(Tools::containsAny("x" + So, A + So, true));
    EXPECT_FALSE(Tools::containsAny(A, So, true));
    // A set in no order.
    for (const std::string& wanted : {A, So, std::string("\x88\x9F"), std::string("z")}) {
        EXPECT_TRUE(Tools::containsAny("x" + wanted, "z\x88\x9F" + So + A, true)) << wanted;
        EXPECT_TRUE(Tools::containsAny("x" + wanted, A + So + "\x88\x9Fz", true)) << wanted;
    }
    EXPECT_EQ(Tools::replaceAny(A + "\\" + So + "A", "A" + So, '_'), A + "\\__");
    EXPECT_TRUE(Tools::startsWith(So + "x", "\x83", true)); // bytes
    EXPECT_TRUE(Tools::endsWith(A, "a", false));            // bytes again
    EXPECT_THAT(Tools::tokenize("a" + So, "\\"), testing::ElementsAre("a\x83"));
    EXPECT_EQ(Tools::trimEnd(So, "\\"), "\x83");
    EXPECT_TRUE(Tools::hasForbiddenFilenameChar("\x83\x7C"));
    EXPECT_EQ(Characters::find(So + "\\", '\\'), 2U);
    EXPECT_EQ(Characters::findLast("\\" + So, '\\'), 0U);
    EXPECT_EQ(Characters::findLast(So, '\\'), std::string::npos);
    EXPECT_FALSE(Characters::endsWith(So, '\\'));
    EXPECT_TRUE(Characters::endsWith("\x83\x83\\", '\\'));
    EXPECT_FALSE(Characters::endsWith("\\\x83\\", '\\'));
    std::string name = "\\" + So + "\\";
    Characters::replace(name, '\\', '/');
    EXPECT_EQ(name, "/" + So + "/");
    EXPECT_EQ(Characters::count(("a" + So + "\xB1").c_str()), 3U);
    EXPECT_EQ(Characters::count("a\x83"), 1U);
}

TEST(DoubleByte, caseOfThePage)
{
    // Full-width, Greek and Cyrillic letters; second bytes like letters stay.
    EXPECT_EQ(Tools::toLower("A" + A + "\x82\x60\x83\x9F\x84\x40"),
              "a" + A + "\x82\x81\x83\xBF\x84\x70");
    EXPECT_EQ(Tools::toUpper("a\x83\x61\x82\x81\x83\xBF\x84\x70"),
              "A\x83\x61\x82\x60\x83\x9F\x84\x40");
    EXPECT_EQ(Tools::toLower("\xC4\x83"), "\xC4\x83");
    EXPECT_TRUE(Tools::startsWith("\x82\x60x", "\x82\x81", false));
    EXPECT_FALSE(Tools::startsWith("\x83\x41", "\x83\x61", false));
    // The fixed tables work on bytes.
    std::string text = A;
    EXPECT_EQ(Tools::strlwr(text), "\x83\x61");
}

TEST(DoubleByte, removeTrailing)
{
    struct Case {
        const char *text, *result;
        bool isName;
    };
    static const Case cases[] = {
        {"\x83\x5C  ", "\x83\x5C", true},
        {"\x83\x5C\x83\x5C ", "\x83\x5C\x83\x5C ", false}, // the scan starts within the text
        {"\x83\x5C\x83\x5C   ", "\x83\x5C\x83\x5C", true},
        {"\x83", "\x83", true},
        {"\x83 ", "\x83 ", true}, // one character
    };
    for (const Case& c : cases) {
        std::string text = c.text;
        EXPECT_STREQ(Tools::removeTrailingBlanks(text.data()), c.result);
        std::string name = c.text;
        EXPECT_EQ(Tools::checkName(name), c.isName);
        EXPECT_EQ(name, c.result);
    }
}

}
