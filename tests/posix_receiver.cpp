// What only this platform has: signals, an output that nobody reads, few descriptors.
#include <mdtools/debug_output.h>

#include "support/child_process.h"
#include "support/files.h"
#include "support/posix/raw_sender.h"
#include "support/process_state.h"
#include "support/waiting.h"
#include "trace/debug_sender.h"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" {
#include <sys/pidfd.h>
}

namespace {

using namespace MdToolsTest;
using Tools::Platform::FileDescriptor;

// A receiver that writes into a pipe with room for one page.
class PipedReceiver {
public:
    explicit PipedReceiver(const char* seconds)
    {
        int ends[2] = {-1, -1};
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return;
        m_reader = FileDescriptor(ends[0]);
        const FileDescriptor writer(ends[1]);
        ::fcntl(writer.get(), F_SETPIPE_SZ, 4096);
        const std::string program = builtProgram("mdtools-receiver");
        m_id = ::fork();
        if (m_id == 0) {
            ::dup2(writer.get(), STDOUT_FILENO);
            ::execl(program.c_str(), program.c_str(), "--raw", "--seconds", seconds, nullptr);
            ::_exit(127);
        }
        m_process = FileDescriptor(::pidfd_open(m_id, 0));
    }
    ~PipedReceiver()
    {
        if (!m_process.valid())
            return;
        ::kill(m_id, SIGKILL);
        exitCode();
    }
    PipedReceiver(const PipedReceiver&) = delete;
    PipedReceiver& operator=(const PipedReceiver&) = delete;

    void signal(int number) const { ::kill(m_id, number); }
    void closeReader() { m_reader = FileDescriptor(); }
    int unread() const
    {
        int count = 0;
        ::ioctl(m_reader.get(), FIONREAD, &count);
        return count;
    }
    // -1 if it does not end in time.
    int exitCode()
    {
        pollfd process = {m_process.get(), POLLIN, 0};
        int status = 0;
        if (::poll(&process, 1, 30'000) != 1 || ::waitpid(m_id, &status, 0) != m_id)
            return -1;
        m_process = FileDescriptor();
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

private:
    FileDescriptor m_reader;
    FileDescriptor m_process;
    pid_t m_id = -1;
};

bool connectToReceiver()
{
    return waitUntil([] {
        Tools::DebugSender::restart();
        return Tools::DebugSender::connect();
    });
}

TEST(Receiver, endsThoughNobodyReadsItsOutput)
{
    struct Case {
        const char* name;
        const char* seconds;
        int signal;
    };
    for (const Case& c : {Case{"Ctrl-C", "60", SIGINT}, Case{"end of the session", "60", SIGTERM},
                          Case{"time limit", "2", 0}, Case{"reader gone", "60", SIGPIPE}}) {
        SCOPED_TRACE(c.name);
        PipedReceiver receiver(c.seconds);
        ASSERT_TRUE(connectToReceiver());
        std::thread sender([] {
            while (!Tools::DebugSender::isClosed())
                Tools::debugPrintf("%s\n", std::string(4000, 'x').c_str());
        });
        EXPECT_TRUE(waitUntil([&receiver] { return receiver.unread() >= 4000; }));
        if (c.signal == SIGPIPE)
            receiver.closeReader();
        else if (c.signal != 0)
            receiver.signal(c.signal);
        // 0 if the end came between two pieces, 1 within one that is not written as a whole.
        const int code = receiver.exitCode();
        EXPECT_TRUE(code == 0 || code == 1) << code;
        sender.join();
    }
}

// Refused is as good as taken for a sender: it goes on.
TEST(Receiver, refusesSendersThatItHasNoDescriptorFor)
{
    const int former = limitOpenFiles(20);
    Child receiver(builtProgram("mdtools-receiver"), {"--raw", "--seconds", "60"});
    limitOpenFiles(former);
    ASSERT_TRUE(receiver.waitUntil(connectToReceiver));
    Tools::DebugSender::end();
    std::vector<std::unique_ptr<RawSender>> senders;
    int taken = 0;
    for (std::uint32_t i = 0; i < 40; ++i) {
        senders.push_back(std::make_unique<RawSender>(4'000'000'100 + i));
        senders.back()->makeBlock("piece\n");
        const RawSender::Answer answer = senders.back()->ask();
        EXPECT_NE(answer, RawSender::Answer::None) << i;
        taken += answer == RawSender::Answer::Yes ? 1 : 0;
    }
    EXPECT_GE(taken, 4);
    EXPECT_LT(taken, 20);
    // There is room again as soon as some have gone.
    senders.erase(senders.begin(), senders.begin() + 4);
    EXPECT_TRUE(receiver.waitUntil([] {
        RawSender late(4'000'000'200);
        late.makeBlock("late\n");
        return late.ask() == RawSender::Answer::Yes;
    }));
    interrupt(receiver.processId());
    const ChildResult result = receiver.wait();
    EXPECT_EQ(result.exitCode, 0);
    std::string expected;
    for (int i = 0; i < taken; ++i)
        expected += "piece\n";
    EXPECT_EQ(result.output, expected + "late\n");
}

}
