// What only this platform has: the kernel's files about processors, fork, signals, named pipes.
#include <mdtools/process.h>
#include <mdtools/system.h>
#include <mdtools/threads.h>

#include "platform/posix/topology.h"
#include "support/test_environment.h"
#include "support/waiting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>

#include <pthread.h>
#include <sys/resource.h>
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

// The masks of this process's threads, as bits.
std::vector<std::uint64_t> blockedSignals()
{
    std::vector<std::uint64_t> masks;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream status(thread.path() / "status");
        for (std::string word; status >> word;) {
            if (word == "SigBlk:" && status >> word)
                masks.push_back(std::stoull(word, nullptr, 16));
        }
    }
    return masks;
}

// A crash handler runs wherever the crash is; everything else is for the program's own threads.
TEST(Signals, areBlockedInTheLibrarysThreadsUnlessTheyAreTheirOwn)
{
    constexpr int Own[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS};
    constexpr int Foreign[] = {SIGINT, SIGTERM, SIGHUP, SIGALRM, SIGCHLD, SIGUSR1, SIGPROF};
    sigset_t ownMask;
    ThreadUtility::forEach(
        1, [&ownMask](int, int) { ::pthread_sigmask(SIG_SETMASK, nullptr, &ownMask); }, true);
    for (const int signal : Own)
        EXPECT_EQ(::sigismember(&ownMask, signal), 0) << signal;
    for (const int signal : Foreign)
        EXPECT_EQ(::sigismember(&ownMask, signal), 1) << signal;

    // A child that nobody waits for has a thread that sees to it.
    const std::size_t before = blockedSignals().size();
    const std::string pipe = MdToolsTest::workDirectory() + "/hold";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    Process process;
    process.setCommandLine("/bin/sh -c \"read line < '" + pipe + "'\"");
    ASSERT_TRUE(process.run());
    EXPECT_EQ(blockedSignals().size(), before + 1);
    // A thread begins with all of them blocked.
    EXPECT_TRUE(MdToolsTest::waitUntil([&] {
        std::uint64_t blocked = 0;
        for (const std::uint64_t mask : blockedSignals())
            blocked |= mask;
        return std::none_of(std::begin(Own), std::end(Own),
                            [blocked](int signal) { return (blocked >> (signal - 1) & 1) != 0; });
    })) << "a thread that blocks them";
    std::ofstream(pipe) << "end\n";
}

TEST(Signals, doNotShortenASleep)
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, nullptr);
    std::atomic<bool> awake{false};
    std::thread other([&awake, sleeper = ::pthread_self()] {
        while (!awake) {
            ::pthread_kill(sleeper, SIGUSR1);
            System::sleep(1);
        }
    });
    const auto start = std::chrono::steady_clock::now();
    System::sleep(60);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
    awake = true;
    other.join();
}

// From now on this process, an ordinary user's, gets no more threads than that.
void limitThreads(rlim_t count)
{
    rlimit limit = {};
    ::getrlimit(RLIMIT_NPROC, &limit);
    limit.rlim_cur = std::min(count, limit.rlim_max);
    ::setrlimit(RLIMIT_NPROC, &limit);
}

// The exit status of a child that has no thread but its own, and is an ordinary user's.
int withoutThreads(int (*body)())
{
    const pid_t child = ::fork();
    if (child == 0) {
        constexpr uid_t Nobody = 65534;
        if (::geteuid() == 0 && ::setresuid(Nobody, Nobody, Nobody) != 0)
            ::_exit(99);
        limitThreads(0);
        ::alarm(60);
        ::_exit(body());
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// How many calls of a loop over 4 have run on this thread.
int callsHere()
{
    System::attachCpuCoreCountFunction([] { return 4; });
    std::atomic<int> calls{0};
    std::atomic<int> here{0};
    const auto caller = std::this_thread::get_id();
    ThreadUtility::forEach(
        4,
        [&](int begin, int end) {
            calls += end - begin;
            here += std::this_thread::get_id() == caller ? 1 : 0;
        },
        false);
    return calls == 4 ? here.load() : 100;
}

TEST(NoThreads, loopsRunOnTheCallerAsALastResort)
{
    EXPECT_EQ(withoutThreads([] {
                  const int first = callsHere();
                  const int second = callsHere();
                  limitThreads(RLIM_INFINITY);
                  return first * 16 + second + 8 * callsHere();
              }),
              4 * 16 + 4);
    // A loop within a body, which otherwise waits for ever, has nobody to wait for.
    EXPECT_EQ(withoutThreads([] {
                  int calls = 0;
                  ThreadUtility::forEach(
                      1, [&calls](int, int) { calls += callsHere(); }, true);
                  return calls;
              }),
              4);
    EXPECT_EQ(withoutThreads([] {
                  std::set_terminate([] { ::_exit(5); });
                  try {
                      ThreadUtility::forEach(
                          1, [](int, int) { throw std::runtime_error("body"); }, true);
                  } catch (...) {
                      return 6;
                  }
                  return 7;
              }),
              5);
    EXPECT_EQ(
        withoutThreads([] {
            ThreadPool pool;
            int calls = 0;
            for (int i = 0; i < 3; ++i)
                pool.addWork(std::make_unique<ThreadWork>(
                    &pool,
                    [](WorkInstance, void* count, WorkHandle) { ++*static_cast<int*>(count); },
                    &calls));
            pool.runWorks();
            pool.runWorks();
            return calls;
        }),
        6);
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
