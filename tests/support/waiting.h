#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace MdToolsTest {

// Long enough for any machine, short enough for a test that hangs.
constexpr std::chrono::seconds WaitLimit{60};

// Waits until the condition holds; false if it does not in time.
template <class Condition>
bool waitUntil(Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + WaitLimit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// std::latch, which has lost wake-ups on one of the platforms, with a limit: a test whose threads
// do not arrive fails instead of hanging.
class Latch {
public:
    explicit Latch(int count) : m_count(count) {}

    void countDown()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (--m_count == 0)
            m_zero.notify_all();
    }
    void wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_zero.wait_for(lock, WaitLimit, [this] { return m_count <= 0; }))
            ADD_FAILURE() << m_count << " did not arrive in time";
    }
    void arriveAndWait()
    {
        countDown();
        wait();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_zero;
    int m_count;
};

}
