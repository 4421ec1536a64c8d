#include <mdtools/system.h>
#include <mdtools/threads.h>

#include "support/waiting.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

namespace {

using namespace Tools;
using MdToolsTest::Latch;

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
        m_outcome.ended.countDown();
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
                ended->countDown();
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
