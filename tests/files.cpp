#include "file_test.h"

#include <mdtools/directory.h>
#include <mdtools/error.h>
#include <mdtools/file.h>
#include <mdtools/file_output.h>
#include <mdtools/logger.h>

#include "support/child_process.h"
#include "support/files.h"
#include "support/test_environment.h"
#include "support/waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <clocale>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using MdToolsTest::FileTest;
using MdToolsTest::HeldFile;
using MdToolsTest::readFile;
using MdToolsTest::setWriteProtected;
using MdToolsTest::writeFile;
using testing::ElementsAre;
using Tools::Directory;
using Tools::File;

TEST(Error, ownsItsText)
{
    EXPECT_STREQ(Tools::Error(nullptr).getText(), "");
    const Tools::FileReadError first(std::string("bad line"));
    const Tools::FileReadError second(first);
    EXPECT_STREQ(second.getText(), "bad line");
    EXPECT_NE(first.getText(), second.getText());
    Tools::FileWriteError third("x");
    const Tools::FileWriteError& same = third;
    third = same;
    EXPECT_STREQ(third.getText(), "x");
    EXPECT_THROW(throw Tools::FileWriteError("y"), Tools::Error);
}

TEST_F(FileTest, opensWithPointAsDecimalSign)
{
    const std::string name = path("open.txt");
    std::setlocale(LC_ALL, "");
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    EXPECT_EQ(File::open("", "r"), nullptr);
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale);
    for (const char* mode : {"q", "", "r+x", "rbt", "w++", "r, ccs=UTF-8", "r"}) {
        MdToolsTest::setCommaLocale();
        EXPECT_EQ(File::open(name, mode), nullptr) << mode;
        EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    }
    EXPECT_EQ(File::open(m_directory, "r"), nullptr);

    writeFile(name, "previous contents");
    for (const char* mode : {"q", "", "wx", "w+xx", "wbt", "a++", "awx", "w, ccs=UTF-8"}) {
        EXPECT_EQ(File::open(name, mode), nullptr) << mode;
        EXPECT_EQ(readFile(name), "previous contents") << mode;
    }
    struct Case {
        const char *mode, *put, *after;
    };
    static const Case cases[] = {
        {"wb", "one", "one"}, {"ab", "two", "onetwo"}, {"r+b", "T", "Tnetwo"},
        {"w+", "x", "x"},     {"a+", "y", "xy"},
    };
    for (const Case& c : cases) {
        std::FILE* file = File::open(Tools::Path::convert(name, false), c.mode);
        ASSERT_NE(file, nullptr) << c.mode;
        std::fputs(c.put, file);
        EXPECT_EQ(File::close(file), 0);
        EXPECT_EQ(readFile(name), c.after) << c.mode;
    }
    EXPECT_EQ(File::close(nullptr), 0);
}

TEST_F(FileTest, existsAndIsEmpty)
{
    EXPECT_FALSE(File::exists(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(File::exists(""));
    EXPECT_FALSE(File::exists(path("a")));
    EXPECT_TRUE(File::isEmpty(path("a")));
    make("a", "");
    EXPECT_TRUE(File::isEmpty(Tools::Path(path("a"))));
    make("a", "1");
    EXPECT_TRUE(File::exists(path("a").c_str()));
    EXPECT_TRUE(File::exists(Tools::Path(path("a"))));
    EXPECT_TRUE(File::exists(m_directory));
    EXPECT_FALSE(File::isEmpty(path("a")));
    EXPECT_TRUE(File::isEmpty(m_directory));
}

TEST_F(FileTest, comparesBytes)
{
    constexpr std::size_t Big = 11'000'001;
    struct Case {
        std::size_t size, changed;
    };
    static const Case cases[] = {
        {1, 0},           {2, 1},
        {262144, 262143}, // a block, its end
        {262145, 262144}, {Big, 0},
        {Big, 4'194'304}, // after the part that one thread compares
        {Big, 7'000'000}, {Big, Big - 1},
    };
    const std::string a = path("a");
    const std::string b = path("b");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.changed);
        std::string bytes(c.size, '\n');
        writeFile(a, bytes);
        writeFile(b, bytes);
        EXPECT_TRUE(File::isEqual(a, b));
        bytes[c.changed] = '\r';
        writeFile(b, bytes);
        EXPECT_FALSE(File::isEqual(a, b));
        writeFile(b, bytes.substr(0, c.size - 1));
        EXPECT_FALSE(File::isEqual(a, b));
    }
    writeFile(a, "");
    writeFile(b, "");
    EXPECT_TRUE(File::isEqual(a, b));
    EXPECT_FALSE(File::isEqual(a, path("missing")));
    EXPECT_FALSE(File::isEqual(m_directory, m_directory));
}

TEST_F(FileTest, copies)
{
    const std::string source = make("a", "12345");
    const std::string target = path("B\xE4.txt");
    std::filesystem::last_write_time(source, std::filesystem::last_write_time(source) -
                                                 std::chrono::hours(30));
    writeFile(target, "longer than the source");
    EXPECT_TRUE(File::copy(source, target));
    EXPECT_EQ(readFile(target), "12345");
    EXPECT_TRUE(File::copy(source, m_directory + "\\", "c"));
    EXPECT_EQ(std::filesystem::last_write_time(path("c")),
              std::filesystem::last_write_time(source));

    const std::string big = make("big", std::string(3'000'001, 'b'));
    EXPECT_TRUE(File::copy(Tools::Path(big), Tools::Path(path("big2"))));
    EXPECT_TRUE(File::isEqual(big, path("big2")));
    EXPECT_TRUE(File::copy(make("empty", ""), big));
    EXPECT_TRUE(File::isEmpty(big));

    EXPECT_FALSE(File::copy(source, source));
    EXPECT_EQ(readFile(source), "12345");
    EXPECT_FALSE(File::copy(source, m_directory));
    EXPECT_FALSE(File::copy(m_directory, path("d")));
    EXPECT_FALSE(File::copy(path("missing"), target));
    EXPECT_EQ(readFile(target), "12345");
    EXPECT_FALSE(File::copy(source, path("missing/x")));
}

TEST_F(FileTest, mindsWriteProtection)
{
    const std::string source = make("source");
    const std::string target = make("target", "old");
    setWriteProtected(source, true);
    EXPECT_TRUE(File::copy(source, path("copy")));
    EXPECT_FALSE(File::remove(path("copy"))); // as protected as the source
    EXPECT_FALSE(File::remove(source));
    EXPECT_FALSE(File::removeEx(source));
    EXPECT_FALSE(File::removeFiles({source, target}));
    EXPECT_TRUE(File::exists(source));
    EXPECT_FALSE(File::exists(target));
    if (MdToolsTest::ProtectedFilesCannotBeOpened) {
        EXPECT_TRUE(File::isLocked(source));
        EXPECT_FALSE(File::copy(make("other", "new"), source));
        EXPECT_FALSE(File::concatenate(path("other"), source));
        for (const char* mode : {"r+", "w", "a", "w+", "a+"})
            EXPECT_EQ(File::open(source, mode), nullptr) << mode;
        Tools::FileOutput(source).writeLine("lost");
        Tools::FileLogger logger("");
        logger.initialize(source);
        logger.writeLine("lost");
        EXPECT_EQ(readFile(source), "x");
    }
    EXPECT_EQ(File::close(File::open(source, "r")), 0);
    EXPECT_TRUE(File::rename(source, target));
    setWriteProtected(target, false);
}

TEST_F(FileTest, renames)
{
    make("a", "1");
    make("b", "2");
    EXPECT_FALSE(File::rename(path("a"), path("b")));
    EXPECT_EQ(readFile(path("b")), "2");
    EXPECT_TRUE(File::rename(Tools::Path(path("a")), Tools::Path(path("c"))));
    EXPECT_EQ(readFile(path("c")), "1");
    EXPECT_TRUE(File::rename(path("c"), path("c")));
    EXPECT_FALSE(File::rename(path("a"), path("d")));
    EXPECT_FALSE(File::rename(path("b"), path("missing/b")));
    EXPECT_TRUE(Directory::create(path("folder")));
    EXPECT_TRUE(File::rename(path("folder"), path("folder2")));
    EXPECT_FALSE(File::rename(path("b"), path("folder2")));
    EXPECT_TRUE(File::rename(path("b"), path("folder2/b")));
}

// "." and ".." count in the text, before the system sees it.
TEST_F(FileTest, resolvesDots)
{
    make("f", "1");
    for (const char* name :
         {"none/../f", "./f", "f/../f", "f/.", "none\\./..\\f", "none/../../files/f"})
        EXPECT_TRUE(File::exists(path(name))) << name;
    EXPECT_FALSE(File::exists(path("f/../g")));
    EXPECT_TRUE(File::copy(path("none/../f"), path("./none/../g")));
    EXPECT_FALSE(File::rename(path("f"), path("./g")));
    EXPECT_TRUE(File::rename(path("f"), path("none/.././f")));
    EXPECT_TRUE(File::rename(path("./f"), path("none/../h")));
    EXPECT_EQ(readFile(path("h")), "1");
    EXPECT_TRUE(Directory::create(path("new/.")));
    EXPECT_TRUE(Directory::exists(path("new")));
    EXPECT_TRUE(Directory::createRecursively(path("new/./a/.")));
    EXPECT_TRUE(File::rename(path("new/a"), path("new/a/../a")));
    EXPECT_TRUE(Directory::removeRecursively(path("new/.")));
    EXPECT_FALSE(Directory::exists(path("new")));

    const std::string before = Directory::getCurrent();
    ASSERT_TRUE(Directory::create(path("below")));
    ASSERT_TRUE(Directory::setCurrent(path("below")));
    EXPECT_TRUE(File::exists("../h"));
    EXPECT_TRUE(File::rename("../h", "none/../../below/h"));
    EXPECT_TRUE(File::rename("h", path("below/h")));
    EXPECT_TRUE(File::exists("./h"));
    EXPECT_TRUE(Directory::setCurrent(before));
}

TEST_F(FileTest, movesToAnotherFileSystem)
{
    const MdToolsTest::SmallDisk disk(path("disk"), 65536);
    if (!disk.isThere())
        GTEST_SKIP() << disk.why();
    EXPECT_TRUE(File::rename(make("a", "1"), path("disk/a")));
    EXPECT_EQ(readFile(path("disk/a")), "1");
    EXPECT_FALSE(File::exists(path("a")));
    EXPECT_FALSE(File::rename(make("a", "2"), path("disk/a")));
    EXPECT_EQ(readFile(path("disk/a")), "1");
    EXPECT_EQ(readFile(path("a")), "2");
    EXPECT_TRUE(Directory::create(path("folder")));
    EXPECT_FALSE(File::rename(path("folder"), path("disk/folder")));
    EXPECT_TRUE(MdToolsTest::makeLink("a", path("link")));
    EXPECT_TRUE(File::rename(path("link"), path("disk/link")));
    EXPECT_TRUE(std::filesystem::is_symlink(path("disk/link")));
    EXPECT_FALSE(File::rename(make("big", std::string(100'000, 'b')), path("disk/big")));
    EXPECT_FALSE(File::exists(path("disk/big")));
    EXPECT_TRUE(File::exists(path("big")));
    // What cannot be taken away here is not left there.
    const std::string name = make("own", "1");
    const MdToolsTest::OrdinaryUser user;
    EXPECT_FALSE(File::rename(name, path("disk/own")));
    EXPECT_TRUE(File::exists(name));
    EXPECT_FALSE(File::exists(path("disk/own")));
}

TEST_F(FileTest, copiesOntoALink)
{
    const MdToolsTest::SmallDisk disk(path("disk"), 65536);
    if (!disk.isThere())
        GTEST_SKIP() << disk.why();
    make("disk/target", "precious");
    ASSERT_TRUE(MdToolsTest::makeLink("disk/target", path("link")));
    EXPECT_FALSE(File::copy(make("source", std::string(70'000, 's')), path("link")));
    EXPECT_EQ(readFile(path("disk/target")), "precious");
    EXPECT_FALSE(File::copy(path("disk/target"), path("link")));
    {
        const HeldFile held(path("disk/target"));
        EXPECT_FALSE(File::copy(make("source", "new"), path("link")));
    }
    EXPECT_EQ(readFile(path("disk/target")), "precious");
    EXPECT_TRUE(File::copy(make("source", "new"), path("link")));
    EXPECT_EQ(readFile(path("disk/target")), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
    ASSERT_TRUE(MdToolsTest::makeLink("nowhere", path("dangling")));
    EXPECT_FALSE(File::copy(path("source"), path("dangling")));
    EXPECT_TRUE(std::filesystem::is_symlink(path("dangling")));
    std::vector<File::Info> left;
    File::findByWildCard(path("disk"), "*", left, false);
    EXPECT_EQ(left, std::vector{File::Info(path("disk"), "target", File::Info::Type::File)});
}

// Files that the system makes up come in pieces, and some in none.
TEST_F(FileTest, readsToTheEnd)
{
    if (MdToolsTest::IsWindows)
        GTEST_SKIP() << "The system makes up no files here.";
    const MdToolsTest::Child child(MdToolsTest::builtProgram("file_child"),
                                   {"r", make("held"), path("ready")},
                                   {{"MDTOOLS_LONG", std::string(100'000, 'l')}});
    ASSERT_TRUE(child.waitUntil([this] { return File::exists(path("ready")); }));
    const std::string made = "/proc/" + std::to_string(child.processId()) + "/environ";
    EXPECT_FALSE(File::isEmpty(made));
    EXPECT_TRUE(File::copy(made, path("copy")));
    EXPECT_EQ(readFile(path("copy")), readFile(made));
    EXPECT_GT(readFile(made).size(), 100'000U);
    EXPECT_TRUE(File::isEqual(made, path("copy")));
    EXPECT_TRUE(File::isEqual(path("copy"), made));
    EXPECT_FALSE(File::isEqual(made, make("empty", "")));
    EXPECT_TRUE(File::concatenate(made, path("empty")));
    EXPECT_TRUE(File::isEqual(path("empty"), path("copy")));
    // A page at once, although the size is known.
    const std::string types = "/sys/kernel/btf/vmlinux";
    if (File::exists(types)) {
        EXPECT_TRUE(File::copy(types, path("types")));
        EXPECT_EQ(std::filesystem::file_size(path("types")), std::filesystem::file_size(types));
    }
    const std::string unreadable = "/proc/self/mem";
    EXPECT_TRUE(File::isEmpty(unreadable));
    EXPECT_FALSE(File::isEqual(unreadable, unreadable));
    EXPECT_FALSE(File::copy(unreadable, path("new")));
    EXPECT_FALSE(File::exists(path("new")));
    EXPECT_FALSE(File::concatenate(unreadable, path("copy")));
    EXPECT_EQ(readFile(path("copy")), readFile(made));
}

TEST_F(FileTest, doesNotWaitForPipes)
{
    const std::string name = path("pipe");
    const MdToolsTest::NamedPipe pipe(name, MdToolsTest::NamedPipe::Reader::None);
    if (!pipe.isThere())
        GTEST_SKIP() << "Pipes have no names among the files here.";
    EXPECT_TRUE(File::isEmpty(name));
    EXPECT_FALSE(File::isEqual(name, name));
    EXPECT_FALSE(File::isLocked(name));
    EXPECT_FALSE(File::copy(name, path("new")));
    EXPECT_FALSE(File::copy(make("a"), name));
    EXPECT_FALSE(File::concatenate(name, path("a")));
    EXPECT_FALSE(File::concatenate(path("a"), name));
    EXPECT_TRUE(File::rename(name, path("pipe2")));
    EXPECT_TRUE(File::remove(path("pipe2")));
}

TEST_F(FileTest, longestPath)
{
    // Where a call takes no more there is a way to longer ones on Linux only; Wine takes some.
    const std::size_t last = MdToolsTest::LongestPath + (MdToolsTest::IsWindows ? 0 : 2);
    for (std::size_t length = MdToolsTest::LongestPath - 2; length <= last; ++length) {
        SCOPED_TRACE(length);
        std::string name = m_directory;
        while (length - name.size() > 250) {
            name += "/" + std::string(100, 'd');
            ASSERT_TRUE(Directory::createRecursively(name));
        }
        name += "/" + std::string(length - name.size() - 1, 'f');
        EXPECT_EQ(File::close(File::open(name, "w")), 0);
        EXPECT_TRUE(File::exists(name));
        EXPECT_TRUE(File::copy(name, path("copy")));
        EXPECT_TRUE(File::rename(name, path("moved")));
        EXPECT_TRUE(File::rename(path("moved"), name));
        EXPECT_TRUE(File::remove(name));
    }
}

TEST_F(FileTest, removesByPattern)
{
    const std::vector<std::string> names = {"a.BAK", "b.bak", "c.bak.txt", "\xE4.bak"};
    for (const std::string& name : names)
        make(name);
    ASSERT_TRUE(Directory::create(path("d.bak")));
    EXPECT_FALSE(File::removeEx(path("d.bak")));
    EXPECT_TRUE(File::removeEx(path("c.b*")));
    EXPECT_FALSE(File::exists(path("c.bak.txt")));
    EXPECT_TRUE(File::removeEx(Tools::Path::convert(path("*.bak"), false)));
    for (const std::string& name : names)
        EXPECT_FALSE(File::exists(path(name))) << name;
    EXPECT_TRUE(Directory::exists(path("d.bak")));
    EXPECT_TRUE(File::removeEx(path("*.bak")));
    EXPECT_TRUE(File::removeEx(path("missing/*")));

    make("d.bak/1.tmp");
    make("2.tmp");
    ASSERT_TRUE(Directory::create(path("d.bak/e.tmp")));
    EXPECT_TRUE(File::removeByWildCard(m_directory, "*.TMP", false));
    EXPECT_FALSE(File::exists(path("2.tmp")));
    EXPECT_TRUE(File::exists(path("d.bak/1.tmp")));
    EXPECT_TRUE(File::removeByWildCard(m_directory, "*.tmp", true));
    EXPECT_FALSE(File::exists(path("d.bak/1.tmp")));
    EXPECT_TRUE(Directory::exists(path("d.bak/e.tmp")));
}

TEST_F(FileTest, finds)
{
    for (const char* name : {"B", "a", "B/c", "a/D"})
        ASSERT_TRUE(Directory::create(path(name)));
    for (const char* name : {"c.txt", "A.TXT", "b.dat", "B/1.txt", "B/c/2.txt", "a/D/3.txt"})
        make(name);

    const auto search = [&](const std::string& directory, const char* pattern, bool recursive) {
        std::vector<File::Info> result = {{"before", "x", File::Info::Type::File}};
        const bool found = File::findByWildCard(directory, pattern, result, recursive);
        EXPECT_EQ(found, result.size() > 1);
        std::vector<std::string> texts;
        for (std::size_t i = 1; i < result.size(); ++i) {
            std::string where = result[i].getDirectory();
            EXPECT_EQ(where.rfind(m_directory, 0), 0U) << where;
            where.erase(0, m_directory.size());
            texts.push_back(Tools::Path::convert(where, true) + "|" + result[i].getName() +
                            (result[i].isDirectory() ? "|" : ""));
        }
        return texts;
    };
    EXPECT_THAT(search(m_directory, "*.txt", false), ElementsAre("|A.TXT", "|c.txt"));
    EXPECT_THAT(search(m_directory + "/", "?", false), ElementsAre("|a|", "|B|"));
    EXPECT_THAT(search(m_directory, "*", true),
                ElementsAre("|a|", "|A.TXT", "|B|", "|b.dat", "|c.txt", "/a|D|", "/a/D|3.txt",
                            "/B|1.txt", "/B|c|", "/B/c|2.txt"));
    EXPECT_THAT(search(m_directory, "*.*", false), testing::SizeIs(5));
    EXPECT_THAT(search(m_directory, "", true), ElementsAre());
    EXPECT_THAT(search(m_directory + "/missing", "*", true), ElementsAre());
    EXPECT_THAT(search(path("c.txt"), "*", true), ElementsAre());

    // An empty name is the current directory, and nothing is put before the names in it.
    const std::string before = Directory::getCurrent();
    ASSERT_TRUE(Directory::setCurrent(m_directory));
    std::vector<File::Info> result;
    EXPECT_TRUE(File::findByWildCard("", "1*", result, true));
    EXPECT_EQ(result, std::vector{File::Info("B", "1.txt", File::Info::Type::File)});
    EXPECT_TRUE(Directory::setCurrent(before));
}

TEST(FileInfo, order)
{
    using Type = File::Info::Type;
    const File::Info ordered[] = {{},
                                  {"a", "y", Type::File},
                                  {"a", "y", Type::Directory},
                                  {"a", "z", Type::File},
                                  {"b", "x", Type::File}};
    for (const File::Info& a : ordered) {
        for (const File::Info& b : ordered) {
            EXPECT_EQ(a < b, &a < &b);
            EXPECT_EQ(a == b, &a == &b);
        }
    }
}

TEST_F(FileTest, concatenates)
{
    const std::string target = path("target");
    std::string expected;
    for (const std::size_t size : {std::size_t{3}, std::size_t{0}, std::size_t{4096},
                                   std::size_t{262144}, std::size_t{20'000'001}}) {
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; i += 1000)
            bytes[i] = char('a' + (i / 1000 + size) % 251);
        EXPECT_TRUE(File::concatenate(make("source", bytes), target));
        expected += bytes;
        ASSERT_EQ(File::isEqual(target, make("expected", expected)), true) << size;
    }
    EXPECT_FALSE(File::concatenate(target, target));
    EXPECT_TRUE(File::isEqual(target, path("expected")));
    EXPECT_FALSE(File::concatenate(path("missing"), path("new")));
    EXPECT_FALSE(File::exists(path("new")));
    EXPECT_TRUE(File::concatenate(make("source", ""), path("new")));
    EXPECT_TRUE(File::exists(path("new")));
    EXPECT_FALSE(File::concatenate(path("source"), m_directory));
}

TEST(FileNames, components)
{
    struct Case {
        const char *name, *directory, *file, *extension;
    };
    static const Case cases[] = {
        {"C:\\data\\x.dat", "C:/data", "x", "dat"},
        {"C:\\x", "C:/", "x", ""},
        {"/x.y.z", "/", "x.y", "z"},
        {"x", "", "x", ""},
        {"", "", "", ""},
        {"//srv/share/x", "//srv/share/", "x", ""},
        {"a/b/", "a/b", "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(File::getDirectory(c.name), c.directory);
        EXPECT_EQ(File::getNameWithoutExtension(c.name), c.file);
        EXPECT_EQ(File::getExtension(c.name), c.extension);
    }
    EXPECT_EQ(std::string(File::getForbiddenChars().begin(), File::getForbiddenChars().end()),
              "\\/:*?\"<>|");
}

}
