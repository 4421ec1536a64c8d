#include "support/registry_test.h"

#include <mdtools/registry.h>

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::string_literals;
using namespace Tools;
using MdToolsTest::RegistryTest;

RegistryKey findUser(const std::string& path, bool create = false)
{
    return Registry::find(Registry::CurrentUser, path, create);
}

std::string repeat(const std::string& text, std::size_t count)
{
    std::string result;
    while (count-- > 0)
        result += text;
    return result;
}

TEST_F(RegistryTest, paths)
{
    ASSERT_TRUE(RegistryKey(m_key, "Sub/Deeper", true).valid());
    struct Case {
        std::string path;
        bool valid;
    };
    const Case cases[] = {
        {m_path + "\\Sub\\Deeper", true},
        {"/" + m_path + "/sub/DEEPER", true},
        {"\\" + m_path, true},
        {"//" + m_path, false}, // the second separator is kept
        {"/\\" + m_path, false},
        {m_path + "\\\\Sub//Deeper\\\\", true},
        {m_path + "\\Sub\\", true},
        {m_path + "\\Su", false},
        {m_path + "\\Sub\\Deeper\\x", false},
        {m_path + "\0\\x"s, true}, // ends at the NUL
        {"", true},
        {"/", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(findUser(c.path).valid(), c.valid);
        EXPECT_EQ(Registry::find(Registry::CurrentUser, c.path.c_str(), false).valid(), c.valid);
    }
    EXPECT_TRUE(Registry::find(Registry::CurrentUser, nullptr, false).valid());
    EXPECT_FALSE(findUser("//" + m_path, true).valid());
    EXPECT_TRUE(findUser("", true).valid());
    for (const int hive : {-1, 3, 1000})
        EXPECT_FALSE(Registry::find(static_cast<Registry::Hive>(hive), m_path, true).valid());
    for (const Registry::Hive hive : {Registry::LocalMachine, Registry::ClassesRoot})
        EXPECT_TRUE(Registry::find(hive, "", false).valid());
}

TEST_F(RegistryTest, limits)
{
    const std::string name(255, 'n');
    const std::string valueName(16383, 'v');
    EXPECT_TRUE(RegistryKey(m_key, name, true).valid());
    EXPECT_TRUE(RegistryKey(m_key, name, false).valid());
    EXPECT_FALSE(RegistryKey(m_key, name + "n", true).valid());
    EXPECT_FALSE(RegistryKey(m_key, name + "n", false).valid());

    // 4,096 characters, in long names and in many levels.
    for (const std::string& path : {repeat(name + "/", 16), repeat("level of a path/", 256)}) {
        ASSERT_EQ(path.size(), 4096u);
        EXPECT_TRUE(RegistryKey(m_key, path, true).valid());
        RegistryKey(m_key, path, false).add(makeValue("deep", RegistryValue::DWord).setData(3));
        EXPECT_EQ(RegistryKey(m_key, path, false)["deep"].getDWord(), 3u);
        EXPECT_FALSE(RegistryKey(m_key, path + "/", false).valid());
        EXPECT_FALSE(RegistryKey(m_key, path + "x", true).valid());
    }

    writeText(valueName, "long");
    EXPECT_EQ(m_key[valueName].getString(), "long");
    writeText(valueName + "v", "too long");
    EXPECT_FALSE(m_key[valueName + "v"].valid());
    EXPECT_EQ(Platform::countValues(m_key.handle()), 1);
    // Longer than what walking has room for.
    RegistryValue::Iterator walk(m_key);
    EXPECT_FALSE(walk.begin().valid());
    EXPECT_TRUE(walk.valid());
}

// What is written comes back, byte for byte.
TEST_F(RegistryTest, everyType)
{
    struct Case {
        RegistryValue::Type type;
        std::string data, stored;
    };
    const std::string large(100000, 'x');
    const Case cases[] = {
        {RegistryValue::String, "caf\xE9 %PATH%", "caf\xE9 %PATH%\0"s},
        {RegistryValue::String, "", "\0"s},
        {RegistryValue::String, large, large + "\0"s},
        {RegistryValue::ExpandString, "%PATH%;x", "%PATH%;x\0"s},
        {RegistryValue::MultiString, "a\0bc\0\0"s, "a\0bc\0\0"s},
        {RegistryValue::MultiString, "", ""},
        {RegistryValue::MultiString, "a\0bc"s, "a\0bc\0"s}, // gets a NUL when it has none
        {RegistryValue::MultiString, "a\0"s, "a\0"s},
        {RegistryValue::Binary, "\0\xFF\x80 \0"s, "\0\xFF\x80 \0"s},
        {RegistryValue::Binary, "", ""},
        {RegistryValue::DWord, "\x01\x02\xFE\xFF"s, "\x01\x02\xFE\xFF"s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("type " + std::to_string(c.type) + ", " +
                     ::testing::PrintToString(c.data.substr(0, 40)));
        RegistryValue value = makeValue("Name", c.type);
        value.setData(reinterpret_cast<const unsigned char*>(c.data.data()), c.data.size());
        const RegistryValue read = m_key.add(value)["NAME"];
        EXPECT_EQ(read.name(), "NAME");
        ASSERT_EQ(read.type(), c.type);
        EXPECT_EQ(std::string(read.getChars(), read.size()), c.stored);
    }
}

// What other programs may have stored.
TEST_F(RegistryTest, foreignData)
{
    struct Case {
        std::uint32_t kind;
        std::string data;
        RegistryValue::Type type;
        std::string text;
        std::uint32_t word;
    };
    static const Case cases[] = {
        {0, "x", RegistryValue::None, "", 0},
        {11, "12345678", RegistryValue::None, "", 0},
        {5, "1234", RegistryValue::None, "", 0}, // a word with the high byte first
        {0x10001, "x", RegistryValue::None, "", 0},
        {1, "ab\0cd\0"s, RegistryValue::String, "ab", 0},
        {1, "", RegistryValue::String, "", 0},
        {2, "ab\0"s, RegistryValue::ExpandString, "ab", 0},
        {7, "", RegistryValue::MultiString, "", 0},
        {7, "a\0b\0"s, RegistryValue::MultiString, "a", 0},
        {4, "\1\2\3"s, RegistryValue::DWord, "", 0x030201},
        {4, "", RegistryValue::DWord, "", 0},
        {4, "\1\2\3\4\5"s, RegistryValue::DWord, "", 0}, // does not fit
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("kind " + std::to_string(c.kind) + ", " + ::testing::PrintToString(c.data));
        ASSERT_TRUE(
            Platform::writeValue(m_key.handle(), "v", c.kind, c.data.data(), c.data.size()));
        const RegistryValue value = m_key["v"];
        EXPECT_EQ(value.type(), c.type);
        EXPECT_EQ(value.getString(), c.text);
        EXPECT_EQ(value.getDWord(), c.word);
    }
}

TEST_F(RegistryTest, addAndRemove)
{
    writeText("Kept Case", "1");
    writeText("KEPT CASE", "2");
    EXPECT_EQ(m_key["kept case"].getString(), "2");
    EXPECT_EQ(RegistryValue::Iterator(m_key).begin().name(), "Kept Case");
    EXPECT_EQ(Platform::countValues(m_key.handle()), 1);

    // A value without a type clears.
    m_key.add(makeValue("kept CASE", RegistryValue::None));
    EXPECT_FALSE(m_key["Kept Case"].valid());
    m_key.add(makeValue("never there", RegistryValue::None));

    writeText("a", "1");
    writeText("", "default");
    m_key.remove(makeValue("A", RegistryValue::Binary)).remove(makeValue("b", RegistryValue::None));
    EXPECT_FALSE(m_key["a"].valid());
    EXPECT_EQ(m_key[""].getString(), "default");

    // What lies between the letters has no case.
    writeText("[\\]^_", "upper");
    writeText("{|}~\x7F", "lower");
    EXPECT_EQ(m_key["[\\]^_"].getString(), "upper");
    writeText("@", "upper");
    EXPECT_FALSE(m_key["`"].valid());

    // Letters of the code page have case, too.
    writeText("\xC4ndern", "3");
    EXPECT_EQ(m_key["\xE4NDERN"].getString(), "3");
    EXPECT_TRUE(RegistryKey(m_key,
                            "\xDC"
                            "ber",
                            true)
                    .valid());
    EXPECT_TRUE(RegistryKey(m_key,
                            "\xFC"
                            "BER",
                            false)
                    .valid());
}

TEST_F(RegistryTest, keysOwnTheirHandles)
{
    RegistryKey copy = m_key;
    EXPECT_NE(copy.handle(), m_key.handle());
    copy.add(makeValue("x", RegistryValue::DWord).setData(7));
    EXPECT_EQ(m_key["x"].getDWord(), 7u);

    RegistryKey moved = std::move(copy);
    EXPECT_FALSE(copy.valid());
    moved = RegistryKey(m_key.handle(), "Sub", true);
    EXPECT_FALSE(moved["x"].valid());
    moved = m_key;
    const RegistryKey& self = moved;
    moved = self;
    EXPECT_EQ(moved["x"].getDWord(), 7u);

    const RegistryKey taken(Platform::openKey(m_key.handle(), {}, false));
    EXPECT_EQ(taken["x"].getDWord(), 7u);
    EXPECT_EQ(RegistryValue(taken.handle(), "x").getDWord(), 7u);

    RegistryKey none;
    EXPECT_FALSE(RegistryKey(none).valid());
    EXPECT_FALSE(RegistryKey(none, "Sub", true).valid());
    EXPECT_FALSE(RegistryKey(nullptr, m_path, false).valid());
    none.add(makeValue("x", RegistryValue::DWord)).remove(makeValue("x", RegistryValue::DWord));
    EXPECT_FALSE(none["x"].valid());
    EXPECT_EQ(none["x"].name(), "x");
}

TEST_F(RegistryTest, deletedKey)
{
    RegistryKey sub(m_key, "Sub", true);
    RegistryKey deep(m_key, "Sub\\Deep", true);
    sub.add(makeValue("x", RegistryValue::DWord).setData(1));
    const std::string_view names[] = {"SUB"};
    ASSERT_TRUE(Platform::removeTree(m_key.handle(), names));
    EXPECT_FALSE(Platform::removeTree(m_key.handle(), names));

    for (RegistryKey* key : {&sub, &deep}) {
        EXPECT_TRUE(key->valid());
        key->add(makeValue("x", RegistryValue::DWord).setData(2));
        EXPECT_FALSE((*key)["x"].valid());
        EXPECT_FALSE(RegistryKey(*key).valid());
        EXPECT_FALSE(RegistryKey(*key, "New", true).valid());
        RegistryValue::Iterator walk(*key);
        EXPECT_FALSE(walk.begin().valid() || walk.valid());
    }
    // A new key of the same name is another one.
    const RegistryKey again(m_key, "Sub", true);
    EXPECT_FALSE(again["x"].valid());
    EXPECT_FALSE(sub["x"].valid());
    EXPECT_FALSE(RegistryKey(m_key, "Sub\\Deep", false).valid());
}

TEST_F(RegistryTest, walkSubkeys)
{
    RegistryKey::Iterator walk(m_key);
    EXPECT_FALSE(walk.begin().valid());
    EXPECT_FALSE(walk.valid());
    for (const char* name : {"b", "A", "c"})
        RegistryKey(m_key, name, true).add(makeValue("is", RegistryValue::String).setData(name));
    // The index is still negative after begin() on the empty key.
    EXPECT_FALSE(walk[1].valid());

    std::string order;
    for (walk.begin(); walk.valid(); ++walk)
        order += (*walk)["is"].getString();
    EXPECT_EQ(order, "Abc");
    EXPECT_EQ(walk.end()["is"].getString(), "c");
    EXPECT_TRUE(walk.valid());
    EXPECT_EQ((walk--)["is"].getString(), "c");
    EXPECT_EQ((*walk)["is"].getString(), "b");
    EXPECT_EQ((--walk)["is"].getString(), "A");
    EXPECT_EQ((walk++)["is"].getString(), "A");
    RegistryKey::Iterator copy = walk;
    EXPECT_EQ((++copy)["is"].getString(), "c");
    EXPECT_EQ((*walk)["is"].getString(), "b");
    EXPECT_EQ(copy[0]["is"].getString(), "A");
    EXPECT_FALSE(copy[3].valid() || copy[-1].valid());
    EXPECT_FALSE((++copy).valid() || copy.valid());

    RegistryKey::Iterator none;
    EXPECT_FALSE(none.begin().valid() || none.end().valid() || none.valid() || none[0].valid());
}

TEST_F(RegistryTest, walkValues)
{
    RegistryValue::Iterator walk(m_key);
    EXPECT_FALSE(walk.begin().valid() || walk.valid());
    const std::set<std::string> names = {"", "b", "A", "c"};
    for (const std::string& name : names)
        writeText(name, "is " + name);
    // Unlike the subkeys' iterator it looks at the index only where it is.
    EXPECT_TRUE(walk[3].valid());

    std::set<std::string> seen;
    for (walk.begin(); walk.valid(); ++walk)
        seen.insert((*walk).name());
    EXPECT_EQ(seen, names);
    const RegistryValue last = walk.end();
    EXPECT_EQ(last.getString(), "is " + last.name());
    EXPECT_EQ(walk[3].name(), last.name());
    EXPECT_EQ((walk--).name(), last.name());
    EXPECT_EQ((*walk).name(), walk[2].name());
    EXPECT_EQ((walk++).name(), walk[2].name());
    EXPECT_EQ((--walk).name(), walk[2].name());
    EXPECT_FALSE(walk[4].valid() || walk[-1].valid());

    RegistryValue::Iterator none;
    EXPECT_FALSE(none.begin().valid() || none.end().valid() || none.valid() || none[0].valid());
}

TEST_F(RegistryTest, severalThreads)
{
    constexpr int Count = 100;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([this, number] {
            const std::string own = std::to_string(number);
            for (int i = 0; i < Count; ++i) {
                RegistryKey key = findUser(m_path + "/Threads/" + own, true);
                key.add(makeValue(std::to_string(i), RegistryValue::DWord).setData(number));
                EXPECT_EQ(key[std::to_string(i)].getDWord(), static_cast<unsigned>(number));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    for (int number = 0; number < 4; ++number)
        EXPECT_EQ(Platform::countValues(
                      RegistryKey(m_key, "Threads/" + std::to_string(number), false).handle()),
                  Count);
}

// Whoever reads while another one writes finds one of the values, never a mixture.
TEST_F(RegistryTest, readersDuringWrites)
{
    std::atomic<bool> isDone = false;
    std::vector<std::thread> readers;
    writeText("v", "0");
    for (int number = 0; number < 3; ++number)
        readers.emplace_back([this, &isDone] {
            const RegistryKey copy = m_key;
            while (!isDone) {
                const std::string text = copy["v"].getString();
                ASSERT_FALSE(text.empty());
                ASSERT_EQ(text, std::string(text.size(), text[0]));
            }
        });
    for (int i = 0; i < 500; ++i)
        writeText("v", std::string(1 + static_cast<std::size_t>(i % 50),
                                   static_cast<char>('0' + i % 10)));
    isDone = true;
    for (std::thread& reader : readers)
        reader.join();
}

}
