// What only this platform promises: the other one's run-time frees thread-local objects before
// their destructors run.
#include <mdtools/message_window.h>

#include "platform/window.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <thread>

namespace {

using namespace Tools;

constexpr unsigned int Request = MessageWindow::FirstMessage + 7;

// Uses windows at its end, as an object that reports the end of its work does.
struct LateUser {
    std::function<void()> use;
    ~LateUser()
    {
        if (use)
            use();
    }
};

// Makes a window and has another thread send to it.
void useWindows()
{
    MessageWindow window(nullptr);
    std::thread sender([handle = window.handle()] { Platform::sendMessage(handle, Request); });
    EXPECT_EQ(window.waitMessages(30'000), 1);
    sender.join();
}

TEST(MessageWindow, servesDestructorsOfThreadLocalObjects)
{
    MessageWindow* left = nullptr;
    std::thread([&left] {
        // Made before anything of this thread's windows, so that it goes after all of that.
        static thread_local LateUser user;
        user.use = [&left] {
            useWindows();
            left = new MessageWindow(nullptr);
        };
        useWindows();
    }).join();
    ASSERT_NE(left, nullptr);
    // The late window has ended with its thread: nobody waits for it.
    Platform::sendMessage(left->handle(), Request);
    delete left;
}

TEST(MessageWindow, servesDestructorsOfStaticObjects)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            static LateUser user;
            user.use = [] {
                useWindows();
                std::_Exit(testing::Test::HasFailure() ? 8 : 7);
            };
            useWindows();
            std::exit(6);
        },
        testing::ExitedWithCode(7), "");
}

}
