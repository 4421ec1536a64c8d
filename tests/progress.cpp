#include <mdtools/message_window.h>
#include <mdtools/progress.h>
#include <mdtools/system.h>

#include "platform/window.h"
#include "support/waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace Tools;

namespace {

using testing::ElementsAre;

constexpr unsigned int Request = MessageWindow::FirstMessage + 7;

// Writes down what it is asked.
class Recorder : public ProgressHandler {
public:
    void setPosition(std::uint64_t v) override { add("position", v); }
    void setIncrement(std::uint64_t v) override { add("increment", v); }
    void setInfo(const char* text) override { calls.push_back(std::string("info ") + text); }
    void setTitle(const char* text) override { calls.push_back(std::string("title ") + text); }
    void activate() override { calls.emplace_back("activate"); }
    void reset() override { calls.emplace_back("reset"); }
    void setMinimum(std::uint64_t v) override { add("minimum", v); }
    void setMaximum(std::uint64_t v) override { add("maximum", v); }

    std::vector<std::string> calls;

private:
    void add(const char* name, std::uint64_t value)
    {
        calls.push_back(name + (' ' + std::to_string(value)));
    }
};

// Every request in turn.
void requestAll(ProgressMessenger& messenger)
{
    messenger.setMinimum(0);
    messenger.setMaximum(18446744073709551615U);
    // The messenger must be done with the text when the call returns.
    std::string text = "first";
    messenger.setTitle(text.c_str());
    text = "second";
    messenger.setInfo(text.c_str());
    messenger.setIncrement(3);
    messenger.activate();
    messenger.setPosition(5);
    messenger.reset();
}

const auto AllRequests =
    ElementsAre("minimum 0", "maximum 18446744073709551615", "title first", "info second",
                "increment 3", "activate", "position 5", "reset");

TEST(ProgressMessenger, keepsOneRequestPending)
{
    Recorder recorder;
    struct Local : ProgressMessenger {
        explicit Local(Recorder& r) : ProgressMessenger(nullptr, Request), target(&r) {}
        void post() override { update(target); }
        using ProgressMessenger::clear;
        using ProgressMessenger::isWindowThread;
        Recorder* target;
    } messenger(recorder);
    requestAll(messenger);
    EXPECT_THAT(recorder.calls, AllRequests);
    EXPECT_FALSE(messenger.isWindowThread());

    ProgressMessenger plain(nullptr, Request);
    requestAll(plain);
    recorder.calls.clear();
    plain.setMaximum(9);
    plain.setMinimum(0);
    EXPECT_FALSE(plain.getMaximum());
    EXPECT_TRUE(plain.getMinimum() == mdt::Nullable<std::uint64_t>(0));
    plain.update(nullptr);
    const ProgressMessenger copy(plain);
    copy.update(&recorder);
    plain.update(&recorder);
    EXPECT_THAT(recorder.calls, ElementsAre("minimum 0", "minimum 0"));

    messenger.setInfo(nullptr);
    messenger.setTitle("x");
    messenger.clear();
    messenger.update(&recorder);
    EXPECT_THAT(recorder.calls, ElementsAre("minimum 0", "minimum 0", "title x"));
}

// A thread with a window that handles messages until it is to stop.
class WindowThread {
public:
    explicit WindowThread(std::function<void(unsigned int)> handler)
        : m_thread([this, handler = std::move(handler)] {
              MessageWindow window(handler);
              m_handle.set_value(window.handle());
              while (!m_stop)
                  window.waitMessages(5);
          }),
          handle(m_handle.get_future().get())
    {}
    ~WindowThread()
    {
        m_stop = true;
        m_thread.join();
    }

private:
    std::promise<WindowHandle> m_handle;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;

public:
    const WindowHandle handle;
};

TEST(ProgressMessenger, reachesTheWindowOnItsThreadBeforeTheCallReturns)
{
    Recorder recorder;
    const ProgressMessenger* current = nullptr;
    std::vector<unsigned int> messages;
    const auto windowThread = std::this_thread::get_id();
    MessageWindow window([&](unsigned int message) {
        EXPECT_EQ(std::this_thread::get_id(), windowThread);
        messages.push_back(message);
        current->update(&recorder);
    });
    ASSERT_NE(window.handle(), nullptr);
    struct Aware : ProgressMessenger {
        using ProgressMessenger::isWindowThread;
        using ProgressMessenger::ProgressMessenger;
    } messenger(window.handle(), Request);
    current = &messenger;

    requestAll(messenger);
    EXPECT_THAT(recorder.calls, AllRequests);
    EXPECT_TRUE(messenger.isWindowThread());

    recorder.calls.clear();
    std::atomic<bool> ended{false};
    std::thread worker([&] {
        EXPECT_FALSE(messenger.isWindowThread());
        for (int i = 0; i < 50; ++i)
            requestAll(messenger);
        ended = true;
    });
    int handled = 0;
    EXPECT_TRUE(MdToolsTest::waitUntil([&] {
        handled += window.waitMessages(20);
        return ended.load();
    })) << "the worker does not end";
    worker.join();
    EXPECT_EQ(handled, 400);
    ASSERT_EQ(recorder.calls.size(), 400U);
    EXPECT_THAT(std::vector<std::string>(recorder.calls.end() - 8, recorder.calls.end()),
                AllRequests);
    EXPECT_THAT(messages, testing::Each(Request));
}

TEST(MessageWindow, leavesTheSystemItsMessages)
{
    std::vector<unsigned int> messages;
    MessageWindow window([&](unsigned int message) { messages.push_back(message); });
    for (const unsigned int message : {0U, 0x0FU, 0x3FFU, 0x400U, 0xC123U})
        Platform::sendMessage(window.handle(), message);
    EXPECT_THAT(messages, ElementsAre(0x400U, 0xC123U));
    MessageWindow deaf(nullptr);
    Platform::sendMessage(deaf.handle(), Request);
}

TEST(MessageWindow, waitsNoLongerThanAsked)
{
    using Clock = std::chrono::steady_clock;
    MessageWindow window(nullptr);
    EXPECT_EQ(window.processMessages(), 0);
    EXPECT_EQ(window.waitMessages(0), 0);
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(window.waitMessages(30), 0);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(29));
    std::thread sender([handle = window.handle()] { Platform::sendMessage(handle, Request); });
    EXPECT_EQ(window.waitMessages(-1), 1);
    sender.join();
    // It is another thread's window for everybody else.
    std::thread([&window] {
        EXPECT_EQ(window.processMessages(), 0);
        EXPECT_EQ(window.waitMessages(-1), 0);
        EXPECT_FALSE(Platform::isWindowThread(window.handle()));
    }).join();
}

// A thread that waits without limit for messages to one window, and has a second one.
class WaitingThread {
public:
    WaitingThread()
        : m_thread([this] {
              window = std::make_unique<MessageWindow>(nullptr);
              MessageWindow second(nullptr);
              m_second.set_value(second.handle());
              handled = window->waitMessages(-1);
          })
    {
        // When the second one has handled a message, the thread is in the middle of waiting.
        Platform::sendMessage(m_second.get_future().get(), Request);
    }
    void join() { m_thread.join(); }

private:
    std::promise<WindowHandle> m_second;

public:
    std::unique_ptr<MessageWindow> window;
    int handled = -1;

private:
    std::thread m_thread;
};

TEST(MessageWindow, endsAWaitWithoutLimit)
{
    WaitingThread sentTo;
    Platform::sendMessage(sentTo.window->handle(), Request);
    sentTo.join();
    EXPECT_EQ(sentTo.handled, 1);

    WaitingThread destroyed;
    destroyed.window.reset();
    destroyed.join();
    EXPECT_EQ(destroyed.handled, 0);
}

TEST(MessageWindow, waitsNoLongerThanAskedWhileThreadsKeepSending)
{
    using Clock = std::chrono::steady_clock;
    constexpr int Senders = 4;
    const auto slow = [](unsigned int) { System::sleep(1); };
    MessageWindow busy(slow);
    MessageWindow idle(nullptr);
    std::atomic<bool> stop{false};
    std::atomic<int> sending{Senders};
    const Clock::time_point end = Clock::now() + MdToolsTest::WaitLimit / 2;
    std::vector<std::thread> threads;
    for (int i = 0; i < Senders; ++i)
        threads.emplace_back([&, handle = busy.handle()] {
            while (!stop && Clock::now() < end)
                Platform::sendMessage(handle, Request);
            --sending;
        });
    EXPECT_GT(busy.waitMessages(-1), 0);
    for (int i = 0; i < 20; ++i)
        EXPECT_LE(busy.processMessages(), Senders); // each has sent one and waits for it
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(idle.waitMessages(10), 0);
    EXPECT_LT(Clock::now() - start, MdToolsTest::WaitLimit / 6);
    EXPECT_EQ(sending, Senders);
    stop = true;
    EXPECT_TRUE(MdToolsTest::waitUntil([&] {
        busy.processMessages();
        return sending == 0;
    })) << "senders that do not end";
    for (std::thread& thread : threads)
        thread.join();
}

// Ends a window that nobody serves while threads send to it.
void endWhileSending()
{
    auto window = std::make_unique<MessageWindow>(
        [](unsigned int) { FAIL() << "nobody asked for messages"; });
    const WindowHandle handle = window->handle();
    std::atomic<int> sending{0};
    std::vector<std::thread> senders;
    for (int i = 0; i < 4; ++i)
        senders.emplace_back([&sending, handle] {
            ++sending;
            Platform::sendMessage(handle, Request);
        });
    EXPECT_TRUE(MdToolsTest::waitUntil([&] { return sending == 4; })) << "no senders";
    window.reset();
    for (std::thread& sender : senders)
        sender.join();
    Platform::sendMessage(handle, Request);
    EXPECT_FALSE(Platform::isWindowThread(handle));
}

TEST(MessageWindow, releasesSendersWhenItEnds)
{
    // Senders that are late find no window, which is as good; in some round they wait for it.
    for (int round = 0; round < 20; ++round)
        endWhileSending();
}

TEST(MessageWindow, endsWithItsThread)
{
    std::unique_ptr<MessageWindow> window;
    std::promise<void> made;
    std::promise<void> finish;
    std::thread owner([&] {
        window = std::make_unique<MessageWindow>(nullptr);
        made.set_value();
        finish.get_future().wait();
    });
    made.get_future().wait();
    std::thread sender([&window] { Platform::sendMessage(window->handle(), Request); });
    finish.set_value();
    owner.join();
    sender.join();
    Platform::sendMessage(window->handle(), Request);
    EXPECT_EQ(window->processMessages(), 0);
}

TEST(MessageWindow, mayBeDestroyedByItsHandler)
{
    for (const bool fromOtherThread : {false, true}) {
        SCOPED_TRACE(fromOtherThread);
        std::unique_ptr<MessageWindow> window;
        window = std::make_unique<MessageWindow>([&window, guard = std::make_shared<int>(3)](auto) {
            window.reset();
            EXPECT_EQ(*guard, 3);
        });
        const WindowHandle handle = window->handle();
        if (fromOtherThread) {
            std::thread sender([handle] { Platform::sendMessage(handle, Request); });
            window->waitMessages(-1);
            sender.join();
        } else
            Platform::sendMessage(handle, Request);
        EXPECT_EQ(window, nullptr);
        EXPECT_FALSE(Platform::isWindowThread(handle));
    }
}

TEST(MessageWindow, threadsThatSendToEachOtherGoOn)
{
    // This thread's handler is reached while it waits for the answer of the other thread's, again
    // and again.
    WindowHandle here = nullptr;
    std::atomic<WindowHandle> there{nullptr};
    std::atomic<int> depth{0};
    std::atomic<int> ended{0};
    const auto bounce = [&](WindowHandle target) {
        if (++depth < 20)
            Platform::sendMessage(target, Request);
        ++ended;
    };
    MessageWindow window([&](unsigned int) { bounce(there); });
    here = window.handle();
    const WindowThread other([&](unsigned int) { bounce(here); });
    there = other.handle;
    Platform::sendMessage(there, Request);
    EXPECT_EQ(depth, 20);
    EXPECT_EQ(ended, 20);
}

TEST(MessageWindow, isServedByAThreadThatLooksForSentMessages)
{
    std::atomic<int> handled{0};
    MessageWindow window([&](unsigned int) { ++handled; });
    MessageWindow second([&](unsigned int) { handled += 10; });
    std::thread sender([&] {
        Platform::sendMessage(window.handle(), Request);
        Platform::sendMessage(second.handle(), Request);
    });
    EXPECT_TRUE(MdToolsTest::waitUntil([&] {
        Platform::handleSentMessages();
        return handled >= 11;
    })) << "no messages";
    sender.join();
    EXPECT_EQ(handled, 11);
}

TEST(MessageWindow, passesExceptionsOnWithinItsThreadOnly)
{
    MessageWindow window([](unsigned int) { throw std::runtime_error("handler"); });
    ProgressMessenger messenger(window.handle(), Request);
    EXPECT_THROW(messenger.activate(), std::runtime_error);
    EXPECT_THROW(messenger.reset(), std::runtime_error);

    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            std::set_terminate([] { std::_Exit(6); });
            const WindowThread other([](unsigned int) { throw std::runtime_error("handler"); });
            Platform::sendMessage(other.handle, Request);
        },
        testing::ExitedWithCode(6), "");
}

}
