#include "support/waiting.h"

#include <chrono>
#include <thread>

namespace MdToolsTest {

::testing::AssertionResult waitUntil(const std::string& what,
                                     const std::function<bool()>& condition,
                                     const std::function<bool()>& mayStill)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    for (;;) {
        // Asked first: what came true just before the end of a program counts.
        const bool isLast = mayStill && !mayStill();
        const bool isLate = std::chrono::steady_clock::now() > deadline;
        if (condition())
            return ::testing::AssertionSuccess();
        if (isLast)
            return ::testing::AssertionFailure() << "cannot happen any more: " << what;
        if (isLate)
            return ::testing::AssertionFailure() << "did not happen in a minute: " << what;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

}
