#include <mdtools/directory.h>
#include <mdtools/path.h>

#include "support/test_environment.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Tools::Path;

TEST(Path, parts)
{
    struct Case {
        const char *text, *location, *directory, *file, *extension, *whole;
    };
    static const Case cases[] = {
        {"C:\\data\\model.dat", "C:", "/data/", "model", "dat", "C:/data/model.dat"},
        {"//srv/share/dir/a.b.c", "//srv/share", "/dir/", "a.b", "c", "//srv/share/dir/a.b.c"},
        {"\\\\srv\\share\\x", "//srv/share", "/", "x", "", "//srv/share/x"},
        {"//srv/share", "", "//srv/", "share", "", "//srv/share"}, // no slash after the share
        {"//srv", "", "//", "srv", "", "//srv"},
        {"//", "", "//", "", "", "//"},
        {"dir.v2/readme", "", "dir.v2/", "readme", "",
         "dir.v2/readme"}, // the dot is not the name's
        {"dir.v2/", "", "dir.v2/", "", "", "dir.v2/"},
        {"C:hall.", "C:", "", "hall", "", "C:hall"},
        {"C:", "C:", "", "", "", "C:"},
        {".profile", "", "", "", "profile", ".profile"},
        {"..", "", "", ".", "", "."},
        {"a/..", "", "a/", ".", "", "a/."},
        {"a.", "", "", "a", "", "a"},
        {"/home/a.b/c", "", "/home/a.b/", "c", "", "/home/a.b/c"},
        {"a:b:c", "a:", "", "b:c", "", "a:b:c"},
        {"\xE4\\\xF6.\xFC", "", "\xE4/", "\xF6", "\xFC", "\xE4/\xF6.\xFC"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const Path path{std::string(c.text)};
        EXPECT_EQ(path.location(), c.location);
        EXPECT_EQ(path.directory(), c.directory);
        EXPECT_EQ(path.file(), c.file);
        EXPECT_EQ(path.extension(), c.extension);
        EXPECT_EQ(path.path(), c.whole);
    }
}

TEST(Path, replacesParts)
{
    Path path(std::string("C:\\data\\model.dat"));
    EXPECT_EQ(path.path(true), "C:\\data\\model.dat");
    EXPECT_EQ(path.path(false), "C:/data/model.dat");
    EXPECT_EQ(std::string(path), "C:/data/model.dat");

    path.setExtension(".txt");
    EXPECT_EQ(path.extension(), "txt");
    path.setExtension("txt");
    EXPECT_EQ(path.path(), "C:/data/model.txt");
    path.setExtension("");
    EXPECT_EQ(path.path(), "C:/data/model");
    path.setDirectory("\\a\\b");
    EXPECT_EQ(path.path(), "C:/a/b/model");
    path.setDirectory("/c/");
    EXPECT_EQ(path.directory(), "/c/");
    path.setDirectory("");
    EXPECT_EQ(path.path(), "C:model");
    path.setLocation("\\\\server\\share");
    path.setFile("sub\\hall");
    EXPECT_EQ(path.path(), "//server/sharesub/hall");
    path.setPath("");
    EXPECT_EQ(path.path(), "//server/sharesub/hall");

    // The new text may be the path's own.
    path.setPath("C:/a/b.c");
    path.setFile(path.path());
    EXPECT_EQ(path.file(), "C:/a/b.c");
    path.setPath(path.directory());
    EXPECT_EQ(path.path(), "/a/");
}

TEST(Path, comparesAllPartsAndOrdersByBytes)
{
    const Path slash(std::string("C:/a/b"));
    EXPECT_TRUE(slash == Path(std::string("C:\\a\\b")));
    Path split(std::string("C:/a/"));
    split.setFile("b.c");
    // The same text in other parts is another path.
    EXPECT_EQ(split.path(), "C:/a/b.c");
    EXPECT_FALSE(split == Path(std::string("C:/a/b.c")));
    EXPECT_TRUE(slash < Path(std::string("C:/a/b.c")));
    EXPECT_FALSE(slash < slash);
    EXPECT_TRUE(Path(std::string("z")) < Path(std::string("\xE4")));
}

TEST(Path, knowsTheDisk)
{
    const std::string work = MdToolsTest::workDirectory();
    EXPECT_TRUE(Path(work).valid());
    EXPECT_FALSE(Path(work + "/missing").valid());

    Path temporary;
    temporary.setTemporary("p\\q", 12);
    EXPECT_EQ(temporary.file(), "p/q12");
    EXPECT_EQ(temporary.extension(), "tmp");
    const std::string name = temporary.path();
    temporary.setTemporaryPath();
    EXPECT_EQ(temporary.path() + "p/q12.tmp", name);
    EXPECT_TRUE(temporary.valid());
    EXPECT_EQ(temporary.file(), "");

    const std::string before = Tools::Directory::getCurrent();
    ASSERT_TRUE(Tools::Directory::setCurrent(work));
    const Path current;
    EXPECT_EQ(current.path(), Path::convert(Tools::Directory::getCurrent(), true) + "/");
    EXPECT_EQ(current.file(), "");
    EXPECT_TRUE(Tools::Directory::setCurrent(before));
}

TEST(Path, textFunctions)
{
    struct Case {
        const char *text, *withBackslash, *up;
    };
    static const Case cases[] = {
        {"C:/data/", "C:/data/", ""}, // only backslashes lead up
        {"", "", ""},
        {"C:\\a\\b\\", "C:\\a\\b\\", "C:\\a\\"},
        {"C:\\a\\b", "C:\\a\\b\\", "C:\\a\\"},
        {"C:\\", "C:\\", ""},
        {"\\", "\\", ""},
        {"a\\\\", "a\\\\", "a\\"},
        {"a", "a\\", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        std::string text = c.text;
        Tools::addBackslashIfNecessary(text);
        EXPECT_EQ(text, c.withBackslash);
        text = c.text;
        Tools::goUp(text);
        EXPECT_EQ(text, c.up);
    }
}

}
