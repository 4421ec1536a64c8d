#include <mdtools/file.h>
#include <mdtools/file_output.h>

#include "support/files.h"
#include "support/test_environment.h"

#include <gtest/gtest.h>

#include <clocale>
#include <functional>
#include <limits>
#include <string>

namespace {

using Tools::FileOutput;

std::string fileName()
{
    return MdToolsTest::workPath("output.txt");
}

std::string content()
{
    return MdToolsTest::readText(fileName());
}

TEST(FileOutput, lines)
{
    const int integers[] = {1, -2, std::numeric_limits<int>::min()};
    const std::size_t sizes[] = {0, std::numeric_limits<std::size_t>::max()};
    const double reals[] = {1.5, -0.0, 1e-300};
    struct Case {
        std::function<void(FileOutput&)> write;
        std::string expected;
    };
    const Case cases[] = {
        {[](FileOutput& o) { o.writeLine(); }, ""},
        {[](FileOutput& o) { o.write("a", "x"), o.write("b", 2), o.writeLine(); },
         "a = \"x\" b = 2 \n"},
        {[](FileOutput& o) { o.write("a", "x"), o.writeLine("free text"), o.writeLine(); },
         "free text\n"},
        {[](FileOutput& o) { o.write("a", 1), o.writeLine(""), o.writeLine(); }, "a = 1 \n"},
        {[](FileOutput& o) {
             o.write("a", 1), o.writeLine(static_cast<const char*>(nullptr)), o.writeLine();
         },
         "a = 1 \n"},
        {[](FileOutput& o) { o.write("t", "a\"b\\"), o.writeLine(); }, "t = \"a\"b\\\" \n"},
        {[](FileOutput& o) { o.write(nullptr, static_cast<const char*>(nullptr)), o.writeLine(); },
         " = \"\" \n"},
        {[&](FileOutput& o) { o.write("n", integers, 3), o.writeLine(); },
         "n = 1,-2,-2147483648 \n"},
        {[&](FileOutput& o) { o.write(std::string("n"), sizes, 2), o.writeLine(); },
         "n = 0,18446744073709551615 \n"},
        {[&](FileOutput& o) { o.write("n", integers, 0), o.writeLine(); }, "n = \n"},
        {[](FileOutput& o) { o.write("x", 1.5), o.writeLine(); }, "x = 1.5000000000000000e+00 \n"},
        {[&](FileOutput& o) {
             EXPECT_EQ(o.setPrecision(3), 16U);
             o.write("x", reals, 3), o.writeLine();
             EXPECT_EQ(o.setPrecision(0), 3U);
             o.write("y", 12.5), o.writeLine();
         },
         "x = 1.500e+00,-0.000e+00,1.000e-300 \ny = 1e+01 \n"},
        {[](FileOutput& o) { o.write("lost", 1); }, ""},
        {[](FileOutput& o) {
             o.write(std::string("a\0b", 3), std::string("\0", 1)), o.writeLine();
         },
         std::string("a\0b = \"\0\" \n", 11)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected);
        {
            FileOutput output(fileName());
            c.write(output);
        }
        EXPECT_EQ(content(), c.expected);
    }
}

TEST(FileOutput, linesAreThereAtOnce)
{
    FileOutput output(fileName().c_str());
    output.writeLine("one");
    EXPECT_EQ(content(), "one\n");
    FileOutput taken(std::move(output));
    taken.writeLine(std::string("two"));
    EXPECT_EQ(content(), "one\ntwo\n");
}

TEST(FileOutput, linesEndAsThePlatformsDo)
{
    FileOutput output(fileName());
    output.write("a", "b\nc");
    output.writeLine();
    output.writeLine("d\r");
    const std::string expected =
        MdToolsTest::IsWindows ? "a = \"b\r\nc\" \r\nd\r\r\n" : "a = \"b\nc\" \nd\r\n";
    EXPECT_EQ(MdToolsTest::readFile(fileName()), expected);
}

TEST(FileOutput, numbersDoNotDependOnTheLocale)
{
    if (!MdToolsTest::setCommaLocale())
        GTEST_SKIP() << "No locale with a decimal comma is installed.";
    {
        FileOutput output(fileName());
        output.write("x", 1234567.5);
        output.setPrecision(2000);
        output.write("y", 0.5);
        output.writeLine();
    }
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(content(), "x = 1.2345675000000000e+06 y = 5." + std::string(2000, '0') + "e-01 \n");
}

// As an output file stream, which does nothing after a write that failed.
TEST(FileOutput, stopsAfterAFailedWrite)
{
    const std::string directory = MdToolsTest::workPath("full");
    const MdToolsTest::SmallDisk disk(directory, 65536);
    if (!disk.isThere())
        GTEST_SKIP() << disk.why();
    const std::string filler = directory + "/filler";
    FileOutput output(directory + "/output");
    output.writeLine("first");
    MdToolsTest::writeFile(filler, std::string(65536, 'f'));
    output.writeLine(std::string(10'000, 'x'));
    const std::string torn = MdToolsTest::readText(directory + "/output");
    EXPECT_LT(torn.size(), 10'000U);
    ASSERT_TRUE(Tools::File::remove(filler));
    output.write("a", 1);
    output.writeLine();
    output.writeLine("last");
    EXPECT_EQ(MdToolsTest::readText(directory + "/output"), torn);
}

TEST(FileOutput, survivesAPipeWithoutReader)
{
    const std::string path = MdToolsTest::workPath("output-pipe");
    MdToolsTest::NamedPipe pipe(path, MdToolsTest::NamedPipe::Reader::Open);
    if (!pipe.isThere())
        GTEST_SKIP() << "Pipes have no names among the files here.";
    FileOutput output(path);
    output.writeLine("one");
    EXPECT_EQ(pipe.read(), "one\n");
    pipe.close();
    output.writeLine("two");
    const MdToolsTest::NamedPipe again(path, MdToolsTest::NamedPipe::Reader::Open);
    output.writeLine("three");
    EXPECT_EQ(again.read(), "");
}

TEST(FileOutput, aHugePrecisionIsZeros)
{
    {
        FileOutput output(fileName());
        output.setPrecision(std::numeric_limits<unsigned int>::max());
        output.write("x", 0.5);
        EXPECT_EQ(output.setPrecision(1), std::numeric_limits<unsigned int>::max());
        output.write("y", 0.5);
        output.writeLine();
    }
    EXPECT_EQ(content(), "x = 5." + std::string(10'000, '0') + "e-01 y = 5.0e-01 \n");
    FileOutput output(fileName());
    output.setPrecision(5000);
    output.write("x", std::numeric_limits<double>::denorm_min());
    output.writeLine();
    const std::string text = content();
    EXPECT_EQ(text.size(), std::string("x = 4.e-324 \n").size() + 5000);
    EXPECT_EQ(text.substr(text.size() - 12), "00000e-324 \n");
}

TEST(FileOutput, withoutAFileNothingHappens)
{
    FileOutput none;
    none.write("a", 1);
    none.writeLine();
    none.writeLine("x");
    EXPECT_EQ(none.setPrecision(3), 0U);
    FileOutput lost(MdToolsTest::workDirectory() + "/missing/file.txt");
    lost.write("a", 1.0);
    lost.writeLine();
    EXPECT_EQ(lost.setPrecision(3), 16U);
}

}
