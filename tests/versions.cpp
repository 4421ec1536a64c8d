#include <mdtools/build_number.h>
#include <mdtools/mdml_constants.h>
#include <mdtools/version_info.h>
#include <mdtools/version_number.h>
#include <mdtools/version_text.h>

#include "support/module.h"
#include "support/programs.h"
#include "support/test_environment.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>

namespace {

using namespace Tools;

constexpr char InvalidBuild[] = "Invalid \"DDMMYYYY\" BuildNumber text";
constexpr char InvalidVersion[] = "Invalid \"Major.Minor\" VersionNumber text";

// The message of the std::invalid_argument that `call` must throw.
std::string messageOf(const std::function<void()>& call)
{
    try {
        call();
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "nothing was thrown";
}

const std::string Megabyte(1 << 20, '9');

TEST(BuildNumber, parts)
{
    struct Case {
        std::string text;
        int day, month, year;
    };
    static const Case cases[] = {
        {"31122024", 31, 12, 2024},
        {"Build 31122024 b", 31, 12, 2024},
        {"39190000", 39, 19, 0}, // no calendar is asked
        {"00002024", 0, 0, 2024},
        {"999931122024", 31, 12, 2024}, // 9999..., 9993... fit nowhere, the run goes on
        {"01022023311220241", 1, 2, 2023},
        {"1-31122024", 31, 12, 2024},
        {Megabyte + "31122024", 31, 12, 2024},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 40));
        const BuildNumber build(c.text);
        EXPECT_TRUE(build.isValid());
        EXPECT_EQ(build.getDay(), c.day);
        EXPECT_EQ(build.getMonth(), c.month);
        EXPECT_EQ(build.getYear(), c.year);
        EXPECT_EQ(build.getDdMmYyyy(), c.text);
    }
    const BuildNumber good("31122024");
    for (const std::string& text :
         {std::string(), std::string("3112202"), std::string("31-12-2024"), std::string("41122024"),
          std::string("31222024"), std::string("3112 2024"), Megabyte}) {
        SCOPED_TRACE(text.substr(0, 40));
        const BuildNumber build(text);
        EXPECT_FALSE(build.isValid());
        EXPECT_EQ(messageOf([&] { build.getDay(); }), InvalidBuild);
        EXPECT_EQ(messageOf([&] { build.getMonth(); }), InvalidBuild);
        EXPECT_EQ(messageOf([&] { build.getYear(); }), InvalidBuild);
        EXPECT_EQ(messageOf([&] { (void)(build < good); }), InvalidBuild);
        EXPECT_EQ(messageOf([&] { (void)(good >= build); }), InvalidBuild);
        EXPECT_EQ(messageOf([&] { (void)(build == build); }), InvalidBuild);
    }
}

TEST(BuildNumber, order)
{
    struct Case {
        const char *a, *b;
        bool aLess, bLess;
    };
    static const Case cases[] = {
        {"15052023", "15052023", false, false}, {"14052023", "15052023", true, false},
        {"15042023", "15052023", true, false},  {"15052022", "15052023", true, false},
        {"01012022", "01122021", true, true}, // year against month
        {"20012023", "10022023", true, true}, // month against day
        {"20012023", "10012022", false, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.a) + " " + c.b);
        const BuildNumber a(c.a);
        const BuildNumber b(c.b);
        EXPECT_EQ(a < b, c.aLess);
        EXPECT_EQ(b < a, c.bLess);
        EXPECT_EQ(a > b, c.bLess);
        EXPECT_EQ(a <= b, !c.bLess);
        EXPECT_EQ(a >= b, !c.aLess);
        EXPECT_EQ(a == b, !c.aLess && !c.bLess);
        EXPECT_EQ(a != b, c.aLess || c.bLess);
    }
}

TEST(VersionNumber, parts)
{
    struct Case {
        std::string text;
        int major, minor;
    };
    static const Case cases[] = {
        {"24.1", 24, 1},
        {"v10.2.3", 10, 2},
        {"024.1", 24, 1},
        {"9.12.3", 12, 3}, // 9 has one digit
        {"10.x 2.5 30.07", 30, 7},
        {"00.1 005.1 0012.1", 12, 1},
        {"2147483647.2147483647", 2147483647, 2147483647},
        {Megabyte + " 24.1", 24, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 40));
        const VersionNumber version(c.text);
        EXPECT_TRUE(version.isValid());
        EXPECT_EQ(version.getMajor(), c.major);
        EXPECT_EQ(version.getMinor(), c.minor);
        EXPECT_EQ(version.getText(), c.text);
    }
    for (const std::string& text : {std::string(), std::string("9.1"), std::string("24"),
                                    std::string("24."), std::string("24,1"), Megabyte}) {
        SCOPED_TRACE(text.substr(0, 40));
        EXPECT_FALSE(VersionNumber(text).isValid());
        EXPECT_EQ(messageOf([&] { VersionNumber(text).getMajor(); }), InvalidVersion);
        EXPECT_EQ(messageOf([&] { VersionNumber(text).getMinor(); }), InvalidVersion);
    }
    // Numbers beyond int are found, but cannot be given.
    const VersionNumber huge("2147483648.1");
    EXPECT_TRUE(huge.isValid());
    EXPECT_EQ(messageOf([&] { huge.getMajor(); }), InvalidVersion);
    EXPECT_EQ(huge.getMinor(), 1);
    for (const char* text : {"24.2147483648", "24.4294967296", "24.4294967320"}) {
        const VersionNumber wraps(text);
        EXPECT_EQ(wraps.getMajor(), 24);
        EXPECT_EQ(messageOf([&] { wraps.getMinor(); }), InvalidVersion) << text;
    }
    EXPECT_EQ(messageOf([] { VersionNumber("4294967296.1").getMajor(); }), InvalidVersion);
}

TEST(VersionText, isJudgedByItsList)
{
    VersionText text({"2022", "2023", "2024", "2023"}, "2023");
    EXPECT_TRUE(text.isLessThan("2024"));
    EXPECT_FALSE(text.isLessThan("2022"));
    EXPECT_FALSE(text.isLessThan("2023"));
    EXPECT_FALSE(text.isLessThan("2030"));
    EXPECT_TRUE(text.isGreaterEqual("2022"));
    EXPECT_TRUE(text.isGreaterEqual("2023"));
    EXPECT_FALSE(text.isGreaterEqual("2024"));
    EXPECT_TRUE(text.isGreaterEqual("2030")); // unknown
    EXPECT_TRUE(text.isEqualTo("2023"));
    EXPECT_FALSE(text.isEqualTo("2024"));
    text.setText("2030");
    EXPECT_EQ(text.getText(), "2023");
    text.setText("2024");
    EXPECT_EQ(text.getText(), "2024");
    EXPECT_TRUE(text.isValid("2022"));
    EXPECT_FALSE(text.isValid("2022 "));

    const VersionText unknown(std::vector<std::string>(), "x");
    EXPECT_EQ(unknown.getText(), "x");
    EXPECT_FALSE(unknown.isValid("x"));
    EXPECT_TRUE(unknown.isEqualTo("x"));
    EXPECT_FALSE(unknown.isLessThan("x"));
    EXPECT_TRUE(unknown.isGreaterEqual("x"));
}

void expectEmpty(const VersionInfo& info)
{
    EXPECT_EQ(info.getProductName() + info.getProductVersion() + info.getVersion() +
                  info.getBuildNumber() + info.getLegalCopyright(),
              "");
}

// This test program is stamped by its build file; umlauts come back in the code page.
TEST(VersionInfo, ofAStampedModule)
{
    for (const VersionInfo& info :
         {VersionInfo(MdToolsTest::ownProgram(), "040704e4,040704B0"),
          VersionInfo(static_cast<ModuleHandle>(nullptr), "040704b0,040704e4")}) {
        EXPECT_EQ(info.getProductName(), "Tr\xE4ger \"\\2\"");
        EXPECT_EQ(info.getProductVersion(), "24.1 15052023 x");
        EXPECT_EQ(info.getVersion(), "24.1");
        EXPECT_EQ(info.getBuildNumber(), "15052023");
        EXPECT_EQ(info.getLegalCopyright(), "\xA9 2024");
    }
    expectEmpty(VersionInfo(MdToolsTest::ownProgram(), "040904b0"));
    expectEmpty(VersionInfo(MdToolsTest::ownProgram(), ""));
    expectEmpty(VersionInfo(MdToolsTest::workDirectory() + "/missing", "040704b0"));
    expectEmpty(VersionInfo(MdToolsTest::workDirectory(), "040704b0"));

    const VersionInfo library(MdToolsTest::libraryPath(), "040704b0");
    EXPECT_EQ(library.getProductName(), "MdTools");
    EXPECT_TRUE(library.getVersion().find('.') != std::string::npos) << library.getVersion();
    EXPECT_EQ(library.getBuildNumber(), "");
}

// The name that it was loaded by leads nowhere any more.
TEST(VersionInfo, ofAModuleLoadedByARelativeName)
{
    namespace fs = std::filesystem;
    const fs::path library = MdToolsTest::builtLibrary("test_plugin");
    const fs::path former = fs::current_path();
    fs::current_path(library.parent_path());
    void* const module = MdToolsTest::loadModule("./" + library.filename().string());
    fs::current_path(former);
    ASSERT_NE(module, nullptr);
    const VersionInfo info(static_cast<ModuleHandle>(module), "040704b0");
    EXPECT_EQ(info.getProductName(), "Plugin");
    EXPECT_EQ(info.getVersion(), "3");
    EXPECT_EQ(info.getBuildNumber(), "two");
    MdToolsTest::freeModule(module);
}

// Writes little-endian numbers and blocks of a version resource into a Windows module's image.
class ImageBuilder {
public:
    void number(std::uint64_t value, int size)
    {
        for (int i = 0; i < size; ++i)
            m_bytes += i < 8 ? static_cast<char>(value >> (8 * i) & 0xFF) : '\0';
    }
    void pad(std::size_t multiple)
    {
        while (m_bytes.size() % multiple != 0)
            m_bytes += '\0';
    }
    void units(const std::u16string& text)
    {
        for (const char16_t c : text)
            number(c, 2);
        number(0, 2);
    }
    void units(const std::string& text) { units(std::u16string(text.begin(), text.end())); }
    void block(const std::string& key, const std::u16string& text,
               const std::function<void()>& children = nullptr)
    {
        pad(4);
        const std::size_t start = m_bytes.size();
        number(0, 2);
        number(text.empty() ? 0 : text.size() + 1, 2);
        number(1, 2);
        units(key);
        pad(4);
        if (!text.empty())
            units(text);
        if (children)
            children();
        const std::size_t length = m_bytes.size() - start;
        m_bytes[start] = static_cast<char>(length & 0xFF);
        m_bytes[start + 1] = static_cast<char>(length >> 8);
    }
    const std::string& bytes() const { return m_bytes; }

private:
    std::string m_bytes;
};

struct Texts {
    std::u16string product = u"Frame";
    std::u16string version = u"25.3";
};

std::string versionResource(const Texts& texts)
{
    ImageBuilder builder;
    builder.block("VS_VERSION_INFO", u"", [&] {
        builder.block("VarFileInfo", u"", [&] { builder.block("Translation", u"x"); });
        builder.block("StringFileInfo", u"", [&] {
            builder.block("040704b0", u"", [&] { builder.block("ProductName", u"half"); });
            builder.block("040704E4", u"", [&] {
                builder.block("CompanyName", u"");
                builder.block("ProductVersion", texts.version);
                builder.block("ProductName", texts.product);
                builder.block("LegalCopyright", u"");
            });
        });
    });
    return builder.bytes();
}

// A 64-bit module with nothing but one version resource,
// which claims to have so many bytes; 0 is the truth.
std::string windowsModule(const Texts& texts = {}, std::uint32_t claimedSize = 0)
{
    const std::string resource = versionResource(texts);
    if (claimedSize == 0)
        claimedSize = static_cast<std::uint32_t>(resource.size());
    constexpr std::uint32_t Address = 0x1000;
    constexpr std::uint32_t Offset = 0x200;
    constexpr std::uint32_t DataOffset = 88;
    ImageBuilder b;
    b.number(0x5A4D, 2);
    b.pad(0x3C);
    b.number(0x40, 4);
    b.number(0x4550, 4); // signature
    b.number(0x8664, 2);
    b.number(1, 2); // sections
    b.number(0, 12);
    b.number(240, 2); // optional header
    b.number(0x2022, 2);
    b.number(0x20B, 2);
    b.number(0, 106);
    b.number(16, 4); // directories; the third is the resources'
    b.number(0, 16);
    b.number(Address, 4);
    b.number(DataOffset + resource.size(), 4);
    b.number(0, 104);
    b.number(0x637273722E, 8); // .rsrc
    b.number(0x1000, 4);
    b.number(Address, 4);
    b.number(DataOffset + resource.size(), 4);
    b.number(Offset, 4);
    b.number(0, 16);
    b.pad(Offset);
    for (const std::uint32_t next : {0x80000018U, 0x80000030U, 72U}) {
        b.number(0, 12);
        b.number(0x10000, 4); // one entry by number
        b.number(next == 0x80000018U ? 16 : 1, 4);
        b.number(next, 4);
    }
    b.number(Address + DataOffset, 4);
    b.number(claimedSize, 4);
    b.number(0, 8);
    return b.bytes() + resource;
}

std::string writeFile(const std::string& content)
{
    const std::string name = MdToolsTest::workDirectory() + "/module.bin";
    std::remove(name.c_str()); // a file system may take its time to overwrite one
    std::ofstream(name, std::ios::binary) << content;
    return name;
}

TEST(VersionInfo, ofAWindowsModulesFile)
{
    const VersionInfo info(writeFile(windowsModule()), "040704b0,040704e4");
    EXPECT_EQ(info.getProductName(), "Frame"); // the first key lacks two texts
    EXPECT_EQ(info.getVersion(), "25.3");
    EXPECT_EQ(info.getBuildNumber(), "");
    EXPECT_EQ(info.getLegalCopyright(), "");

    const VersionInfo twoWords(writeFile(windowsModule({u"\u20AC \U0001F600", u"25.3  15052023"})),
                               "040704e4");
    EXPECT_EQ(twoWords.getProductName(), "\x80 ??"); // what the page lacks, and two units more
    EXPECT_EQ(twoWords.getProductVersion(), "25.3  15052023");
    EXPECT_EQ(twoWords.getVersion(), "25.3");
    EXPECT_EQ(twoWords.getBuildNumber(), "15052023");

    // A resource may have a megabyte; it must be there, too.
    struct Case {
        std::uint32_t claimed;
        std::size_t there;
        const char* product;
    };
    for (const Case& c :
         {Case{1U << 20, 1U << 20, "Frame"}, Case{1U << 20, 0, ""}, Case{2U << 20, 2U << 20, ""}}) {
        SCOPED_TRACE(c.claimed);
        const std::string module = windowsModule({}, c.claimed) + std::string(c.there, '\0');
        EXPECT_EQ(VersionInfo(writeFile(module), "040704e4").getProductName(), c.product);
    }
}

// Cut off anywhere, or with any byte turned over, a module gives its texts or none.
TEST(VersionInfo, ofDamagedFiles)
{
    const std::string module = windowsModule();
    for (std::size_t size = 0; size < module.size(); size += 3) {
        const VersionInfo info(writeFile(module.substr(0, size)), "040704e4");
        EXPECT_TRUE(info.getProductName().empty() || info.getProductName() == "Frame") << size;
    }
    std::mt19937 random(1);
    for (int i = 0; i < 500; ++i) {
        std::string damaged = module;
        for (int k = 0; k < 3; ++k)
            damaged[random() % damaged.size()] = static_cast<char>(random());
        const VersionInfo info(writeFile(damaged), "040704e4");
        EXPECT_LT(info.getProductName().size(), damaged.size()) << i;
    }
}

}
