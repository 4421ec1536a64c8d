// What only this platform has: the kernel's files about processors, fork, signals, named pipes.
#include <mdtools/process.h>
#include <mdtools/threads.h>

#include "platform/posix/topology.h"
#include "support/test_environment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <tuple>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Tools;
using Platform::ProcessorRecord;

namespace Tools::Platform {
static bool operator==(const ProcessorRecord& a, const ProcessorRecord& b)
{
    return std::tie(a.relation, a.mask, a.cacheLevel) == std::tie(b.relation, b.mask, b.cacheLevel);
}
}

namespace {

using Files = std::map<std::string, std::string>;

std::vector<ProcessorRecord> readTopology(const Files& files)
{
    const std::filesystem::path root = MdToolsTest::workDirectory() + "/system";
    for (const auto& [name, text] : files) {
        std::filesystem::create_directories((root / name).parent_path());
        std::ofstream(root / name) << text << '\n';
    }
    auto records = Platform::readTopology(root.string(), 3);
    std::filesystem::remove_all(root);
    std::sort(records.begin(), records.end(), [](const auto& a, const auto& b) {
        return std::tie(a.relation, a.mask, a.cacheLevel) <
               std::tie(b.relation, b.mask, b.cacheLevel);
    });
    return records;
}

TEST(Topology, groupsHardwareThreads)
{
    // Processors 0 and 2 are threads of one core, 3 is a core with its sibling offline.
    const auto records = readTopology({
        {"cpu/online", "0,2-3"},
        {"cpu/cpu0/topology/core_cpus_list", "0,2"},
        {"cpu/cpu2/topology/core_cpus_list", "0,2"},
        {"cpu/cpu3/topology/thread_siblings_list", "3"},
        {"cpu/cpu0/topology/package_cpus_list", "0,2"},
        {"cpu/cpu2/topology/package_cpus_list", "0,2"},
        {"cpu/cpu3/topology/core_siblings_list", "3"},
        {"cpu/cpu0/cache/index0/shared_cpu_list", "0,2"},
        {"cpu/cpu0/cache/index0/level", "1"},
        {"cpu/cpu0/cache/index1/shared_cpu_list", "0,2-3"},
        {"cpu/cpu0/cache/index1/level", "3"},
        {"cpu/cpu3/cache/index0/shared_cpu_list", "3"},
        {"cpu/cpu3/cache/index0/level", "1"},
        {"cpu/cpu3/cache/index1/shared_cpu_list", "0,2-3"},
        {"cpu/cpu3/cache/index1/level", "3"},
        {"node/online", "0-1"},
        {"node/node0/cpulist", "0,2-3"},
        {"node/node1/cpulist", ""},
    });
    const std::vector<ProcessorRecord> expected = {
        {0, 0x5, 0}, {0, 0x8, 0}, {1, 0, 0},   {1, 0xD, 0}, {2, 0x5, 1},
        {2, 0x8, 1}, {2, 0xD, 3}, {3, 0x5, 0}, {3, 0x8, 0},
    };
    EXPECT_EQ(records, expected);
}

TEST(Topology, copesWithMissingFilesAndHighNumbers)
{
    EXPECT_EQ(readTopology({}), (std::vector<ProcessorRecord>{
                                    {0, 1, 0}, {0, 2, 0}, {0, 4, 0}, {1, 7, 0}, {3, 7, 0}}));
    // 3 and 67 are two threads, though their numbers meet in the mask.
    const auto high = readTopology({
        {"cpu/online", "3,67,x,-4,9-"},
        {"cpu/cpu3/topology/core_cpus_list", "3,67"},
        {"cpu/cpu67/topology/core_cpus_list", "3,67"},
    });
    EXPECT_EQ(high, (std::vector<ProcessorRecord>{{0, 3, 0}, {1, 3, 0}, {3, 3, 0}}));
}

TEST(Fork, leavesTheChildWithAPoolThatWorks)
{
    std::atomic<int> sum{0};
    const auto loop = [&sum] {
        ThreadUtility::forEach(
            10, [&sum](int begin, int end) { sum += end - begin; }, false);
    };
    loop();
    const pid_t child = fork();
    if (child == 0) {
        loop();
        loop();
        std::exit(sum);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 30);
    loop();
    EXPECT_EQ(sum, 20);
}

// The pool's threads take no signals, but what they start does.
TEST(Signals, reachAProgramThatThePoolStarts)
{
    Process process;
    process.setCommandLine("/bin/sh -c \"kill -TERM $$; exit 3\"");
    process.enableWait(true);
    ThreadUtility::forEach(
        1, [&](int, int) { process.run(); }, true);
    EXPECT_EQ(process.returnCode(), 128U + SIGTERM);
}

TEST(Pipe, thatNobodyWritesToIsAnEmptyInput)
{
    const std::string pipe = MdToolsTest::workDirectory() + "/pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const ProcessHandle reader = Process::start("/bin/cat", false, pipe);
    EXPECT_TRUE(Process::waitFor(reader, 10000));
    Process::close(reader);
}

}
