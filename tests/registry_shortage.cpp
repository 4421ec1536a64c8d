// Stores on Linux when something is short: memory maps, descriptors, time, room.
#include "registry_files_test.h"
#include "support/files.h"
#include "support/waiting.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace Tools;
using namespace MdToolsTest;

// Each fork closes the databases and opens them again, with the one counter that was there.
TEST_F(RegistryFiles, forksLeaveNothingBehind)
{
    writeText("v", "1");
    const auto mappedCounters = [] {
        std::ifstream maps("/proc/self/maps");
        int count = 0;
        for (std::string line; std::getline(maps, line);)
            count += line.find(" /dev/shm/") != std::string::npos ? 1 : 0;
        return count;
    };
    const int before = mappedCounters();
    EXPECT_GE(before, 1);
    for (int i = 0; i < 20; ++i) {
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(0);
        ::waitpid(child, nullptr, 0);
        writeText("v", std::to_string(i));
    }
    EXPECT_EQ(mappedCounters(), before);
}

// A moment without a descriptor to spare costs what was written in it and nothing else.
TEST_F(RegistryFiles, noDescriptorForAMoment)
{
    writeText("v", "1");
    const pid_t child = ::fork();
    if (child == 0) {
        rlimit limit{};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        rlimit none = limit;
        none.rlim_cur = 0;
        ::setrlimit(RLIMIT_NOFILE, &none);
        writeText("v", "2");
        ::setrlimit(RLIMIT_NOFILE, &limit);
        writeText("w", "3");
        ::_exit(m_key["v"].getString() == "1" && m_key["w"].getString() == "3" ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(m_key["w"].getString(), "3");
}

// Another program may hold the database for as long as it likes: reads go on, and a write is given
// up in the end. SQLite itself takes its usual locks here, which agree with the store's own.
TEST_F(RegistryFiles, aWriterThatStays)
{
    writeText("v", "1");
    const fs::path ready = m_directory / "ready";
    const pid_t holder = ::fork();
    if (holder == 0) {
        sqlite3* connection = nullptr;
        sqlite3_open((ownStore() / "user.db").c_str(), &connection);
        sqlite3_exec(connection, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
        writeFile(ready, "");
        ::pause();
        ::_exit(0);
    }
    ASSERT_TRUE(waitUntil([&] { return fs::exists(ready); })) << "nobody holds the store";
    EXPECT_EQ(run({"read", User, "none", ""}), "invalid\n");
    EXPECT_EQ(Registry::find(Registry::CurrentUser, m_path, false)["v"].getString(), "1");
    writeText("v", "2");
    EXPECT_EQ(m_key["v"].getString(), "1");
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    writeText("v", "3");
    EXPECT_EQ(m_key["v"].getString(), "3");
}

// What is stored can be read when the disk is full, with or without the index of the log.
TEST_F(RegistryFiles, fullDisk)
{
    const fs::path folder = m_directory / "disk";
    const SmallDisk disk(folder.string(), 300 * 1024);
    if (!disk.isThere())
        GTEST_SKIP() << disk.why();
    const Variables all = {{"MDTOOLS_REGISTRY_DIR", folder.string()}};
    const auto child = [&all](const std::vector<std::string>& arguments) {
        return runChild(builtProgram("settings_child"), arguments, all).output;
    };
    child({"write", User, "K", "v", "first"});
    child({"words", User, "K", "w", "50"});
    const auto fill = [&folder](const char* name) {
        std::ofstream filler(folder / name, std::ios::binary);
        for (int i = 0; filler && i < 1000; ++i)
            filler << std::string(1024, 'x') << std::flush;
    };
    fill("filler");
    // There may be a last piece of room for it.
    child({"write", User, "K", "v", "second"});
    const std::string kept = child({"read", User, "K", "v"});
    EXPECT_TRUE(kept == "first\n" || kept == "second\n") << kept;
    fs::remove(folder / "user.db-shm");
    fill("more");
    EXPECT_EQ(child({"read", User, "K", "v"}), kept);
    EXPECT_EQ(child({"read", User, "K", "w7"}), "7\n");
    // Who found no room for the index writes when there is some again.
    Child writer(builtProgram("settings_child"), {"count", User, "K", "n"}, all);
    EXPECT_EQ(child({"read", User, "K", "n"}), "invalid\n");
    fs::remove(folder / "filler");
    fs::remove(folder / "more");
    EXPECT_TRUE(waitUntil([&] {
        return child({"read", User, "K", "n"}) != "invalid\n";
    })) << "nothing is written";
    writer.kill();
}

}
