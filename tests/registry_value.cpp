#include <mdtools/registry.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace std::string_literals;
using Tools::RegistryValue;

constexpr RegistryValue::Type Types[] = {RegistryValue::None,        RegistryValue::String,
                                         RegistryValue::MultiString, RegistryValue::ExpandString,
                                         RegistryValue::Binary,      RegistryValue::DWord};

RegistryValue makeValue(RegistryValue::Type type)
{
    RegistryValue value;
    value.setType(type);
    return value;
}

std::string dataOf(const RegistryValue& value)
{
    return value.valid() ? std::string(value.getChars(), value.size()) : "none";
}

std::string word(unsigned char a, unsigned char b, unsigned char c, unsigned char d)
{
    return {static_cast<char>(a), static_cast<char>(b), static_cast<char>(c), static_cast<char>(d)};
}

// What each form of setData makes of each type: the data as stored, of a text with its NUL.
TEST(RegistryValue, setData)
{
    struct Case {
        const char* form;
        void (*set)(RegistryValue& value);
        std::string text, multi, binary, word;
    };
    static const char* const texts[] = {"7up", "", "c", nullptr};
    static const char* const noTexts[] = {nullptr};
    static const unsigned char bytes[] = {'8', 0, 'x', 'y', 'z'};
    const std::string zero = word(0, 0, 0, 0);
    const Case cases[] = {
        {"text", [](RegistryValue& v) { v.setData("12ab"); }, "12ab\0"s, "12ab\0\0"s, "12ab",
         word(12, 0, 0, 0)},
        {"empty text", [](RegistryValue& v) { v.setData(""); }, "\0"s, "", "", zero},
        {"text with a NUL", [](RegistryValue& v) { v.setData("1\0002"s); }, "1\0002\0"s,
         "1\0002\0\0"s, "1\0002"s, word(1, 0, 0, 0)},
        {"no number", [](RegistryValue& v) { v.setData("- 1"); }, "- 1\0"s, "- 1\0\0"s, "- 1",
         zero},
        {"minus one", [](RegistryValue& v) { v.setData(" -1"); }, " -1\0"s, " -1\0\0"s, " -1",
         word(255, 255, 255, 255)},
        {"too large", [](RegistryValue& v) { v.setData("+99999999999999999999"); },
         "+99999999999999999999\0"s, "+99999999999999999999\0\0"s, "+99999999999999999999",
         word(255, 255, 255, 255)},
        {"list",
         [](RegistryValue& v) {
             v.setData({"3a", "", "b"});
         },
         "3a\0"s, "3a\0\0b\0\0"s, "3a\0\0b\0\0"s, zero},
        {"empty list", [](RegistryValue& v) { v.setData(std::vector<std::string>()); }, "\0"s,
         "\0"s, "\0"s, zero},
        {"word", [](RegistryValue& v) { v.setData(0x01020304u); }, "\0"s, "", "", word(4, 3, 2, 1)},
        {"int", [](RegistryValue& v) { v.setData(-2); }, "\0"s, "", "", word(254, 255, 255, 255)},
        {"C string, shorter size", [](RegistryValue& v) { v.setData("9abc", 2); }, "9abc\0"s, "9a",
         "9a", zero},
        {"C string, longer size", [](RegistryValue& v) { v.setData("9\0b", 4); }, "9\0"s, "9\0b\0"s,
         "9\0b\0"s, zero},
        {"bytes", [](RegistryValue& v) { v.setData(bytes, 5); }, "8\0"s, "8\0xyz"s, "8\0xyz"s,
         word('8', 0, 'x', 'y')},
        {"few bytes", [](RegistryValue& v) { v.setData(bytes, 1); }, "8\0"s, "8", "8",
         word('8', 0, 0, 0)},
        {"texts", [](RegistryValue& v) { v.setData(texts); }, "7up\0"s, "7up\0\0c\0\0"s, "",
         word(7, 0, 0, 0)},
        {"no texts", [](RegistryValue& v) { v.setData(noTexts); }, "\0"s, "\0"s, "", zero},
        {"null array", [](RegistryValue& v) { v.setData(nullptr); }, "\0"s, "", "", zero},
        {"null characters", [](RegistryValue& v) { v.setData(static_cast<char*>(nullptr), 3); },
         "\0"s, "", "", zero},
        {"null bytes", [](RegistryValue& v) { v.setData(static_cast<unsigned char*>(nullptr), 3); },
         "\0"s, "", "", zero},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.form);
        const std::string expected[] = {"none", c.text, c.multi, c.text, c.binary, c.word};
        for (const RegistryValue::Type type : Types) {
            RegistryValue value = makeValue(type);
            c.set(value);
            EXPECT_EQ(value.type(), type);
            EXPECT_EQ(dataOf(value), expected[type]) << "type " << type;
        }
    }
}

TEST(RegistryValue, typeAndWord)
{
    for (const RegistryValue::Type type : Types) {
        RegistryValue value = makeValue(type);
        // A word is kept whatever the type is, without one, too.
        EXPECT_EQ(value.setData(5ul).getDWord(), 5u);
        EXPECT_EQ(value.valid(), type != RegistryValue::None);
        EXPECT_EQ(value.setType(type).getDWord(), 0u);
    }
    RegistryValue value = makeValue(RegistryValue::String).setData("x");
    EXPECT_EQ(value.setType(RegistryValue::String).getString(), "");
    EXPECT_EQ(value.setType(RegistryValue::None).getBytes(), nullptr);
    EXPECT_EQ(value.size(), 0u);
}

TEST(RegistryValue, texts)
{
    struct Case {
        RegistryValue::Type type;
        std::string data;
        std::vector<std::string> all;
        std::string first, second;
    };
    static const Case cases[] = {
        {RegistryValue::MultiString, "a\0bc\0\0"s, {"a", "bc"}, "a", "bc"},
        {RegistryValue::MultiString, "a\0\0bc\0\0"s, {"a"}, "a", ""}, // ends at the empty text
        {RegistryValue::MultiString, "\0"s, {}, "", ""},
        {RegistryValue::MultiString, "", {}, "", ""},
        {RegistryValue::MultiString, "a\0bc"s, {"a", "bc"}, "a", "bc"}, // no end
        {RegistryValue::MultiString, "abc", {"abc"}, "abc", ""},
        {RegistryValue::MultiString, "a\0"s, {"a"}, "a", ""},
        {RegistryValue::MultiString, "\0a\0\0"s, {}, "", ""},
        {RegistryValue::String, "ab", {"ab"}, "ab", "ab"},
        {RegistryValue::ExpandString, "", {""}, "", ""},
        {RegistryValue::Binary, "ab", {}, "", ""},
        {RegistryValue::DWord, "abcd", {}, "", ""},
        {RegistryValue::None, "ab", {}, "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.data) + " as type " + std::to_string(c.type));
        RegistryValue value = makeValue(c.type);
        value.setData(reinterpret_cast<const unsigned char*>(c.data.data()), c.data.size());
        EXPECT_EQ(value.getMultiString(), c.all);
        EXPECT_EQ(value.getString(), c.first);
        EXPECT_EQ(value.getMultiStringAt(0), c.first);
        EXPECT_EQ(value.getMultiStringAt(1), c.second);
        EXPECT_EQ(value.getMultiStringAt(static_cast<std::size_t>(-1)),
                  c.type == RegistryValue::MultiString ? "" : c.first);
    }
}

TEST(RegistryValue, getBinary)
{
    unsigned char buffer[8] = "-------";
    const RegistryValue value = makeValue(RegistryValue::String).setData("abc");
    EXPECT_EQ(value.getBinary(buffer, 2), buffer);
    EXPECT_EQ(std::string(buffer, buffer + 7), "ab-----");
    value.getBinary(buffer, sizeof buffer);
    EXPECT_EQ(std::string(buffer, buffer + 7), "abc\0---"s);
    EXPECT_EQ(value.getBinary(nullptr, 8), nullptr);
    makeValue(RegistryValue::DWord).setData(0x64636261).getBinary(buffer + 3, 8);
    EXPECT_EQ(std::string(buffer, buffer + 8), "abcabcd\0"s);
    makeValue(RegistryValue::None).getBinary(buffer, 8);
    EXPECT_EQ(buffer[0], 'a');
}

TEST(RegistryValue, copiesAreDetached)
{
    RegistryValue first = makeValue(RegistryValue::Binary).setName("n").setData("abc");
    RegistryValue second = first;
    second.getBytes()[0] = 'x';
    second.setName("m");
    EXPECT_EQ(dataOf(first), "abc");
    EXPECT_EQ(first.name(), "n");
    first = second;
    EXPECT_EQ(dataOf(first), "xbc");
    const unsigned char* bytes = second.getBytes();
    // Data of a value that is too long to be inside of the object moves along.
    second.setData(std::string(1000, 'z'));
    bytes = second.getBytes();
    const RegistryValue third = std::move(second);
    EXPECT_EQ(third.getBytes(), bytes);
    // A value's own data may be set again.
    first.setData(first.getChars() + 1, 2);
    EXPECT_EQ(dataOf(first), "bc");
}

}
