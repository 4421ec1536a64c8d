#include <mdtools/directory.h>
#include <mdtools/file.h>
#include <mdtools/path.h>
#include <mdtools/process.h>
#include <mdtools/shell.h>

#include "support/child_process.h"
#include "support/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

// Names in page 932, in which the build starts this program: the second byte of a character may
// look like a backslash, a letter or a colon's neighbours.
namespace {

using namespace Tools;
using MdToolsTest::workPath;

// A katakana whose second byte is that of the backslash, one with that of "A", and the large and
// the small wide letter A.
const std::string So = "\x83\x5C";
const std::string KatakanaA = "\x83\x41";
const std::string WideUpper = "\x82\x60";
const std::string WideLower = "\x82\x81";

TEST(DoubleByteNames, separators)
{
    const Path path("C:\\" + So + "\\" + So + ".dat");
    ASSERT_EQ(path.directory(), "/" + So + "/") << "This program needs page 932.";
    EXPECT_EQ(path.file(), So);
    EXPECT_EQ(path.path(true), "C:\\" + So + "\\" + So + ".dat");
    EXPECT_EQ(Path(So + ":x").location(), So + ":");

    std::string text = So;
    addBackslashIfNecessary(text);
    EXPECT_EQ(text, So + "\\");
    text = "a\\" + So;
    goUp(text);
    EXPECT_EQ(text, "a\\");
    EXPECT_EQ(File::getDirectory(So + "\\x"), So);
    EXPECT_EQ(File::getDirectory(So), "");
}

TEST(DoubleByteNames, onDisk)
{
    if (!MdToolsTest::DoubleByteNamesReachTheDisk)
        GTEST_SKIP() << "Wine writes no names of a page whose locale is not installed.";
    ASSERT_TRUE(Directory::createRecursively(workPath(So + "\\" + So)));
    EXPECT_TRUE(Directory::exists(workPath(So + "/" + So)));
    EXPECT_TRUE(Directory::exists(workPath(So) + "\\"));
    for (const std::string& name : {KatakanaA, So + WideUpper})
        EXPECT_EQ(File::close(File::open(workPath(So + "\\" + name), "w")), 0);

    const auto find = [](const std::string& pattern) {
        std::vector<File::Info> found;
        File::findByWildCard(workPath(So), pattern, found, false);
        std::vector<std::string> names;
        for (const File::Info& info : found)
            names.push_back(info.getName());
        return names;
    };
    using testing::ElementsAre;
    EXPECT_THAT(find("?"), ElementsAre(KatakanaA, So)); // one character, two bytes
    EXPECT_THAT(find("*" + WideLower), ElementsAre(So + WideUpper));
    EXPECT_THAT(find("*a"), ElementsAre());
    EXPECT_THAT(find(So + "*"), ElementsAre(So, So + WideUpper));
    EXPECT_TRUE(Directory::copy(workPath(So), workPath(KatakanaA), {}, {So}));
    EXPECT_TRUE(File::removeEx(workPath(So) + "\\" + So + "?"));
    EXPECT_FALSE(File::exists(workPath(So + "/" + So + WideUpper)));
    EXPECT_TRUE(Directory::removeRecursively(workPath(So)));
    EXPECT_TRUE(File::exists(workPath(KatakanaA + "/" + KatakanaA)));
    EXPECT_TRUE(Directory::removeRecursively(workPath(KatakanaA)));
}

TEST(DoubleByteNames, reachPrograms)
{
    const std::string record = workPath("record");
    Process process;
    process.setEnvironment("MDTOOLS_RECORD", record);
    process.setCommandLine("\"" + MdToolsTest::builtProgram("test_child_program") + "\" \"" + So +
                           "\" b" + So + "\"\"");
    process.enableWait(true);
    std::string arguments = "argument: " + So + "\nargument: b" + So + "\n";
    EXPECT_TRUE(process.run());
    EXPECT_NE(MdToolsTest::readFile(record).find(arguments), std::string::npos);
    if (!MdToolsTest::DoubleByteNamesReachTheDisk)
        return;
    const std::string program = workPath(So + "\\" + So);
    ASSERT_TRUE(Directory::createRecursively(workPath(So)));
    ASSERT_TRUE(File::copy(MdToolsTest::builtProgram("test_child_program"), program));
    process.setCommandLine(program + " --stdin");
    process.setCurrentDirectory(workPath(So));
    EXPECT_TRUE(process.run());
    EXPECT_EQ(MdToolsTest::readFile(record).find("directory: " + So), 0U);
    EXPECT_EQ(Shell().execute(program, "\"" + So + "\""), Shell::Success);
    const ProcessHandle reader = Process::start(program + " --silent", true, program);
    EXPECT_TRUE(Process::waitFor(reader, 0));
    Process::close(reader);
    EXPECT_TRUE(Directory::removeRecursively(workPath(So)));
}

}
