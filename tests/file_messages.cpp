#include <mdtools/directory.h>
#include <mdtools/file.h>

#include "support/files.h"
#include "support/test_receiver.h"
#include "trace/debug_sender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <new>
#include <string>
#include <vector>

namespace {

// False while the system has no memory for large blocks.
bool s_hasMemory = true;

}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return s_hasMemory ? ::operator new[](size) : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace {

using MdToolsTest::workPath;
using MdToolsTest::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;
using Tools::Directory;
using Tools::File;

// What an operation says on the debug channel. The numbers are those of Windows everywhere.
std::vector<std::string> messages(const std::function<void()>& operation)
{
    const MdToolsTest::TestReceiver receiver;
    Tools::DebugSender::restart();
    operation();
    Tools::DebugSender::end();
    std::vector<std::string> texts;
    for (const MdToolsTest::Piece& piece : receiver.pieces())
        texts.push_back(piece.text);
    std::sort(texts.begin(), texts.end());
    return texts;
}

TEST(FileMessages, filesThatStay)
{
    for (const char* name : {"a.bak", "b.bak", "c.bak", "single.txt"}) {
        writeFile(workPath(name), "x");
        MdToolsTest::setWriteProtected(workPath(name), *name != 'b');
    }
    const std::string directory = Tools::Path::convert(workPath(""), false);
    EXPECT_THAT(messages([] { EXPECT_FALSE(File::removeEx(workPath("*.bak"))); }),
                ElementsAre("Tools::File::removeEx(" + directory + "a.bak): ERROR 5l occured.\n",
                            "Tools::File::removeEx(" + directory + "c.bak): ERROR 5l occured.\n"));
    EXPECT_FALSE(File::exists(workPath("b.bak")));
    // Only a pattern's files are reported.
    EXPECT_THAT(messages([] {
                    EXPECT_FALSE(File::removeEx(workPath("single.txt")));
                    EXPECT_FALSE(File::removeEx(workPath("missing")));
                    EXPECT_FALSE(File::removeByWildCard(workPath(""), "*.bak", true));
                    EXPECT_TRUE(File::removeEx(workPath("missing*")));
                }),
                IsEmpty());
    for (const char* name : {"a.bak", "c.bak", "single.txt"})
        MdToolsTest::setWriteProtected(workPath(name), false);
}

TEST(FileMessages, filesInUse)
{
    const std::string name = workPath("used.tmp");
    std::FILE* file = File::open(name, "w");
    const std::string shown = Tools::Path::convert(name, false);
    EXPECT_THAT(messages([] { EXPECT_FALSE(File::removeEx(workPath("used.*"))); }),
                ElementsAre("Tools::File::removeEx(" + shown + "): ERROR 32l occured.\n"));
    EXPECT_EQ(File::close(file), 0);
    EXPECT_TRUE(File::removeEx(workPath("used.*")));
}

TEST(FileMessages, withoutMemoryNothingIsAppended)
{
    writeFile(workPath("source"), std::string(1'000'000, 's'));
    writeFile(workPath("target"), "precious");
    s_hasMemory = false;
    const bool appended = File::concatenate(workPath("source"), workPath("target"));
    s_hasMemory = true;
    EXPECT_FALSE(appended);
    EXPECT_EQ(MdToolsTest::readFile(workPath("target")), "precious");
    EXPECT_TRUE(File::concatenate(workPath("source"), workPath("target")));
}

TEST(FileMessages, directoriesThatCannotBeMade)
{
    EXPECT_TRUE(Directory::createRecursively(workPath("s/sub")));
    EXPECT_TRUE(Directory::create(workPath("there")));
    struct Case {
        const char *target, *code;
    };
    static const Case cases[] = {{"there", "183"}, {"missing/t", "3"}};
    for (const Case& c : cases) {
        const std::string target = workPath(c.target);
        EXPECT_THAT(messages([&] { EXPECT_FALSE(Directory::copy(workPath("s"), target)); }),
                    ElementsAre("CreateDirectory for \"" + target +
                                "\" failed with LastError: " + c.code + "\n"));
    }
    EXPECT_THAT(messages([&] { EXPECT_TRUE(Directory::copy(workPath("s"), workPath("new"))); }),
                IsEmpty());
}

}
