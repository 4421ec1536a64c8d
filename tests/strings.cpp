// Some programs have such macros; the library's functions keep their names.
#define stricmp strcasecmp
#define strlwr lowercase
#include <mdtools/strings.h>

#include "support/locales.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>

// Single-byte text, page 1252. Double-byte text has a program of its own, because a process keeps
// its page.
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string bytes(const char* text, std::size_t size)
{
    return std::string(text, size);
}

std::string joined(std::initializer_list<std::string_view> parts)
{
    std::string text;
    for (const std::string_view part : parts)
        text += part;
    return text;
}

int sign(int value)
{
    return value < 0 ? -1 : static_cast<int>(value > 0);
}

// Texts as long as they are short enough to stay within one block, and others, with the difference
// at every place.
TEST(Strings, compareAtEveryLength)
{
    for (std::size_t size = 0; size < 70; ++size) {
        const std::string upper(size, 'Q');
        const std::string lower(size, 'q');
        EXPECT_TRUE(Tools::Strieq(upper, lower)) << size;
        EXPECT_EQ(Tools::Streq(upper, lower), size == 0) << size;
        EXPECT_EQ(sign(Tools::stricmp(upper, lower + "\x80")), -1) << size;
        for (std::size_t place = 0; place < size; ++place) {
            SCOPED_TRACE(testing::Message() << place << " of " << size);
            std::string other = lower;
            other[place] = '\xC9';
            EXPECT_FALSE(Tools::Strieq(upper, other));
            EXPECT_FALSE(Tools::Streq(lower, other));
            EXPECT_FALSE(Tools::Streq(lower.c_str(), other.c_str()));
            EXPECT_FALSE(Tools::startsWith(lower, other, true));
            EXPECT_FALSE(Tools::endsWith(lower, other, true));
            EXPECT_TRUE(Tools::Streq(std::string(other), other.c_str()));
            EXPECT_EQ(sign(Tools::stricmp(upper, other.c_str())), -1);
            EXPECT_EQ(sign(Tools::stricmp(other.c_str(), upper)), 1);
            EXPECT_EQ(sign(Tools::strcmp(lower.c_str(), other.c_str())), -1);
            other[place] = '\xE9';
            std::string same = upper;
            same[place] = '\xC9';
            EXPECT_TRUE(Tools::Strieq(same, other));
            other[place] = '\0';
            EXPECT_TRUE(Tools::Streq(other, lower.substr(0, place)));
            EXPECT_EQ(sign(Tools::stricmp(other, upper)), -1);
        }
    }
}

TEST(Strings, equalityAndOrder)
{
    struct Case {
        const char *a, *b;
        bool isEqual, isEqualWithoutCase;
        int order, orderWithoutCase;
    };
    static const Case cases[] = {
        {"ABC", "abc", false, true, -1, 0},
        {"\xC4", "\xE4", false, true, -1, 0},
        {"\xD7", "\xF7", false, true, -1, 0},   // the table maps the multiplication sign, too
        {"\xDF", "\xFF", false, false, -1, -1}, // but neither of these
        {"[", "{", false, false, -1, -1},       // just behind the letters
        {"a_", "AB", false, false, 1, -1},      // "_" lies between the cases
        {"ab", "abc", false, false, -1, -1},    // the shorter one comes first
        {"\x7F", "\x80", false, false, -1, -1}, // bytes are unsigned
        {"", "", true, true, 0, 0},
        {nullptr, nullptr, true, true, 0, -1}, // two nulls are equal, yet have no order
        {"", nullptr, false, false, 1, -1},
        {nullptr, "", false, false, -1, -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << (c.a ? c.a : "null") << " " << (c.b ? c.b : "null"));
        EXPECT_EQ(Tools::Streq(c.a, c.b), c.isEqual);
        EXPECT_EQ(Tools::Strieq(c.a, c.b), c.isEqualWithoutCase);
        EXPECT_EQ(sign(Tools::strcmp(c.a, c.b)), c.order);
        EXPECT_EQ(sign(Tools::stricmp(c.a, c.b)), c.orderWithoutCase);
        if (c.a == nullptr)
            continue;
        const std::string a = c.a;
        EXPECT_EQ(Tools::Streq(a, c.b), c.isEqual);
        EXPECT_EQ(Tools::Streq(c.b, a), c.isEqual);
        EXPECT_EQ(Tools::Strieq(a, c.b), c.isEqualWithoutCase);
        EXPECT_EQ(Tools::Strieq(c.b, a), c.isEqualWithoutCase);
        EXPECT_EQ(sign(Tools::stricmp(a, c.b)), c.orderWithoutCase);
        EXPECT_EQ(Tools::stricmp(a, a), 0);
        EXPECT_EQ(Tools::stricmp(a.c_str(), a.c_str()), 0);
    }
    EXPECT_TRUE(Tools::Streq(bytes("a\0b", 3), "a"));
    EXPECT_TRUE(Tools::Strieq(bytes("a\0b", 3), bytes("A\0c", 3)));
}

TEST(Strings, search)
{
    EXPECT_TRUE(Tools::stristr("Hello World", "O wOr"));
    EXPECT_TRUE(Tools::stristr("gr\xDC\xDF", std::string("\xFC\xDF")));
    EXPECT_FALSE(Tools::stristr(std::string("abc"), std::string("abcd")));
    EXPECT_TRUE(Tools::stristr("", ""));
    EXPECT_TRUE(Tools::stristr("a", ""));
    EXPECT_TRUE(Tools::stristr(static_cast<const char*>(nullptr), nullptr));
    EXPECT_FALSE(Tools::stristr("", nullptr));
    EXPECT_FALSE(Tools::stristr(std::string(), nullptr));
    EXPECT_FALSE(Tools::stristr(nullptr, ""));
    EXPECT_FALSE(Tools::stristr(bytes("a\0b", 3), std::string("b")));
    EXPECT_TRUE(Tools::stristr(std::string("ab"), bytes("B\0x", 3)));
    // A sought text at every place, over the borders of all blocks.
    for (std::size_t size = 1; size < 40; ++size) {
        std::string sought(size, 'X');
        sought[0] = 'A';
        for (std::size_t place = 0; place < 40; ++place) {
            const std::string text = std::string(place, 'x') + "a" + std::string(size - 1, 'x');
            EXPECT_TRUE(Tools::stristr(text, sought)) << size << " at " << place;
            EXPECT_FALSE(Tools::stristr(text.substr(0, text.size() - 1), sought));
            // Candidates that overlap the place, and that fit but for their middle.
            const std::string run = std::string(place, 'a') + std::string(size, 'a') + "b";
            EXPECT_TRUE(Tools::stristr(run, std::string(size, 'a') + "B"));
            EXPECT_EQ(Tools::replaceAll(run, std::string(size, 'a') + "b", "!"),
                      std::string(place, 'a') + "!");
            const std::string side(size, 'a');
            EXPECT_FALSE(Tools::stristr(run + run, side + "c" + side));
            EXPECT_FALSE(Tools::stristr(std::string(place + 2 * size + 1, 'a'), side + "B" + side));
        }
        // No candidate anywhere.
        EXPECT_FALSE(Tools::stristr(std::string(100, 'x'), sought));
        EXPECT_EQ(Tools::replaceAll(std::string(100, 'x'), sought, "!"), std::string(100, 'x'));
    }
}

// Text on which comparing every candidate takes many minutes, and a single walk no second.
TEST(Strings, searchIsLinear)
{
    const auto begin = std::chrono::steady_clock::now();
    const std::string half(2000000, 'a');
    const std::string text = half + half + half;
    EXPECT_TRUE(Tools::stristr(text + "b", half + "B"));
    EXPECT_FALSE(Tools::stristr(text, half + "B"));
    EXPECT_FALSE(Tools::stristr(text, "B" + half));
    EXPECT_FALSE(Tools::stristr(text, half + "B" + half));
    EXPECT_EQ(Tools::replaceAll(text, half + "b" + half, "!"), text);
    EXPECT_EQ(Tools::replaceLast(text, half + "b" + half, "!"), text);
    EXPECT_EQ(Tools::replaceAll(text + "b" + text, half + "b", "!"), half + half + "!" + text);
    EXPECT_EQ(Tools::replaceLast(half + "b" + text, half + "b", "!"), "!" + text);
    EXPECT_EQ(Tools::replaceLast("b" + text, "b" + half, "!"), "!" + half + half);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
}

TEST(Strings, affixes)
{
    struct Case {
        const char *text, *affix;
        bool starts, startsWithoutCase, ends, endsWithoutCase;
    };
    static const Case cases[] = {
        {"File.TXT", ".txt", false, false, false, true},
        {"File.TXT", "fILE", false, true, false, false},
        {"ab", "abc", false, false, false, false},
        {"ab", "", true, true, true, true},
        {"\x8A", "\x9A", false, true, false, true},   // a letter of the page only
        {"\xD7", "\xF7", false, false, false, false}, // no letter in the page
        {"\xC4rger im Mai", "\xE4RGER IM MAI", false, true, false, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.text << " " << c.affix);
        EXPECT_EQ(Tools::startsWith(c.text, c.affix, true), c.starts);
        EXPECT_EQ(Tools::startsWith(c.text, c.affix, false), c.startsWithoutCase);
        EXPECT_EQ(Tools::endsWith(c.text, c.affix, true), c.ends);
        EXPECT_EQ(Tools::endsWith(c.text, c.affix, false), c.endsWithoutCase);
    }
    EXPECT_FALSE(Tools::startsWith(bytes("a\0b", 3), bytes("a\0c", 3), false));
    for (std::size_t size = 1; size < 40; ++size) {
        const std::string lower(size, 'z');
        for (std::size_t place = 0; place < size; ++place) {
            std::string upper(size, 'Z');
            EXPECT_TRUE(Tools::startsWith(upper + "!", lower, false));
            upper[place] = '\xDA';
            EXPECT_FALSE(Tools::startsWith(upper, lower, false)) << place << " of " << size;
        }
    }
}

TEST(Strings, containsAny)
{
    EXPECT_TRUE(Tools::containsAny("abc", "xc", true));
    EXPECT_FALSE(Tools::containsAny("abc", "A", false)); // only the text is lowered
    EXPECT_TRUE(Tools::containsAny("ABC", "a", false));
    EXPECT_TRUE(Tools::containsAny("\xC4", "\xE4", false));
    EXPECT_FALSE(Tools::containsAny("abc", "", true));
    EXPECT_TRUE(Tools::containsAny(bytes("\0a", 2), "a", true));
}

TEST(Strings, fileNames)
{
    for (const char c : std::string("/:*?\"<>|")) {
        EXPECT_TRUE(Tools::hasForbiddenFilenameChar(std::string("a") + c)) << c;
        EXPECT_EQ(Tools::replaceForbiddenFilenameChars(std::string("a") + c, "$&"), "a$&") << c;
    }
    EXPECT_FALSE(Tools::hasForbiddenFilenameChar("a\\b")); // a name with folders passes
    EXPECT_FALSE(Tools::hasForbiddenFilenameChar(""));
    EXPECT_EQ(Tools::replaceForbiddenFilenameChars("a\\b:c", "_"), "a_b_c");
    EXPECT_EQ(Tools::replaceForbiddenFilenameChars("::a", ""), "a");
    const std::string longText(1000000, 'a');
    EXPECT_EQ(Tools::replaceForbiddenFilenameChars(longText + "?", ""), longText);
}

TEST(Strings, checkName)
{
    struct Case {
        const char *text, *trimmed;
        bool isName;
    };
    static const Case cases[] = {
        {" ab ", "ab", true},   {"a b", "a b", false},   {"a,b", "a,b", false},
        {"", "", false},        {"   ", "", false},      {"a\rb", "a\rb", true},
        {"\ta", "\ta", false},  {"\x1F", "\x1F", false}, {"a\nb", "a\nb", false},
        {"\x7F", "\x7F", true},
    };
    for (const Case& c : cases) {
        std::string name = c.text;
        EXPECT_EQ(Tools::checkName(name), c.isName) << c.text;
        EXPECT_EQ(name, c.trimmed);
    }
    int forbidden = 0;
    for (int byte = 1; byte < 256; ++byte) {
        std::string name = std::string("a") + static_cast<char>(byte) + "b";
        forbidden += Tools::checkName(name) ? 0 : 1;
    }
    EXPECT_EQ(forbidden, 32);
}

TEST(Strings, caseOfThePage)
{
    struct Case {
        const char *text, *lower, *upper;
    };
    static const Case cases[] = {
        {"aZ09[", "az09[", "AZ09["},
        {"\xC4\xD6\xDC\xE4\xF6\xFC", "\xE4\xF6\xFC\xE4\xF6\xFC", "\xC4\xD6\xDC\xC4\xD6\xDC"},
        {"\x8A\x9E\x9F", "\x9A\x9E\xFF", "\x8A\x8E\x9F"},
        {"\xD7\xF7\xDF", "\xD7\xF7\xDF", "\xD7\xF7\xDF"}, // no letters, and one without partner
        {"\x83\xB5\xAA", "\x83\xB5\xAA", "\x83\xB5\xAA"}, // partners that are not in the page
    };
    ASSERT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    for (const char* locale : MdToolsTest::CommaLocales) {
        const MdToolsTest::LocaleScope scope(locale);
        for (const Case& c : cases) {
            EXPECT_EQ(Tools::toLower(c.text), c.lower);
            EXPECT_EQ(Tools::toUpper(c.text), c.upper);
            EXPECT_TRUE(Tools::startsWith(c.text, c.lower, false));
            EXPECT_EQ(Tools::Strieq("\x8A\xC4", "\x9A\xE4"), false); // the fixed table lacks one
            EXPECT_EQ(std::string(Tools::skipSpaces("\xA0")), "\xA0");
        }
    }
    EXPECT_EQ(Tools::toLower(bytes("A\0B", 3)), bytes("a\0b", 3));
}

TEST(Strings, caseTables)
{
    for (int value = 1; value < 256; ++value) {
        const auto byte = static_cast<unsigned char>(value);
        std::string lower(20, static_cast<char>(byte));
        std::string upper = lower;
        const bool isUpper = (byte >= 0x41 && byte <= 0x5A) || (byte >= 0xC0 && byte <= 0xDE);
        const bool isLower = (byte >= 0x61 && byte <= 0x7A) || (byte >= 0xE0 && byte <= 0xF6) ||
                             (byte >= 0xF8 && byte <= 0xFE);
        EXPECT_EQ(&Tools::strlwr(lower), &lower);
        EXPECT_EQ(Tools::strupr(upper.data()), upper.data());
        EXPECT_EQ(lower, std::string(20, static_cast<char>(isUpper ? byte + 0x20 : byte)));
        EXPECT_EQ(upper, std::string(20, static_cast<char>(isLower ? byte - 0x20 : byte)));
    }
    EXPECT_EQ(Tools::strlwr(static_cast<char*>(nullptr)), nullptr);
}

TEST(Strings, trim)
{
    struct Case {
        const char *text, *chars, *both, *start, *end;
    };
    static const Case cases[] = {
        {" \tab c \t", " \t", "ab c", "ab c \t", " \tab c"},
        {"xyxaxyx", "xy", "a", "axyx", "xyxa"},
        {"   ", " ", "", "", ""},
        {"ab", "", "ab", "ab", "ab"},
        {"", " ", "", "", ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Tools::trim(c.text, c.chars), c.both) << c.text;
        EXPECT_EQ(Tools::trimStart(c.text, c.chars), c.start) << c.text;
        EXPECT_EQ(Tools::trimEnd(c.text, c.chars), c.end) << c.text;
    }
    EXPECT_EQ(Tools::trim(bytes("\0a\0", 3), bytes("\0", 1)), "a");
}

TEST(Strings, replace)
{
    struct Case {
        const char *text, *from, *to, *all, *last;
    };
    static const Case cases[] = {
        {"aaa", "a", "aa", "aaaaaa", "aaaa"}, // inserted text is not looked at again
        {"aaaaa", "aa", "b", "bba", "aaab"},  {"x", "", "y", "x", "x"},
        {"x", "xy", "z", "x", "x"},           {"", "x", "z", "", ""},
        {"a.b.c", ".", "", "abc", "a.bc"},    {"abab", "abab", "", "", ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Tools::replaceAll(c.text, c.from, c.to), c.all) << c.text << " " << c.from;
        EXPECT_EQ(Tools::replaceLast(c.text, c.from, c.to), c.last) << c.text << " " << c.from;
    }
    EXPECT_EQ(Tools::replaceAll(bytes("a\0a", 3), "a", "b"), bytes("b\0b", 3));
    EXPECT_EQ(Tools::replaceAny("a/b\\c", "/\\", '_'), "a_b_c");
    EXPECT_EQ(Tools::replaceAny("abc", "", '_'), "abc");
    EXPECT_EQ(Tools::replaceAny(bytes("\0\x80", 2), bytes("\0\x80", 2), '_'), "__");
    for (std::size_t gap = 0; gap < 40; ++gap) {
        const std::string filler(gap, '.');
        EXPECT_EQ(Tools::replaceAll(joined({filler, "ab", filler, "ab"}), "ab", "xyz"),
                  joined({filler, "xyz", filler, "xyz"}));
    }
}

TEST(Strings, tokenize)
{
    EXPECT_THAT(Tools::tokenize(",a,,b,", ","), ElementsAre("a", "b"));
    EXPECT_THAT(Tools::tokenize("a;b,c", ",;"), ElementsAre("a", "b", "c"));
    EXPECT_THAT(Tools::tokenize("", ","), IsEmpty());
    EXPECT_THAT(Tools::tokenize(",,", ","), IsEmpty());
    EXPECT_THAT(Tools::tokenize("ab", ""), ElementsAre("ab"));
    EXPECT_THAT(Tools::tokenize(bytes("a\0b", 3), bytes("\0", 1)), ElementsAre("a", "b"));
    // Lines longer than one block, with few and with many different delimiters.
    for (const std::string delimiters : {" ", " \t,", " \t\r\n,;:./\\|!?"}) {
        for (std::size_t length = 1; length < 150; ++length) {
            const std::string word(length, 'w');
            const std::string blanks(length, ' ');
            EXPECT_THAT(Tools::tokenize(joined({word, " ", word, "  ", word, blanks}), delimiters),
                        ElementsAre(word, word, word));
        }
    }
    const std::string many(100000, ' ');
    std::string alternating;
    for (int i = 0; i < 50000; ++i)
        alternating += "x ";
    EXPECT_THAT(Tools::tokenize(many, " "), IsEmpty());
    EXPECT_EQ(Tools::tokenize(alternating, " "), std::vector<std::string>(50000, "x"));
}

TEST(Strings, wrap)
{
    EXPECT_THAT(Tools::tokenize("aa bb cc", 6), ElementsAre("aa bb", "cc")); // blanks do not count
    EXPECT_THAT(Tools::tokenize("aa bb", 4), ElementsAre("aa", "bb"));
    EXPECT_THAT(Tools::tokenize("aa bb", 5), ElementsAre("aa bb"));
    EXPECT_THAT(Tools::tokenize("\ta  longword b", 4), ElementsAre("a", "longword", "b"));
    EXPECT_THAT(Tools::tokenize("a b", 0), ElementsAre("a", "b"));
    EXPECT_THAT(Tools::tokenize(" \t", 10), IsEmpty());
}

TEST(Strings, removeInPlace)
{
    struct Case {
        const char *text, *leading, *trailing, *both;
    };
    static const Case cases[] = {
        {"  ab  ", "ab  ", "  ab", "ab"},
        {"\tab\t", "\tab\t", "\tab\t", "\tab\t"},
        {"   ", "", "", ""},
        {"", "", "", ""},
        {"a b", "a b", "a b", "a b"},
    };
    for (const Case& c : cases) {
        std::string leading = c.text;
        std::string trailing = c.text;
        std::string both = c.text;
        EXPECT_EQ(Tools::removeLeadingBlanks(leading.data()), leading.data());
        EXPECT_EQ(Tools::removeTrailingBlanks(trailing.data()), trailing.data());
        Tools::removeBlanks(both.data());
        EXPECT_STREQ(leading.c_str(), c.leading);
        EXPECT_STREQ(trailing.c_str(), c.trailing);
        EXPECT_STREQ(both.c_str(), c.both);
    }
    std::string zeros = "007700";
    EXPECT_STREQ(Tools::removeLeadingCharakters(zeros.data(), '0'), "7700");
    EXPECT_STREQ(Tools::removeTrailingCharakters(zeros.data(), '0'), "77");
    std::string empty;
    EXPECT_STREQ(Tools::removeLeadingCharakters(empty.data(), '\0'), "");
    EXPECT_EQ(Tools::removeLeadingBlanks(nullptr), nullptr);
    EXPECT_EQ(Tools::removeTrailingCharakters(nullptr, 'x'), nullptr);
    Tools::removeBlanks(nullptr);
    EXPECT_STREQ(Tools::skipSpaces("\t \n\v\f\rab "), "ab ");
    EXPECT_STREQ(Tools::skipSpaces(" "), "");
    EXPECT_STREQ(Tools::skipSpaces("\xA0"), "\xA0");
}

TEST(Strings, copy)
{
    char buffer[8];
    const auto copied = [&buffer](std::size_t size, const char* text) {
        std::memset(buffer, '#', sizeof buffer);
        EXPECT_EQ(Tools::strncpy(buffer, size, text), 0);
        return std::string(buffer, sizeof buffer);
    };
    EXPECT_EQ(copied(4, "hello"), bytes("hel\0####", 8));
    EXPECT_EQ(copied(8, "hi"), bytes("hi\0#####", 8)); // nothing behind the terminator changes
    EXPECT_EQ(copied(1, "hi"), bytes("\0#######", 8));
    EXPECT_EQ(copied(0, "hi"), bytes("\0#######", 8));
    EXPECT_EQ(copied(4, nullptr), "########");
    EXPECT_EQ(Tools::strncpy(nullptr, 4, "x"), 0);
    const std::unique_ptr<char[]> empty(Tools::stringDuplicate(nullptr));
    EXPECT_STREQ(empty.get(), "");
    const std::unique_ptr<char[]> text(Tools::stringDuplicate("abc"));
    EXPECT_STREQ(text.get(), "abc");
}

TEST(Strings, wholeNumbers)
{
    struct Case {
        const char* text;
        bool isInt, isUnsigned;
        int value;
        unsigned int unsignedValue;
        int saturated;
    };
    static const Case cases[] = {
        {"", false, false, 0, 0, 0},
        {"abc", false, false, 0, 0, 0},
        {"- 1", false, false, 0, 0, 0},
        {"+-1", false, false, 0, 0, 0},
        {" 42xyz", true, true, 42, 42, 42},
        {"\v\f+7", true, true, 7, 7, 7},
        {"0x10", true, true, 0, 0, 0},
        {"-0", true, true, 0, 0, 0},
        {"-1", true, true, -1, 4294967295U, -1},
        {"2147483647", true, true, INT_MAX, 2147483647U, INT_MAX},
        {"2147483648", false, true, 0, 2147483648U, INT_MAX},
        {"-2147483648", true, true, INT_MIN, 2147483648U, INT_MIN},
        {"-2147483649", false, true, 0, 2147483647U, INT_MIN},
        {"4294967295", false, true, 0, 4294967295U, INT_MAX},
        {"4294967296", false, false, 0, 0, INT_MAX},
        {"-4294967295", false, true, 0, 1, INT_MIN},
        {"-4294967296", false, false, 0, 0, INT_MIN},
        {"99999999999999999999999999", false, false, 0, 0, INT_MAX},
        {"00000000000000000000000012", true, true, 12, 12, 12},
        {"\xA0"
         "1",
         false, false, 0, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(Tools::tryParseInt(c.text).hasValue(), c.isInt);
        EXPECT_EQ(Tools::tryParseInt(c.text).getValue(), c.value);
        EXPECT_EQ(Tools::tryParseLong(c.text).hasValue(), c.isInt);
        EXPECT_EQ(Tools::tryParseLong(c.text).getValue(), c.value);
        EXPECT_EQ(Tools::tryParseUInt(c.text).hasValue(), c.isUnsigned);
        EXPECT_EQ(Tools::tryParseUInt(c.text).getValue(), c.unsignedValue);
        EXPECT_EQ(Tools::atoi(c.text), c.saturated);
        EXPECT_EQ(Tools::atol(std::string(c.text)), c.saturated);
    }
    EXPECT_EQ(Tools::atoi(nullptr), 0);
    EXPECT_EQ(Tools::atol(nullptr), 0);
    EXPECT_EQ(Tools::atof(nullptr), 0.0);
}

TEST(Strings, realNumbers)
{
    const double infinity = std::numeric_limits<double>::infinity();
    struct Case {
        const char* text;
        bool isNumber;
        double value; // what atof gives
    };
    static const Case cases[] = {
        {"", false, 0.0},
        {"-", false, 0.0},
        {".", false, 0.0},
        {"e5", false, 0.0},
        {" \t1.5xyz", true, 1.5},
        {"-.5", true, -0.5},
        {"+5.", true, 5.0},
        {"1,5", true, 1.0}, // whatever the locale
        {"1e", true, 1.0},
        {"1e+", true, 1.0},
        {"12e-1", true, 1.2},
        {"0x10", true, 16.0},
        {"0x1.8P1", true, 3.0},
        {"0xg", true, 0.0}, // the zero before the x
        {"INFinite", true, infinity},
        {"-infinity", true, -infinity},
        {"1e400", false, infinity},
        {"-1e400", false, -infinity},
        {"1e-400", false, 0.0},
        {"0e999999999999", true, 0.0},
        {"1e-99999999999999999999", false, 0.0},
        {"1.7976931348623157e308", true, std::numeric_limits<double>::max()},
        {"2.2250738585072014e-308", true, std::numeric_limits<double>::min()},
        {"2.2250738585072011e-308", false, 2.2250738585072009e-308},
        {"0x1p-1074", true, 5e-324}, // subnormal, but exact
        {"5e-324", false, 5e-324},
        {"0x1.8p-1074", false, 1e-323},
        {"9007199254740993", true, 9007199254740992.0},
        {"0.1", true, 0.1},
        {"18446744073709551617", true, 18446744073709551616.0}, // more than 64 bits
        // Ties, to the even neighbour unless a digit far away says more.
        {"0x1.00000000000008p0", true, 0x1p0},
        {"0x1.00000000000018p0", true, 0x1.0000000000002p0},
        {"0x1.000000000000080000000000000000000000000000000001p0", true, 0x1.0000000000001p0},
        {"4503599627370496.5", true, 4503599627370496.0},
        {"4503599627370497.5", true, 4503599627370498.0},
        {"4503599627370496.50000000000000000000000000000000000001", true, 4503599627370497.0},
        // 16 digits and some decimals: the last bit depends on them.
        {"1234567890123456.7", true, 0x1.18b54f22aeb02cp50},
        {"1234567890123456.9", true, 0x1.18b54f22aeb03ap50},
        {"8765432109876543.21", true, 8765432109876543.0},
        {"123456789012345678901234567890", true, 123456789012345678901234567890.0},
        {"0.30000000000000004", true, 0.30000000000000004},
    };
    for (const char* locale : MdToolsTest::CommaLocales) {
        const MdToolsTest::LocaleScope scope(locale);
        for (const Case& c : cases) {
            SCOPED_TRACE(c.text);
            EXPECT_EQ(Tools::tryParseDouble(c.text).hasValue(), c.isNumber);
            EXPECT_EQ(Tools::tryParseDouble(c.text).getValue(), c.isNumber ? c.value : 0.0);
            EXPECT_EQ(Tools::atof(c.text), c.value);
            EXPECT_EQ(Tools::atof(std::string(c.text)), c.value);
        }
    }
    EXPECT_FALSE(std::signbit(Tools::atof("-")));
    EXPECT_TRUE(std::signbit(Tools::atof("-0")));
    EXPECT_TRUE(std::isnan(Tools::tryParseDouble("nan(x)").getValue()));
    const std::string zeros(1000000, '0');
    EXPECT_EQ(Tools::tryParseDouble("0." + zeros + "1e1000001").getValue(), 1.0);
}

}
