#include <mdtools/directory.h>
#include <mdtools/file.h>

#include "support/files.h"
#include "support/test_environment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using MdToolsTest::makeLink;
using MdToolsTest::readFile;
using MdToolsTest::setWriteProtected;
using MdToolsTest::workPath;
using MdToolsTest::writeFile;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Tools::Directory;
using Tools::File;

// A directory of its own for each test.
class DirectoryTest : public testing::Test {
protected:
    DirectoryTest() { EXPECT_TRUE(Directory::create(m_directory)); }
    ~DirectoryTest() override { EXPECT_TRUE(Directory::removeRecursively(m_directory + "/")); }

    std::string path(const std::string& name) const { return m_directory + "/" + name; }
    std::string make(const std::string& name, const std::string& bytes = "x") const
    {
        Directory::createRecursively(File::getDirectory(path(name)));
        writeFile(path(name), bytes);
        return path(name);
    }

    // All that is below `root`, "|" after directories.
    static std::vector<std::string> list(const std::string& root)
    {
        std::vector<File::Info> found;
        File::findByWildCard(root, "*", found, true);
        std::vector<std::string> names;
        for (const File::Info& info : found) {
            const std::string name = info.getDirectory() + "/" + info.getName();
            names.push_back(Tools::Path::convert(name.substr(root.size() + 1), true) +
                            (info.isDirectory() ? "|" : ""));
        }
        return names;
    }

    std::string m_directory = workPath("directories");
};

TEST_F(DirectoryTest, createsAndRemoves)
{
    EXPECT_FALSE(Directory::exists(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(Directory::exists(""));
    EXPECT_TRUE(Directory::exists(m_directory.c_str()));
    EXPECT_TRUE(Directory::exists(Tools::Path(m_directory)));
    const std::string file = make("file");
    EXPECT_FALSE(Directory::exists(file));
    EXPECT_TRUE(Directory::create(file)); // something of that name is there
    EXPECT_TRUE(Directory::create(path("\xE4\xDF")));
    EXPECT_TRUE(Directory::exists(path("\xE4\xDF")));
    EXPECT_FALSE(Directory::create(path("a/b")));
    EXPECT_FALSE(Directory::create(""));

    EXPECT_TRUE(Directory::createRecursively(Tools::Path::convert(path("a/b/c"), false)));
    EXPECT_TRUE(Directory::createRecursively(path("a//b/c/")));
    EXPECT_TRUE(Directory::exists(path("a/b/c")));
    EXPECT_FALSE(Directory::createRecursively(file));
    EXPECT_FALSE(Directory::createRecursively(file + "/b"));
    EXPECT_FALSE(Directory::createRecursively(""));

    EXPECT_FALSE(Directory::remove(path("a")));
    EXPECT_TRUE(Directory::remove(path("a/b/c")));
    EXPECT_FALSE(Directory::remove(path("a/b/c")));
    EXPECT_FALSE(Directory::remove(file));
    EXPECT_FALSE(Directory::removeRecursively(file));
    EXPECT_FALSE(Directory::removeRecursively(path("missing")));
    EXPECT_FALSE(Directory::removeRecursively(""));
    EXPECT_TRUE(File::exists(file));
}

TEST_F(DirectoryTest, current)
{
    const std::string before = Directory::getCurrent();
    EXPECT_FALSE(Directory::setCurrent(path("missing")));
    EXPECT_EQ(Directory::getCurrent(), before);
    ASSERT_TRUE(Directory::setCurrent(m_directory));
    make("a");
    EXPECT_TRUE(File::exists("a"));
    EXPECT_TRUE(Directory::createRecursively("b/c"));
    EXPECT_TRUE(Directory::exists(path("b/c")));
    EXPECT_TRUE(Directory::setCurrent(before));
}

TEST_F(DirectoryTest, searches)
{
    for (const char* name : {"a.txt", "B.TXT", "c"})
        make(name);
    const auto search = [](Directory& directory, const std::string& pattern) {
        std::vector<std::string> names;
        std::string name = "untouched";
        for (bool found = directory.start(pattern, name); found; found = directory.find(name))
            names.push_back(name);
        EXPECT_FALSE(directory.find(name));
        EXPECT_EQ(name, names.empty() ? "untouched" : names.back());
        return names;
    };
    Directory directory;
    std::string name;
    EXPECT_FALSE(directory.find(name));
    EXPECT_THAT(search(directory, path("*.txt")), UnorderedElementsAre("a.txt", "B.TXT"));
    EXPECT_THAT(search(directory, Tools::Path::convert(path("*.*"), false)),
                UnorderedElementsAre(".", "..", "a.txt", "B.TXT", "c"));
    EXPECT_THAT(search(directory, path("C")), ElementsAre("c"));
    EXPECT_THAT(search(directory, path("")), ElementsAre());
    EXPECT_THAT(search(directory, path("missing/*")), ElementsAre());
    // One search ends the other.
    EXPECT_TRUE(directory.start(path("?.txt"), name));
    EXPECT_TRUE(directory.start(path("c"), name));
    EXPECT_FALSE(directory.find(name));
}

TEST_F(DirectoryTest, copiesByPattern)
{
    for (const char* name : {"s/a.txt", "s/B.TXT", "s/c.bak", "s/d", "s/\xFC/e.txt", "s/bak/f.txt",
                             "s/old.bak/g.txt", "s/empty/h.bak"})
        make(name, name);
    setWriteProtected(path("s/d"), true);
    struct Case {
        std::vector<std::string> includes, excludes, expected;
    };
    static const Case cases[] = {
        {{},
         {"*.bak"},
         {"a.txt", "B.TXT", "bak|", "d", "empty|", "\xFC|", "bak/f.txt", "\xFC/e.txt"}},
        {{"*.TXT", "D"},
         {"\xDC", "BAK"},
         {"a.txt", "B.TXT", "d", "empty|", "old.bak|", "old.bak/g.txt"}},
        {{"nothing"}, {"*"}, {}},
    };
    for (const Case& c : cases) {
        EXPECT_TRUE(Directory::copy(path("s"), path("t"), c.includes, c.excludes));
        EXPECT_EQ(list(path("t")), c.expected);
        EXPECT_TRUE(Directory::removeRecursively(path("t")));
    }
    EXPECT_TRUE(Directory::copy(path("s/\xFC"), Tools::Path::convert(path("u"), false)));
    EXPECT_EQ(readFile(path("u/e.txt")), "s/\xFC/e.txt");

    // Only a new directory is a target, and only a directory is a source.
    EXPECT_FALSE(Directory::copy(path("s"), path("u")));
    EXPECT_FALSE(Directory::copy(path("s"), path("missing/v")));
    EXPECT_FALSE(Directory::copy(path("missing"), path("w")));
    EXPECT_THAT(list(path("u")), ElementsAre("e.txt"));
}

TEST_F(DirectoryTest, doesNotCopyIntoItself)
{
    make("s/a");
    make("s/x/b");
    EXPECT_TRUE(Directory::copy(path("s"), path("s/x/t")));
    EXPECT_THAT(list(path("s")),
                ElementsAre("a", "x|", "x/b", "x/t|", "x/t/a", "x/t/x|", "x/t/x/b"));
}

TEST_F(DirectoryTest, copiesWhatCanBeRead)
{
    for (const char* name : {"s/a", "s/held", "s/z/b"})
        make(name);
    const MdToolsTest::HeldFile held(path("s/held"));
    EXPECT_FALSE(Directory::copy(path("s"), path("t")));
    EXPECT_THAT(list(path("t")), ElementsAre("a", "z|", "z/b"));
}

TEST_F(DirectoryTest, removesWriteProtectedFiles)
{
    for (const char* name : {"s/a", "s/b/protected", "s/c/d"})
        make(name);
    setWriteProtected(path("s/b/protected"), true);
    EXPECT_FALSE(File::removeDirectoryRecursively(path("s")));
    EXPECT_THAT(list(path("s")), ElementsAre("b|", "b/protected"));
    EXPECT_TRUE(Directory::removeRecursively(path("s")));
    EXPECT_FALSE(File::exists(path("s")));
    make("s/a/b");
    EXPECT_TRUE(File::removeDirectoryRecursively(path("s\\")));
    EXPECT_FALSE(File::exists(path("s")));
}

TEST_F(DirectoryTest, neverFollowsLinks)
{
    // Wine follows them when it removes something, but it makes none either.
    make("outside/precious");
    make("s/a");
    if (!makeLink(path("outside"), path("s/folder")))
        GTEST_SKIP() << "No symbolic links here.";
    ASSERT_TRUE(makeLink(path("outside/precious"), path("s/file")));
    ASSERT_TRUE(makeLink("..", path("s/up")));
    ASSERT_TRUE(makeLink("nowhere", path("s/dangling")));
    EXPECT_THAT(list(path("s")), ElementsAre("a", "dangling", "file", "folder|", "up|"));

    EXPECT_TRUE(Directory::copy(path("s"), path("t")));
    EXPECT_EQ(std::filesystem::read_symlink(path("t/up")), "..");
    EXPECT_EQ(std::filesystem::read_symlink(path("t/file")), path("outside/precious"));
    EXPECT_TRUE(std::filesystem::is_symlink(path("t/folder")));
    EXPECT_TRUE(std::filesystem::is_symlink(path("t/dangling")));

    EXPECT_TRUE(File::removeByWildCard(path("t"), "*", true));
    EXPECT_THAT(list(path("t")), ElementsAre("folder|", "up|"));
    EXPECT_TRUE(File::removeDirectoryRecursively(path("t")));
    ASSERT_TRUE(makeLink(path("s"), path("link")));
    EXPECT_TRUE(Directory::removeRecursively(path("link/")));
    ASSERT_TRUE(makeLink(path("s"), path("link")));
    EXPECT_TRUE(Directory::remove(path("link")));
    EXPECT_TRUE(Directory::exists(path("s")));
    EXPECT_TRUE(Directory::removeRecursively(path("s")));
    EXPECT_EQ(readFile(path("outside/precious")), "x");
}

// However often the root becomes a link while it is removed, nothing behind that is touched.
TEST_F(DirectoryTest, isNotLedOutOfTheTree)
{
    make("outside/precious");
    if (!makeLink(path("outside"), path("link")))
        GTEST_SKIP() << "No symbolic links here.";
    std::atomic<bool> isOver = false;
    std::thread exchanger([this, &isOver] {
        const char* const moves[][2] = {{"s", "t"}, {"link", "s"}, {"s", "link"}, {"t", "s"}};
        std::error_code error;
        while (!isOver) {
            for (const auto& [from, to] : moves)
                std::filesystem::rename(path(from), path(to), error);
        }
    });
    constexpr int Rounds = 2000;
    int round = 0;
    for (; round < Rounds && File::exists(path("outside/precious")); ++round) {
        Directory::create(path("s"));
        makeLink(path("outside"), path("link"));
        Directory::removeRecursively(path("s"));
    }
    isOver = true;
    exchanger.join();
    EXPECT_EQ(round, Rounds);
}

TEST_F(DirectoryTest, manyFiles)
{
    // Wine looks through the whole directory for each name.
    const int Count = MdToolsTest::IsWindows ? 1000 : 10000;
    for (int i = 0; i < Count; ++i)
        make("s/file " + std::to_string(i));
    std::vector<File::Info> found;
    EXPECT_TRUE(Directory::copy(path("s"), path("t")));
    EXPECT_TRUE(File::findByWildCard(path("t"), "FILE *", found, false));
    EXPECT_EQ(found.size(), Count);
    EXPECT_TRUE(File::removeEx(path("t/file *0")));
    EXPECT_TRUE(File::removeByWildCard(path("t"), "*", true));
    EXPECT_TRUE(Directory::remove(path("t")));
}

TEST_F(DirectoryTest, deepTrees)
{
    // As deep as the narrow calls reach; elsewhere far beyond the longest path of one call, and
    // with few files that may be open at once.
    const int Depth = MdToolsTest::IsWindows ? 30 : 2000;
    std::string deep = path("s");
    for (int i = 0; i < Depth; ++i)
        deep += "/dd";
    ASSERT_TRUE(Directory::createRecursively(deep));
    const std::string file = deep + "\\a.txt";
    File::close(File::open(file, "w"));
    EXPECT_TRUE(File::exists(file));
    EXPECT_TRUE(File::isEmpty(file));
    EXPECT_TRUE(File::rename(file, deep + "/b.txt"));

    const int before = MdToolsTest::limitOpenFiles(100);
    EXPECT_TRUE(Directory::copy(path("s"), path("t"), {}, {}));
    std::vector<File::Info> found;
    EXPECT_TRUE(File::findByWildCard(path("t"), "*.txt", found, true));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].getDirectory().size(), deep.size());
    EXPECT_TRUE(File::removeByWildCard(path("t"), "b*", true));
    EXPECT_FALSE(File::exists(found[0].getDirectory() + "/b.txt"));
    EXPECT_TRUE(File::removeDirectoryRecursively(path("t")));
    EXPECT_TRUE(Directory::removeRecursively(path("s")));
    EXPECT_FALSE(Directory::exists(path("s")));
    MdToolsTest::limitOpenFiles(before);
}

}
