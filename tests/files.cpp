#include <mdtools/directory.h>
#include <mdtools/error.h>
#include <mdtools/file.h>
#include <mdtools/folders.h>

#include "support/test_environment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using Tools::Directory;
using Tools::File;

std::string work(const std::string& name)
{
    return MdToolsTest::workDirectory() + "/" + name;
}

void write(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

std::string read(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

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

TEST(File, opensWithPointAsDecimalSign)
{
    const std::string name = work("open.txt");
    std::setlocale(LC_ALL, "");
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    for (const char* mode : {"", "q", "r+x", "rbt", "w++", "r, ccs=UTF-8"})
        EXPECT_EQ(File::open(name, mode), nullptr) << mode;
    EXPECT_EQ(File::open("", "r"), nullptr);
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale);
    EXPECT_EQ(File::open(name, "r"), nullptr);
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    EXPECT_EQ(File::open(MdToolsTest::workDirectory(), "r"), nullptr);

    write(name, "previous contents");
    struct Case {
        const char *mode, *put, *after;
    };
    static const Case cases[] = {
        {"wb", "one", "one"},
        {"ab", "two", "onetwo"},
        {"r+b", "T", "Tnetwo"},
        {"w+", "x", "x"},
    };
    for (const Case& c : cases) {
        std::FILE* file = File::open(Tools::Path::convert(name, false), c.mode);
        ASSERT_NE(file, nullptr) << c.mode;
        std::fputs(c.put, file);
        EXPECT_EQ(File::close(file), 0);
        EXPECT_EQ(read(name), c.after) << c.mode;
    }
    EXPECT_EQ(File::close(nullptr), 0);
}

TEST(File, wholeFiles)
{
    const std::string a = work("a.txt");
    const std::string b = work("b.txt");
    EXPECT_FALSE(File::exists(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(File::exists(a));
    EXPECT_TRUE(File::isEmpty(a));
    write(a, "1");
    EXPECT_TRUE(File::exists(a.c_str()));
    EXPECT_TRUE(File::exists(Tools::Path(a)));
    EXPECT_TRUE(File::exists(MdToolsTest::workDirectory()));
    EXPECT_FALSE(File::isEmpty(a));

    EXPECT_TRUE(File::copy(a, b));
    EXPECT_TRUE(File::isEqual(a, b));
    EXPECT_TRUE(File::copy(a, MdToolsTest::workDirectory(), "c.txt"));
    EXPECT_FALSE(File::copy(a, a));
    EXPECT_EQ(read(a), "1");
    EXPECT_FALSE(File::rename(a, b));
    write(a, "22");
    EXPECT_FALSE(File::isEqual(a, b));
    EXPECT_TRUE(File::copy(a, b));
    EXPECT_EQ(read(b), "22");

    EXPECT_TRUE(File::remove(b));
    EXPECT_FALSE(File::remove(b));
    EXPECT_FALSE(File::remove(MdToolsTest::workDirectory()));
    EXPECT_TRUE(File::rename(a, b));
    EXPECT_FALSE(File::exists(a));
    EXPECT_TRUE(File::removeEx(work("?.TXT")));
    EXPECT_FALSE(File::exists(b));
    EXPECT_FALSE(File::exists(work("c.txt")));
}

}
