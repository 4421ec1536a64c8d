#include <mdtools/system.h>
#include <mdtools/threads.h>

#include "support/child_process.h"
#include "support/module.h"
#include "support/process_state.h"
#include "support/waiting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace Tools;
using MdToolsTest::Latch;

// What a work item does is a function object, its context.
template <class Function>
std::unique_ptr<ThreadWork> makeWork(ThreadPool& pool, Function& function)
{
    return std::make_unique<ThreadWork>(
        &pool, [](WorkInstance, void* f, WorkHandle) { (*static_cast<Function*>(f))(); },
        &function);
}

TEST(ThreadPool, runsItsItemsAgainUntilTheyAreCleared)
{
    ThreadPool pool;
    pool.runWorks();
    std::atomic<int> calls{0};
    std::atomic<bool> onCaller{false};
    const auto caller = std::this_thread::get_id();
    auto body = [&] {
        ++calls;
        if (std::this_thread::get_id() == caller)
            onCaller = true;
    };
    for (int i = 0; i < 50; ++i)
        pool.addWork(makeWork(pool, body));
    pool.addWork(nullptr);
    pool.addWork(std::make_unique<ThreadWork>(&pool, nullptr, nullptr));
    for (int run = 1; run <= 200; ++run) {
        pool.runWorks();
        ASSERT_EQ(calls, run * 50);
    }
    pool.clearWorks();
    pool.runWorks();
    pool.addWork(makeWork(pool, body));
    pool.runWorks();
    EXPECT_EQ(calls, 10'001);
    EXPECT_FALSE(onCaller);
}

TEST(ThreadPool, hasTwiceAsManyThreadsAsCoresForWorkThatWaits)
{
    System::attachCpuCoreCountFunction([] { return 3; });
    ThreadPool pool;
    System::attachCpuCoreCountFunction(nullptr);
    Latch all(6);
    auto meet = [&all] { all.arriveAndWait(); };
    for (int i = 0; i < 6; ++i)
        pool.addWork(makeWork(pool, meet));
    pool.runWorks();
}

TEST(ThreadPool, startsItemsInOrderOnOneThread)
{
    // One thread is enough to see the order, and the other one is kept busy.
    System::attachCpuCoreCountFunction([] { return -5; });
    ThreadPool pool;
    System::attachCpuCoreCountFunction(nullptr);
    Latch finished(20);
    auto block = [&finished] { finished.wait(); };
    pool.addWork(makeWork(pool, block));
    std::vector<int> order;
    std::vector<std::function<void()>> steps;
    for (int i = 0; i < 20; ++i)
        steps.emplace_back([&order, &finished, i] {
            order.push_back(i);
            finished.countDown();
        });
    for (auto& step : steps)
        pool.addWork(makeWork(pool, step));
    pool.runWorks();
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_EQ(order.size(), 20U);
}

TEST(ThreadPool, makesOtherThreadsWaitForARunningBatch)
{
    ThreadPool pool;
    Latch started(1);
    Latch release(1);
    std::atomic<bool> added{false};
    auto body = [&] {
        started.countDown();
        release.wait();
        EXPECT_FALSE(added);
    };
    auto nothing = [] {};
    pool.addWork(makeWork(pool, body));
    std::thread runner([&] { pool.runWorks(); });
    started.wait();
    std::thread adder([&] {
        pool.addWork(makeWork(pool, nothing));
        added = true;
    });
    release.countDown();
    runner.join();
    adder.join();
    EXPECT_TRUE(added);
}

// Nor are items destroyed under a run.
TEST(ThreadPool, clearsItsItemsWhenTheRunIsOver)
{
    ThreadPool pool;
    Latch started(1);
    Latch release(1);
    std::atomic<bool> cleared{false};
    auto body = [&] {
        started.countDown();
        release.wait();
        System::sleep(1);
        EXPECT_FALSE(cleared);
    };
    pool.addWork(makeWork(pool, body));
    std::thread runner([&] { pool.runWorks(); });
    started.wait();
    std::thread clearer([&] {
        pool.clearWorks();
        cleared = true;
    });
    release.countDown();
    runner.join();
    clearer.join();
    // As many as before the last run, but others.
    std::atomic<int> calls{0};
    auto count = [&calls] { ++calls; };
    pool.addWork(makeWork(pool, count));
    pool.runWorks();
    pool.clearWorks();
    pool.addWork(makeWork(pool, count));
    pool.clearWorks();
    auto twice = [&calls] { calls += 10; };
    pool.addWork(makeWork(pool, twice));
    pool.runWorks();
    EXPECT_EQ(calls, 11);
}

class ForEach : public testing::Test {
protected:
    ~ForEach() override { System::attachCpuCoreCountFunction(nullptr); }

    using Ranges = std::vector<std::pair<int, int>>;

    static Ranges rangesOf(int count, bool sequential)
    {
        std::mutex mutex;
        Ranges ranges;
        ThreadUtility::forEach(
            count,
            [&](int begin, int end) {
                const std::lock_guard<std::mutex> lock(mutex);
                ranges.emplace_back(begin, end);
            },
            sequential);
        std::sort(ranges.begin(), ranges.end());
        return ranges;
    }
};

TEST_F(ForEach, splitsTheRangeOverTheCores)
{
    struct Case {
        int (*cores)();
        int count;
        bool sequential;
        Ranges ranges;
    };
    const Case cases[] = {
        {[] { return 8; }, 3, false, {{0, 1}, {1, 3}}},
        {[] { return 4; }, 10, false, {{0, 2}, {2, 4}, {4, 6}, {6, 10}}},
        {[] { return 4; }, 4, false, {{0, 1}, {1, 2}, {2, 3}, {3, 4}}},
        {[] { return 4; }, 1, false, {{0, 1}}},
        {[] { return 4; }, 0, false, {{0, 0}}},
        {[] { return 4; }, -7, false, {{0, 0}}},
        {[] { return 4; }, 100, true, {{0, 100}}},
        {[] { return 0; }, 100, false, {{0, 100}}},
        {[] { return -2; }, 100, false, {{0, 100}}},
        {[] { return 2; }, 2147483647, false, {{0, 1073741823}, {1073741823, 2147483647}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.count);
        System::attachCpuCoreCountFunction(c.cores);
        EXPECT_EQ(rangesOf(c.count, c.sequential), c.ranges);
    }
}

TEST_F(ForEach, visitsEveryIndexOnceHoweverTheLoopsFollow)
{
    static int cores;
    System::attachCpuCoreCountFunction([] { return cores; });
    for (int i = 0; i < 3000; ++i) {
        cores = i % 7 + 1;
        std::vector<unsigned char> visits(static_cast<std::size_t>(i % 41));
        ThreadUtility::forEach(
            static_cast<int>(visits.size()),
            [&visits, i](int begin, int end) {
                if (i % 100 == 0)
                    System::sleep(1);
                for (int k = begin; k < end; ++k)
                    ++visits[static_cast<std::size_t>(k)];
            },
            false);
        ASSERT_EQ(std::accumulate(visits.begin(), visits.end(), std::size_t{0}), visits.size());
    }
}

TEST_F(ForEach, givesEachChunkItsOwnBodyAndKeepsNone)
{
    System::attachCpuCoreCountFunction([] { return 5; });
    const auto alive = std::make_shared<int>();
    std::atomic<int> total{0};
    ThreadUtility::forEach(
        1000,
        [alive, &total, sum = 0](int begin, int end) mutable {
            for (int i = begin; i < end; ++i)
                ++sum;
            total += sum;
        },
        false);
    EXPECT_EQ(total, 1000);
    EXPECT_EQ(alive.use_count(), 1);
    ThreadUtility::forEach(10, nullptr, false);
}

TEST_F(ForEach, leavesTheFormerStateIfABodyCannotBeCopied)
{
    System::attachCpuCoreCountFunction([] { return 4; });
    struct Body {
        Body(int& copyLimit, std::atomic<int>& callCount) : copies(&copyLimit), calls(&callCount) {}
        Body(const Body& other) : copies(other.copies), calls(other.calls)
        {
            if (--*copies < 0)
                throw std::runtime_error("no more copies");
        }
        void operator()(int, int) const { ++*calls; }
        int* copies;
        std::atomic<int>* calls;
    };
    int copies = 4;
    std::atomic<int> calls{0};
    EXPECT_THROW(ThreadUtility::forEach(100, Body(copies, calls), false), std::runtime_error);
    EXPECT_EQ(calls, 0);
    copies = 100;
    ThreadUtility::forEach(100, Body(copies, calls), false);
    EXPECT_EQ(calls, 4);
}

TEST_F(ForEach, loopsOfTwoThreadsTakeTurns)
{
    std::atomic<int> running{0};
    const auto loop = [&running] {
        for (int i = 0; i < 200; ++i)
            ThreadUtility::forEach(
                1,
                [&running](int, int) {
                    EXPECT_EQ(++running, 1);
                    --running;
                },
                false);
    };
    std::thread other(loop);
    loop();
    other.join();
}

TEST_F(ForEach, startsAllChunksThoughNoneEnds)
{
    System::attachCpuCoreCountFunction([] { return 4; });
    Latch all(4);
    ThreadUtility::forEach(
        4, [&all](int, int) { all.arriveAndWait(); }, false);
}

class ProcessEnd : public testing::Test {
protected:
    ProcessEnd() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

TEST_F(ProcessEnd, doesNotWaitForBusyThreads)
{
    EXPECT_EXIT(
        {
            Latch started(1);
            std::thread caller([&started] {
                ThreadUtility::forEach(
                    1,
                    [&started](int, int) {
                        started.countDown();
                        for (;;)
                            System::sleep(1000);
                    },
                    false);
            });
            started.wait();
            std::exit(3);
        },
        testing::ExitedWithCode(3), "");
}

TEST_F(ProcessEnd, mayComeFromABody)
{
    EXPECT_EXIT(ThreadUtility::forEach(
                    1, [](int, int) { std::exit(4); }, true),
                testing::ExitedWithCode(4), "");
}

struct Thrower : Thread {
    bool run() override { throw std::runtime_error("thrown"); }
};

TEST_F(ProcessEnd, followsFromAnExceptionThatNobodyCatches)
{
    const auto end = [] { std::set_terminate([] { std::_Exit(5); }); };
    EXPECT_EXIT(
        {
            end();
            ThreadUtility::forEach(
                1, [](int, int) { throw std::runtime_error("x"); }, false);
        },
        testing::ExitedWithCode(5), "");
    EXPECT_EXIT(
        {
            end();
            (new Thrower)->start();
            System::sleep(30'000);
        },
        testing::ExitedWithCode(5), "");
}

TEST(Unloading, endsTheThreadsOfTheLoops)
{
    using namespace MdToolsTest;
    const std::string module =
        (std::filesystem::path(ownProgram()).parent_path() / MDTOOLS_LOOP_MODULE).string();
    const int threads = countThreads();
    for (int i = 0; i < 5; ++i) {
        void* const loaded = loadModule(module);
        ASSERT_NE(loaded, nullptr);
        reinterpret_cast<void (*)()>(findFunction(loaded, "runLoops"))();
        freeModule(loaded);
        EXPECT_FALSE(isModuleLoaded(libraryPath()));
    }
    // Where the system ends the threads it takes a moment.
    EXPECT_TRUE(waitUntil([threads] { return countThreads() <= threads; }))
        << countThreads() << " threads instead of " << threads;
}

}
