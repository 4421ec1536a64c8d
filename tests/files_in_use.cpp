// Files that somebody holds, and those that may not be written.
#include "file_test.h"

#include <mdtools/directory.h>
#include <mdtools/file.h>
#include <mdtools/file_output.h>
#include <mdtools/logger.h>

#include "support/child_process.h"
#include "support/files.h"
#include "support/process_state.h"
#include "support/test_environment.h"
#include "support/waiting.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using MdToolsTest::FileTest;
using MdToolsTest::HeldFile;
using MdToolsTest::readFile;
using Tools::Directory;
using Tools::File;

TEST_F(FileTest, isLocked)
{
    const std::string name = make("a", "1");
    EXPECT_FALSE(File::isLocked(path("missing")));
    EXPECT_FALSE(File::isLocked(name));
    EXPECT_TRUE(File::isLocked(m_directory));
    {
        const HeldFile held(name);
        EXPECT_TRUE(File::isLocked(name));
        EXPECT_EQ(File::open(name, "r"), nullptr);
        EXPECT_TRUE(File::isEmpty(name));
        EXPECT_FALSE(File::isEqual(name, name));
        EXPECT_FALSE(File::copy(name, path("b")));
        EXPECT_FALSE(File::copy(make("c"), name));
        EXPECT_FALSE(File::concatenate(path("c"), name));
        EXPECT_FALSE(File::concatenate(name, path("c")));
    }
    EXPECT_EQ(readFile(name), "1");
    EXPECT_FALSE(File::isLocked(name));
}

// The answers are those of Windows' own run-time library; that of Wine opens files without sharing
// modes.
TEST_F(FileTest, filesInUse)
{
    using Close = std::function<void()>;
    const std::string name = path("a");
    const auto open = [&name](const char* mode) {
        std::FILE* file = File::open(name, mode);
        EXPECT_NE(file, nullptr) << mode;
        return Close([file] { File::close(file); });
    };
    const auto logger = [&name] {
        auto log = std::make_shared<Tools::FileLogger>("");
        log->initialize(name);
        return Close([log] { log->release(); });
    };
    const auto output = [&name] {
        auto out = std::make_shared<std::optional<Tools::FileOutput>>(std::in_place, name);
        return Close([out] { out->reset(); });
    };
    struct Case {
        const char* holder;
        std::function<Close()> hold;
        bool canBeRead, canBeCopied, canBeLogged;
    };
    const Case cases[] = {
        {"r", [&] { return open("r"); }, true, true, false},
        {"w", [&] { return open("w"); }, false, false, false},
        {"a", [&] { return open("a"); }, false, false, false},
        {"r+", [&] { return open("r+"); }, false, false, false},
        {"logger", logger, false, true, true},
        {"output", output, false, true, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.holder);
        make("a", "1\n");
        const Close close = c.hold();
        expectToKeepItsName(name);
        if (MdToolsTest::OpenFilesAreNotShared) {
            EXPECT_FALSE(File::concatenate(make("source"), name));
            EXPECT_FALSE(File::copy(path("source"), name));
            for (const char* mode : {"w", "a", "r+"})
                EXPECT_EQ(File::open(name, mode), nullptr) << mode;
            std::FILE* reader = File::open(name, "r");
            EXPECT_EQ(reader != nullptr, c.canBeRead);
            File::close(reader);
            EXPECT_EQ(File::copy(name, path("copy")), c.canBeCopied);
            Tools::FileLogger second("");
            second.initialize(name);
            second.writeLine("logged");
            EXPECT_EQ(MdToolsTest::readText(name).ends_with("logged\n"), c.canBeLogged);
        }
        close();
        EXPECT_FALSE(File::isLocked(name));
        EXPECT_TRUE(File::rename(name, path("b")));
        EXPECT_TRUE(File::remove(path("b")));
    }
}

TEST_F(FileTest, anotherProcessHoldsAFile)
{
    const std::string name = make("a", "1");
    const std::string source = make("source", "2");
    {
        MdToolsTest::Child child(MdToolsTest::builtProgram("file_child"),
                                 {"a", name, path("ready")});
        ASSERT_TRUE(child.isRunning());
        ASSERT_TRUE(MdToolsTest::waitUntil([this] { return File::exists(path("ready")); }))
            << "the other process did not open the file";
        EXPECT_TRUE(File::isLocked(name));
        EXPECT_FALSE(File::concatenate(source, name));
        EXPECT_FALSE(File::remove(name));
        EXPECT_FALSE(File::rename(name, path("b")));
        if (MdToolsTest::OpenFilesAreNotShared) {
            EXPECT_EQ(File::open(name, "r"), nullptr);
            EXPECT_EQ(File::open(name, "w"), nullptr);
        }
        child.kill();
        child.wait();
    }
    EXPECT_EQ(readFile(name), "1");
    EXPECT_TRUE(File::concatenate(source, name));
    EXPECT_EQ(readFile(name), "12");
}

TEST_F(FileTest, survivesAFullDisk)
{
    const MdToolsTest::SmallDisk disk(path("disk"), 65536);
    if (!disk.isThere())
        GTEST_SKIP() << disk.why();
    const std::string target = make("disk/a", "precious");
    for (const std::size_t size : {std::size_t{70'000}, std::size_t{1'000'000}}) {
        const std::string source = make("source", std::string(size, 's'));
        EXPECT_FALSE(File::concatenate(source, target));
        EXPECT_EQ(readFile(target), "precious");
        EXPECT_FALSE(File::copy(source, path("disk/b")));
        EXPECT_FALSE(File::exists(path("disk/b")));
    }
    EXPECT_TRUE(File::concatenate(make("source", "!"), target));
    EXPECT_EQ(readFile(target), "precious!");
}

TEST_F(FileTest, mayNotWriteThere)
{
    const std::string name = make("a", "1");
    const MdToolsTest::OrdinaryUser user;
    if (!user.isThere())
        GTEST_SKIP() << "Write-protected directories are not known here.";
    EXPECT_FALSE(File::remove(name));
    EXPECT_FALSE(File::removeEx(path("*")));
    EXPECT_FALSE(File::removeByWildCard(m_directory, "*", false));
    EXPECT_FALSE(File::removeDirectoryRecursively(m_directory));
    EXPECT_FALSE(Directory::copy(m_directory, path("copy")));
    EXPECT_FALSE(File::copy(name, path("b")));
    EXPECT_FALSE(File::rename(name, path("b")));
    EXPECT_FALSE(File::concatenate(name, path("b")));
    EXPECT_EQ(File::open(path("b"), "w"), nullptr);
    EXPECT_TRUE(File::isLocked(name));
    EXPECT_FALSE(Directory::create(path("c")));
    EXPECT_FALSE(Directory::createRecursively(path("c/d")));
    EXPECT_FALSE(Directory::removeRecursively(m_directory));
    EXPECT_EQ(readFile(name), "1");
}

TEST_F(FileTest, keepsNothingOpen)
{
    make("a", "1");
    const int before = MdToolsTest::countHandles();
    std::vector<File::Info> result;
    std::vector<std::unique_ptr<Directory>> searches;
    for (int i = 0; i < 20; ++i) {
        File::isEmpty(path("a"));
        File::isEqual(path("a"), path("a"));
        File::isLocked(path("a"));
        File::copy(path("a"), path("b"));
        File::concatenate(path("a"), path("b"));
        File::open(m_directory, "r");
        File::findByWildCard(m_directory, "*", result, true);
        File::removeEx(path("?b*"));
        // A search that found its last name holds nothing either.
        Directory& search = *searches.emplace_back(std::make_unique<Directory>());
        std::string name;
        search.start(path("*"), name);
        search.start(path("*"), name);
        while (search.find(name)) {
        }
        Directory::copy(m_directory, path("copy"), {}, {});
        Directory::removeRecursively(path("copy"));
    }
    EXPECT_LE(MdToolsTest::countHandles(), before + 2);
}

}
