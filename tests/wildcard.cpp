#include "files/wildcard.h"
#include "files/name_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Tools::NameList;
using Tools::Wildcard;

TEST(Wildcard, matches)
{
    struct Case {
        const char *pattern, *name;
        bool matches;
    };
    static const Case cases[] = {
        {"*.bak", "a.bak", true},
        {"*.bak", "A.BAK", true},
        {"*.bak", "a.bak2", false},
        {"*.htm", "a.html", false}, // the system's short names would find it
        {"*", "", true},
        {"*.*", "readme", true},
        {"*.*", "", true},
        {"*.**", "readme", false}, // only the exact pattern stands for all
        {"?", "", false},
        {"?", "a", true},
        {"a?", "a", false}, // one character, never none
        {"???.txt", "ab.txt", false},
        {"*?", "", false},
        {"**a**b**", "xaxbx", true},
        {"", "", true},
        {"", "a", false},
        {"a.", "a", false},
        {"[a]", "a", false}, // no classes
        {"\xC4*", "\xE4x", true},
        {"\xE4?", "\xC4\xF6", true},
        {"\xC4", "A", false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Wildcard(c.pattern).matches(c.name), c.matches) << c.pattern << " " << c.name;
    EXPECT_TRUE(Wildcard(std::string_view("*.*\0x", 5)).matches("a"));
}

// The plain definition, character by character.
bool matchesByDefinition(std::string_view pattern, std::string_view name)
{
    if (pattern.empty())
        return name.empty();
    if (pattern[0] == '*')
        return matchesByDefinition(pattern.substr(1), name) ||
               (!name.empty() && matchesByDefinition(pattern, name.substr(1)));
    return !name.empty() && (pattern[0] == '?' || pattern[0] == name[0]) &&
           matchesByDefinition(pattern.substr(1), name.substr(1));
}

TEST(Wildcard, agreesWithItsDefinition)
{
    std::mt19937 random(7);
    const auto text = [&random](const char* alphabet, std::size_t length) {
        std::string result;
        for (std::size_t i = random() % (length + 1); i > 0; --i)
            result += alphabet[random() % std::string_view(alphabet).size()];
        return result;
    };
    for (int i = 0; i < 20000; ++i) {
        const std::string pattern = text("ab?*", 8);
        const std::string name = text("ab", 8);
        // Long texts take other paths: the same question after a prefix over a word's end.
        for (const std::size_t length : {0U, 61U, 64U, 130U}) {
            const std::string prefix(length, 'b');
            ASSERT_EQ(Wildcard(prefix + pattern).matches(prefix + name),
                      matchesByDefinition(pattern, name))
                << length << " " << pattern << " " << name;
        }
    }
}

TEST(Wildcard, takesLinearTime)
{
    std::string pattern;
    for (int i = 0; i < 100; ++i)
        pattern += "*a?";
    EXPECT_FALSE(Wildcard(pattern + "b").matches(std::string(255, 'a')));
    EXPECT_TRUE(Wildcard(pattern).matches(std::string(255, 'a')));
    EXPECT_FALSE(Wildcard(std::string(1 << 20, '?')).matches(std::string(255, 'a')));
    EXPECT_TRUE(Wildcard(std::string(1 << 20, '*')).matches("a"));
    EXPECT_TRUE(Wildcard("*b").matches(std::string(1 << 20, 'a') + "b"));
}

TEST(NameList, isOrderedWithoutCase)
{
    static const std::vector<std::vector<std::string>> Lists = {
        {},
        {"", "A", "b.txt", "B1", "long a", "LONG name", "long name", "long namesX", "\xC4", "\xE5"},
        // A common beginning, and names that differ late.
        {"file", "FILE1", "file10", "File2", "file300000001", "FILE300000002", "file300000002"},
        {"a\xE4", "A\xE4\x01", "a\xC4\x02"},
    };
    std::mt19937 random(3);
    for (int round = 0; round < 200; ++round) {
        const std::vector<std::string>& ordered = Lists[random() % Lists.size()];
        std::vector<std::string> names = ordered;
        std::shuffle(names.begin(), names.end(), random);
        NameList list;
        for (const std::string& name : names)
            list.add(name, name.size() == 1);
        list.sort();
        std::vector<std::string> sorted;
        for (std::size_t i = 0; i < list.size(); ++i) {
            sorted.emplace_back(list.name(i));
            EXPECT_EQ(list.isDirectory(i), list.name(i).size() == 1);
        }
        EXPECT_EQ(sorted, ordered);
    }
}

}
