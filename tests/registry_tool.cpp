#include "support/child_process.h"
#include "support/files.h"
#include "support/registry_test.h"
#include "tools/registration_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace std::string_literals;
using namespace Tools;
using namespace Tools::Registration;
using namespace MdToolsTest;

const std::string Head5 = "Windows Registry Editor Version 5.00\n";
const std::string Head4 = "REGEDIT4\n";

// The text as a file in UTF-16; bytes beyond ASCII are Latin letters.
std::string utf16(const std::string& text)
{
    std::string bytes = "\xFF\xFE";
    for (const char c : text)
        (bytes += c) += '\0';
    return bytes;
}

// One line a change: what it does, the key, the name, the type and the data.
std::string describe(const Content& content)
{
    std::string text;
    for (const Change& change : content.changes) {
        const std::string key = content.keys[change.key].text();
        switch (change.kind) {
        case Change::Kind::CreateKey:
            text += "+" + key;
            break;
        case Change::Kind::RemoveKey:
            text += "-" + key;
            break;
        case Change::Kind::RemoveValue:
            text += "-" + key + ":" + change.name;
            break;
        case Change::Kind::SetValue:
            text += key + ":" + change.name + "=" + std::to_string(change.type) + "," + change.data;
            break;
        }
        text += "\n";
    }
    return text;
}

TEST(RegistrationFile, values)
{
    struct Case {
        std::string line;
        std::string name;
        std::uint32_t type;
        std::string data;
    };
    // In the REGEDIT4 form, whose bytes are the data as it is.
    static const Case cases[] = {
        {R"("n"="text")", "n", 1, "text\0"s},
        {R"(@="")", "", 1, "\0"s},
        {R"("@"="a" ; remark)", "@", 1, "a\0"s},
        {R"("a\\b\"c"  =  "C:\\x \"y\" ;z")", "a\\b\"c", 1, "C:\\x \"y\" ;z\0"s},
        {"\"\xE4\"=\"\xD6\x80\"", "\xE4", 1, "\xD6\x80\0"s},
        {R"("n"=dword:0000000a)", "n", 4, "\x0A\0\0\0"s},
        {R"("n"=dword:FEDCBA98)", "n", 4, "\x98\xBA\xDC\xFE"s},
        {R"("n"=dword:1)", "n", 4, "\1\0\0\0"s},
        {R"("n"=hex:)", "n", 3, ""},
        {R"("n"=hex:01,ff,0,AB)", "n", 3, "\x01\xFF\0\xAB"s},
        {"\"n\"=hex:01,\\\r\n  02,\\\n\t03", "n", 3, "\1\2\3"},
        {"\"n\"=hex:\\\n01 , 02", "n", 3, "\1\2"},
        {R"("n"=hex(2):25,50,25,00)", "n", 2, "%P%\0"s},
        {R"("n"=hex(7):61,00,62,00,00)", "n", 7, "a\0b\0\0"s},
        {R"("n"=hex(4):01,02)", "n", 4, "\1\2"},
        {R"("n"=hex(00000001):61)", "n", 1, "a\0"s}, // an end is added
        {R"("n"=hex(7):)", "n", 7, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        const Content content = parse(Head4 + "[HKCU\\K]\n" + c.line + "\n");
        ASSERT_EQ(content.changes.size(), 2u);
        const Change& change = content.changes[1];
        EXPECT_EQ(change.kind, Change::Kind::SetValue);
        EXPECT_EQ(change.name, c.name);
        EXPECT_EQ(change.type, c.type);
        EXPECT_EQ(change.data, c.data);
    }
}

TEST(RegistrationFile, wholeFiles)
{
    const std::string body = "\r\n; remark\r\n[HKEY_CURRENT_USER\\K\\a]b]\r\n"
                             "\"x\"=\"\xE4\"\r\n\"y\"=-\r\n  @=-\r\n\"t\"=hex(7):e4,00,00,00\r\n"
                             "[-hkey_Local_Machine\\Gone]\r\n[HKCR]";
    const std::string expected = "+HKEY_CURRENT_USER\\K\\a]b\n"
                                 "HKEY_CURRENT_USER\\K\\a]b:x=1,\xE4\0\n"
                                 "-HKEY_CURRENT_USER\\K\\a]b:y\n"
                                 "-HKEY_CURRENT_USER\\K\\a]b:\n"
                                 "HKEY_CURRENT_USER\\K\\a]b:t=7,\xE4\0\n"
                                 "-HKEY_LOCAL_MACHINE\\Gone\n"
                                 "+HKEY_CLASSES_ROOT\n"s;
    std::string asUtf8 = body;
    asUtf8.replace(asUtf8.find('\xE4'), 1, "\xC3\xA4");
    EXPECT_EQ(describe(parse(utf16(Head5 + body))), expected);
    EXPECT_EQ(describe(parse("\xEF\xBB\xBF" + Head5 + asUtf8)), expected);
    EXPECT_EQ(describe(parse(Head5 + asUtf8)), expected);
    EXPECT_EQ(describe(parse(Head5 + body)), expected);

    const Content unknown = parse(Head5 + "[HKCU\\K]\n\"q\"=hex(b):01,02\n@=dword:1\n");
    EXPECT_EQ(unknown.changes.size(), 2u);
    ASSERT_EQ(unknown.unknown.size(), 1u);
    EXPECT_EQ(unknown.unknown[0].type, 11u);
    EXPECT_EQ(unknown.unknown[0].line, 3u);
    EXPECT_TRUE(parse("REGEDIT4").changes.empty());
}

struct FaultyFile {
    std::string file;
    std::size_t line;
};

void expectFaults(const std::vector<FaultyFile>& files)
{
    for (const FaultyFile& faulty : files) {
        SCOPED_TRACE(faulty.file.substr(0, 100));
        try {
            parse(faulty.file);
            ADD_FAILURE() << "no fault found";
        } catch (const Fault& fault) {
            EXPECT_EQ(fault.line(), faulty.line) << fault.what();
        }
    }
}

TEST(RegistrationFile, faultyHeadsAndKeys)
{
    expectFaults({
        {"", 1},
        {"\xFF\xFE", 1},
        {"REGEDIT5\n", 1},
        {"\n" + Head5, 1},
        {Head5 + "x", 2},
        {Head5 + "\"n\"=\"v\"", 2}, // no key
        {Head5 + "[HKCU\\K", 2},
        {Head5 + "[HKCU\\K] x", 2},
        {Head5 + "[HKEY_USERS\\K]", 2},
        {Head5 + "[K]", 2},
        {Head5 + "[]", 2},
        {Head5 + "[-]", 2},
        {Head5 + "[-HKCU\\]", 2}, // a root
        {Head5 + "[HKCU/K]", 2},
        {Head5 + "[HKCU\\" + std::string(256, 'x') + "]", 2},
        {Head5 + "[-HKCU\\K]\n@=\"x\"", 3},
        {"\xFF\xFEx", 1},
        {"\xEF\xBB\xBF" + Head5 + "\xE4", 1},
    });
}

TEST(RegistrationFile, faultyValues)
{
    const std::string key = Head5 + "\n[HKCU\\K]\n";
    expectFaults({
        {key + "\n@=", 5},
        {key + "@", 4},
        {key + "@=\"x", 4},
        {key + "@=\"x\\", 4},
        {key + "@=\"x\"y", 4},
        {key + "n=\"x\"", 4},
        {key + "\"" + std::string(16384, 'n') + "\"=-", 4},
        {key + "@=dword:", 4},
        {key + "@=dword:123456789", 4},
        {key + "@=dword:12g", 4},
        {key + "@=hex:1,", 4},
        {key + "@=hex:123", 4},
        {key + "@=hex:,1", 4},
        {key + "@=hex:1 2", 4},
        {key + "@=hex:01,\\", 4},
        {key + "@=hex:01,\\\n", 4},
        {key + "@=hex:01,\\\n\n", 5},
        {key + "@=hex:01,\\ x\n02", 4},
        {key + "@=hex:01,\\\n02,\\\n0x", 6},
        {key + "@=hex", 4},
        {key + "@=hex(:1", 4},
        {key + "@=hex(7:1", 4},
        {key + "@=hex(123456789):1", 4},
        {key + "@=hex(7):61,00,00", 4},    // half a character
        {key + "@=\"\xE2\x88\x91\"", 4},   // not in the code page
        {key + "@=hex(1):11,22,00,00", 4}, // nor this
        {key + "@=hex(1):00,d8,00,00", 4}, // half a pair
        {key + "@=\"a\0b\""s, 4},
    });
}

TEST(RegistrationFile, writesWhatItReads)
{
    struct Case {
        std::uint32_t type;
        std::string data;
    };
    std::string allBytes;
    for (int i = 0; i < 256; ++i)
        allBytes += static_cast<char>(i);
    const Case cases[] = {
        {1, "text \\ \"q\" \xE4\x80\0"s},
        {1, "two\r\nlines\0"s},
        {1, ""},
        {1, "in\0side\0"s},
        {2, "%P%\0"s},
        {7, "a\0b\0\0"s},
        {7, allBytes + '\0'},
        {3, allBytes},
        {3, ""},
        {4, "\x0A\0\0\xFF"s},
        {4, "\1\2\3"},
        {4, ""},
    };
    for (const Format format : {Format::Version5, Format::Regedit4}) {
        Writer writer(format);
        const KeyPath path = {Registry::CurrentUser, {"K]", "a \"b\""}};
        ASSERT_TRUE(writer.addKey(path));
        int number = 0;
        for (const Case& c : cases)
            ASSERT_TRUE(writer.addValue("\\\"\xE4" + std::to_string(number++), c.type, c.data));
        EXPECT_FALSE(writer.addValue("q", 11, "12345678"));
        EXPECT_FALSE(writer.addValue("two\nlines", 1, "x"));
        EXPECT_FALSE(writer.addKey({Registry::CurrentUser, {"two\nlines"}}));
        // Programs can make such a key step by step, but no file can name it.
        const std::vector<std::string> deep(20, std::string(204, 'd'));
        EXPECT_FALSE(writer.addKey({Registry::CurrentUser, deep}));

        const Content content = parse(writer.take());
        EXPECT_EQ(content.keys[0].names, path.names);
        ASSERT_EQ(content.changes.size(), std::size(cases) + 1);
        for (std::size_t i = 0; i < std::size(cases); ++i) {
            SCOPED_TRACE(i);
            EXPECT_EQ(content.changes[i + 1].name, "\\\"\xE4" + std::to_string(i));
            EXPECT_EQ(content.changes[i + 1].type, cases[i].type);
            EXPECT_EQ(content.changes[i + 1].data, cases[i].data);
        }
    }
}

TEST(RegistrationFile, layout)
{
    Writer writer(Format::Regedit4);
    writer.addKey({Registry::LocalMachine, {"A"}});
    writer.addValue("", 1, "x\0"s);
    writer.addValue("bytes", 3, std::string(30, '\x5A'));
    EXPECT_EQ(writer.take(), "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\A]\r\n@=\"x\"\r\n"
                             "\"bytes\"=hex:5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,"
                             "5a,5a,5a,5a,\\\r\n  5a,5a,5a,5a,5a,5a,5a,5a\r\n\r\n");
    EXPECT_EQ(Writer(Format::Version5).take().substr(0, 8), "\xFF\xFEW\0i\0n\0"s);
    EXPECT_EQ(describeValue("n", 11, "\1\2"), "\"n\"=hex(b):01,02");
}

class RegistryTool : public RegistryTest {
protected:
    ChildResult run(const std::vector<std::string>& arguments) const
    {
        return runChild(builtProgram("mdtools-registry"), arguments);
    }

    std::string key() const { return "HKCU\\" + m_path; }
    static std::string file() { return workPath("settings.reg"); }

    static std::string readFile() { return MdToolsTest::readFile(file()); }
    static void writeFile(const std::string& bytes) { MdToolsTest::writeFile(file(), bytes); }
};

TEST_F(RegistryTool, setGetListDelete)
{
    struct Case {
        std::vector<std::string> set;
        std::string get, list;
    };
    static const Case cases[] = {
        {{"a", "string", "x y"}, "x y\n", "\"a\"=\"x y\"\n"},
        {{"b", "expand", "%P%"}, "%P%\n", "\"b\"=hex(2):25,50,25,00\n"},
        {{"c", "multi", "p", "q"}, "p\nq\n", "\"c\"=hex(7):70,00,71,00,00\n"},
        {{"d", "multi"}, "", "\"d\"=hex(7):00\n"},
        {{"e", "binary", "00fF"}, "00ff\n", "\"e\"=hex:00,ff\n"},
        {{"f", "dword", "0xfffffffe"}, "4294967294\n", "\"f\"=dword:fffffffe\n"},
        {{"g", "dword", "7"}, "7\n", "\"g\"=dword:00000007\n"},
    };
    std::string list;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.set[0]);
        std::vector<std::string> words = {"set", key() + "/Sub"};
        words.insert(words.end(), c.set.begin(), c.set.end());
        EXPECT_EQ(run(words).exitCode, 0);
        EXPECT_EQ(run({"get", key() + "\\SUB", c.set[0]}).output, c.get);
        list += c.list;
    }
    Platform::writeValue(RegistryKey(m_key, "Sub", false).handle(), "h", 11, "12345678", 8);
    list += "\"h\"=hex(b):31,32,33,34,35,36,37,38\n";
    EXPECT_EQ(run({"list", key() + "\\Sub"}).output, list);
    EXPECT_EQ(run({"list", key()}).output, "[Sub]\n");
    EXPECT_EQ(run({"get", key() + "\\Sub", "h"}).exitCode, 1);

    EXPECT_EQ(run({"delete", key() + "\\Sub", "A"}).exitCode, 0);
    EXPECT_EQ(run({"delete", key() + "\\Sub", "A"}).exitCode, 1);
    EXPECT_EQ(run({"get", key() + "\\Sub", "a"}).exitCode, 1);
    EXPECT_EQ(run({"delete", key() + "\\Sub"}).exitCode, 0);
    EXPECT_EQ(run({"delete", key() + "\\Sub"}).exitCode, 1);
    EXPECT_EQ(run({"list", key() + "\\Sub"}).exitCode, 1);
}

TEST_F(RegistryTool, wrongUsage)
{
    const std::vector<std::string> cases[] = {
        {},
        {"list"},
        {"list", key(), "x"},
        {"get", key()},
        {"set", key(), "n"},
        {"set", key(), "n", "word", "1"},
        {"set", key(), "n", "string"},
        {"set", key(), "n", "dword", "1", "2"},
        {"import"},
        {"export", key(), "f", "--regedit5"},
        {"frob", key()},
    };
    for (const std::vector<std::string>& words : cases) {
        const ChildResult result = run(words);
        EXPECT_EQ(result.exitCode, 2) << ::testing::PrintToString(words);
        EXPECT_NE(result.errors.find("usage:"), std::string::npos);
    }
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"list", "HKXX\\K"},
             {"set", key(), "n", "dword", "-1"},
             {"set", key(), "n", "dword", "4294967296"},
             {"set", key(), "n", "binary", "123"},
             {"set", key(), "n", "binary", "0g"},
             {"import", workDirectory() + "/missing"},
             {"export", key(), workDirectory() + "/no/such/directory"},
             {"delete", "HKCU"}})
        EXPECT_EQ(run(words).exitCode, 1) << ::testing::PrintToString(words);
    EXPECT_EQ(Platform::countValues(m_key.handle()), 0);
}

TEST_F(RegistryTool, exportAndImport)
{
    writeText("text", "a \"b\"");
    RegistryKey sub(m_key, "Sub\\Deep", true);
    sub.add(makeValue("list", RegistryValue::MultiString).setData({"p", "q"}));
    Platform::writeValue(sub.handle(), "odd", 11, "1", 1);
    for (const char* flag : {"", "--regedit4"}) {
        SCOPED_TRACE(flag);
        std::vector<std::string> words = {"export", key(), file()};
        if (*flag != '\0')
            words.emplace_back(flag);
        const ChildResult result = run(words);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_NE(result.errors.find("\"odd\""), std::string::npos) << result.errors;
        EXPECT_EQ(readFile().substr(0, 2), *flag != '\0' ? "RE" : "\xFF\xFE");

        ASSERT_EQ(run({"delete", key() + "\\Sub"}).exitCode, 0);
        writeText("text", "changed");
        const ChildResult imported = run({"import", file()});
        EXPECT_EQ(imported.exitCode, 0) << imported.errors;
        EXPECT_EQ(m_key["text"].getString(), "a \"b\"");
        sub = RegistryKey(m_key, "Sub\\Deep", false);
        EXPECT_EQ(sub["list"].getMultiString(), (std::vector<std::string>{"p", "q"}));
        EXPECT_EQ(Platform::countValues(sub.handle()), 1);
        Platform::writeValue(sub.handle(), "odd", 11, "1", 1);
    }
}

TEST_F(RegistryTool, importChangesAllOrNothing)
{
    writeText("old", "1");
    RegistryKey(m_key, "Gone", true);
    const std::string good = Head5 + "[" + key() + "]\n\"new\"=\"2\"\n\"old\"=-\n\"never\"=-\n[-" +
                             key() + "\\Gone]\n[-" + key() + "\\Never]\n[" + key() + "\\New]\n";
    writeFile(good + "oops\n");
    const ChildResult result = run({"import", file()});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.errors.find("line 9"), std::string::npos) << result.errors;
    EXPECT_FALSE(m_key["new"].valid());
    EXPECT_TRUE(m_key["old"].valid());
    EXPECT_TRUE(RegistryKey(m_key, "Gone", false).valid());

    writeFile(good + "\"odd\"=hex(b):00\n");
    const ChildResult imported = run({"import", file()});
    EXPECT_EQ(imported.exitCode, 0) << imported.errors;
    EXPECT_NE(imported.errors.find("line 9"), std::string::npos) << imported.errors;
    EXPECT_EQ(m_key["new"].getString(), "2");
    EXPECT_FALSE(m_key["old"].valid());
    EXPECT_FALSE(RegistryKey(m_key, "Gone", false).valid());
    EXPECT_TRUE(RegistryKey(m_key, "New", false).valid());
}

}
