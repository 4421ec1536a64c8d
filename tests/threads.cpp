#include <mdtools/system.h>
#include <mdtools/threads.h>

#include "support/child_process.h"
#include "support/module.h"
#include "support/process_state.h"
#include "support/test_receiver.h"
#include "threads/processors.h"
#include "trace/debug_sender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace Tools;

namespace {

using testing::ElementsAre;

// std::latch, which has lost wake-ups on one of the platforms.
class Latch {
public:
    explicit Latch(int count) : m_count(count) {}

    void count_down()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (--m_count == 0)
            m_zero.notify_all();
    }
    void wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_zero.wait(lock, [this] { return m_count == 0; });
    }
    void arrive_and_wait()
    {
        count_down();
        wait();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_zero;
    int m_count;
};

// Runs `function` on another thread and waits for it.
template <class Function>
void elsewhere(Function function)
{
    std::thread(function).join();
}

TEST(CriticalSection, isRecursiveAndExcludesOtherThreads)
{
    CriticalSection section;
    CriticalSection copy(section);
    CriticalSection other;
    const auto isFree = [](CriticalSection& s) {
        bool taken = false;
        elsewhere([&] {
            taken = s.tryLock();
            if (taken)
                s.unlock();
        });
        return taken;
    };
    {
        const CriticalSectionLocker locker(section);
        EXPECT_TRUE(section.tryLock());
        copy.lock();
        section.unlock();
        copy.unlock();
        EXPECT_FALSE(isFree(section));
        EXPECT_FALSE(isFree(copy));
        EXPECT_TRUE(isFree(other));
        other = section;
        EXPECT_FALSE(isFree(other));
    }
    EXPECT_TRUE(isFree(copy));
}

TEST(CriticalSection, copiesShareOneLockUntilTheLastIsGone)
{
    auto first = std::make_unique<CriticalSection>();
    CriticalSection second(*first);
    second = *first;
    int value = 0;
    first.reset();
    const auto count = [&] {
        for (int i = 0; i < 10'000; ++i) {
            CriticalSection third(second);
            const CriticalSectionLocker locker(third);
            ++value;
        }
    };
    std::thread thread(count);
    count();
    thread.join();
    EXPECT_EQ(value, 20'000);
}

// Tells what became of it when it is deleted by its own thread.
class Countdown : public Thread {
public:
    struct Outcome {
        int steps = 0;
        int result = 0;
        std::thread::id worker, deleter;
        Latch ended{1};
    };

    Countdown(Outcome& outcome, int steps, bool hasResult)
        : m_outcome(outcome), m_steps(steps), m_hasResult(hasResult)
    {}

    ~Countdown() override
    {
        m_outcome.result = result();
        m_outcome.deleter = std::this_thread::get_id();
        m_outcome.ended.count_down();
    }

    bool run() override
    {
        m_outcome.worker = std::this_thread::get_id();
        if (m_hasResult)
            setResult(m_steps);
        return ++m_outcome.steps < m_steps;
    }

private:
    Outcome& m_outcome;
    int m_steps;
    bool m_hasResult;
};

TEST(Thread, runsUntilToldToStopAndDeletesItself)
{
    struct Case {
        int steps;
        bool hasResult;
        int result;
    };
    for (const Case& c : {Case{1, false, -1}, Case{1, true, 1}, Case{1000, true, 1000}}) {
        SCOPED_TRACE(c.steps);
        Countdown::Outcome outcome;
        (new Countdown(outcome, c.steps, c.hasResult))->start();
        outcome.ended.wait();
        EXPECT_EQ(outcome.steps, c.steps);
        EXPECT_EQ(outcome.result, c.result);
        EXPECT_EQ(outcome.worker, outcome.deleter);
        EXPECT_NE(outcome.worker, std::this_thread::get_id());
    }
}

TEST(Thread, mayEndBeforeStartReturns)
{
    for (int i = 0; i < 300; ++i) {
        Countdown::Outcome outcome;
        (new Countdown(outcome, 1, false))->start();
        outcome.ended.wait();
    }
}

TEST(Thread, copiesShareTheThreadAndTakeTheResult)
{
    // Takes a copy of itself that outlives it.
    struct Copied : Thread {
        explicit Copied(std::unique_ptr<Copied>& target, Latch& latch)
            : copy(&target), ended(&latch)
        {}
        Copied(const Copied&) = default;
        ~Copied() override
        {
            if (copy != nullptr)
                ended->count_down();
        }
        bool run() override
        {
            setResult(7);
            *copy = std::make_unique<Copied>(*this);
            (*copy)->copy = nullptr;
            return false;
        }
        std::unique_ptr<Copied>* copy;
        Latch* ended;
    };
    Latch ended(1);
    std::unique_ptr<Copied> copy;
    (new Copied(copy, ended))->start();
    ended.wait();
    EXPECT_EQ(copy->result(), 7);
}

// What a work item does is a function object behind its context.
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
    auto meet = [&all] { all.arrive_and_wait(); };
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
            finished.count_down();
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
        started.count_down();
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
    release.count_down();
    runner.join();
    adder.join();
    EXPECT_TRUE(added);
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
        4, [&all](int, int) { all.arrive_and_wait(); }, false);
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
                        started.count_down();
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
            System::sleep(100'000);
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
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (countThreads() > threads && std::chrono::steady_clock::now() < patience)
        std::this_thread::yield();
    EXPECT_LE(countThreads(), threads);
}

// A machine of the test's own making.
class FakeSource : public ProcessorSource {
public:
    Platform::Processors processors;
    mutable std::vector<std::string> messages;

    Platform::Processors read() const override { return processors; }
    void report(const char* text) const override { messages.emplace_back(text); }
};

TEST(CoreCount, fallsBackWithAMessage)
{
    using Answer = Platform::Processors::Answer;
    struct Case {
        Answer answer;
        int error;
        int cores;
        const char* message;
    };
    const Case cases[] = {
        {Answer::NotSupported, 0, 1,
         "\n getCpuCount : GetLogicalProcessorInformation is not supported.\n"},
        {Answer::NoMemory, 0, 2, "\n getCpuCount : Error: Allocation failure\n"},
        {Answer::Failed, 5, 3, "\n getCpuCount : Error 5\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        FakeSource source;
        source.processors.answer = c.answer;
        source.processors.error = c.error;
        const CoreCount count = determineCoreCount(source);
        EXPECT_EQ(count.cores, c.cores);
        EXPECT_FALSE(count.isDetermined);
        EXPECT_THAT(source.messages, ElementsAre(c.message));
    }
}

TEST(CoreCount, countsCoresNotHardwareThreads)
{
    FakeSource source;
    source.processors.records = {{0, 0x3, 0}, {2, 0x3, 1}, {2, 0x3, 1}, {0, 0x8000000000000004, 0},
                                 {2, 0xC, 2}, {9, 0xF, 0}, {2, 0xF, 3}, {2, 0xF, 4},
                                 {1, 0xF, 0}, {3, 0xF, 0}, {3, 0x0, 0}};
    const CoreCount count = determineCoreCount(source);
    EXPECT_TRUE(count.isDetermined);
    EXPECT_EQ(count.cores, 2);
    EXPECT_THAT(
        source.messages,
        ElementsAre("\n getCpuCount : Error: Unsupported LOGICAL_PROCESSOR_RELATIONSHIP value.\n",
                    "\n getCpuCount : GetLogicalProcessorInformation results:\n",
                    "Number of NUMA nodes: 1\n", "Number of physical processor packages: 2\n",
                    "Number of processor cores: 2\n", "Number of logical processors: 4\n",
                    "Number of processor L1/L2/L3 caches: 2/1/1\n"));
}

TEST(CoreCount, reportsTheMachineOnTheDebugChannel)
{
    using testing::StartsWith;
    const MdToolsTest::TestReceiver receiver;
    ASSERT_TRUE(receiver.running());
    DebugSender::restart();
    const CoreCount count = determineCoreCount(ProcessorSource());
    DebugSender::end();
    std::vector<std::string> pieces;
    for (const auto& piece : receiver.pieces())
        pieces.push_back(piece.text);
    EXPECT_THAT(pieces,
                ElementsAre("\n", " getCpuCount : GetLogicalProcessorInformation results:\n",
                            StartsWith("Number of NUMA nodes: "),
                            StartsWith("Number of physical processor packages: "),
                            "Number of processor cores: " + std::to_string(count.cores) + '\n',
                            StartsWith("Number of logical processors: "),
                            StartsWith("Number of processor L1/L2/L3 caches: ")));
    EXPECT_TRUE(count.isDetermined);
}

TEST(CoreCount, isThatOfTheMachineUnlessOverridden)
{
    const int cores = System::getCpuCoreCount();
    EXPECT_GE(cores, 1);
    EXPECT_LE(cores, static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U)));
    System::attachCpuCoreCountFunction([] { return 16; });
    EXPECT_EQ(System::getCpuCoreCount(), 16);
    System::attachCpuCoreCountFunction(nullptr);
    EXPECT_EQ(System::getCpuCoreCount(), cores);
}

TEST(System, sleepsNoShorterThanAskedAndNeverForEver)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    System::sleep(-1);
    System::sleep(0);
    System::sleep(30);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(29));
}

}
