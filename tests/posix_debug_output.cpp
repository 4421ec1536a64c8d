// What only this platform has: fork, sockets and shared memory in folders, users, descriptors that
// a child inherits.
#include <mdtools/debug_output.h>
#include <mdtools/file.h>
#include <mdtools/process.h>

#include "support/debug_output_test.h"
#include "support/files.h"
#include "support/posix/raw_sender.h"
#include "support/programs.h"
#include "support/test_environment.h"

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace MdToolsTest;
using ::testing::ElementsAre;

TEST_F(DebugOutput, forkedChildSendsUnderItsOwnName)
{
    const TestReceiver receiver;
    Tools::debugPrintf("parent");
    const pid_t child = ::fork();
    if (child == 0) {
        Tools::debugPrintf("child");
        ::_exit(Tools::DebugReceiver::get()->checkWindow() ? 7 : 8);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 7);
    Tools::debugPrintf("parent again");
    const std::vector<Piece> pieces = receiver.pieces();
    ASSERT_THAT(texts(receiver), ElementsAre("parent", "child", "parent again"));
    EXPECT_NE(pieces[0].sender, pieces[1].sender);
    EXPECT_EQ(pieces[0].sender, pieces[2].sender);
    const std::string block = "/dev/shm/MdDebugTransferMemory";
    EXPECT_TRUE(std::filesystem::exists(block + std::to_string(pieces[0].sender)));
}

// Whatever a sender has made of its block, it is answered, and the receiver goes on.
TEST_F(DebugOutput, receiverSurvivesBadBlocks)
{
    const bool isRoot = ::geteuid() == 0;
    const TestReceiver receiver;
    ASSERT_TRUE(receiver.running());
    RawSender sender(4'000'000'001);
    ASSERT_TRUE(sender.isConnected());
    const std::string whole(4096, 'x');
    struct Case {
        const char* name;
        std::string block;
        std::size_t cutTo;
        Texts pieces;
    };
    const Case cases[] = {
        {"ends with a NUL", std::string("text\0rest", 9), 4096, {"text"}},
        {"without a NUL", whole, 4096, {whole.substr(1)}},
        {"255 bytes", std::string(255, 'y'), 4096, {std::string(255, 'y')}},
        {"256 bytes", std::string(256, 'y'), 4096, {std::string(256, 'y')}},
        {"cut off within", whole, 300, {whole.substr(0, 300)}},
        {"cut off to nothing", whole, 0, {}},
        {"empty text", "", 4096, {}},
    };
    sender.makeBlock("first");
    Texts expected{"first"};
    EXPECT_EQ(sender.ask(), RawSender::Answer::Yes);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // The same block all the time: it changes under the receiver, which has it open.
        sender.makeBlock(c.block);
        sender.cutBlock(c.cutTo);
        EXPECT_EQ(sender.ask(), RawSender::Answer::Yes);
        expected.insert(expected.end(), c.pieces.begin(), c.pieces.end());
        EXPECT_EQ(texts(receiver), expected);
    }
    RawSender none(4'000'000'002);
    EXPECT_EQ(none.ask(), RawSender::Answer::Yes);
    ASSERT_EQ(::mkfifo(("/dev/shm" + none.blockName()).c_str(), 0600), 0);
    EXPECT_EQ(none.ask(), RawSender::Answer::Yes);
    RawSender foreign(4'000'000'003);
    foreign.makeBlock("of another user");
    foreign.giveBlockTo(65534);
    EXPECT_EQ(foreign.ask(), RawSender::Answer::Yes);
    if (!isRoot) // who may not give it away still owns it
        expected.emplace_back("of another user");
    EXPECT_EQ(texts(receiver), expected);
}

// Nobody else decides what lies there.
TEST(DebugSocket, staysInDirectoriesOfItsUser)
{
    const std::string folder = workPath("folder");
    std::filesystem::create_directory(folder);
    ASSERT_TRUE(makeLink(folder, workPath("link to it")));
    writeFile(workPath("file"), "");
    for (const mode_t mode : {0700U, 0755U, 0770U, 0702U}) {
        ::chmod(folder.c_str(), mode);
        EXPECT_EQ(Tools::Platform::isOwnDirectory(folder), (mode & 022) == 0) << mode;
    }
    ::chmod(folder.c_str(), 0700);
    EXPECT_FALSE(Tools::Platform::isOwnDirectory(workPath("link to it")));
    EXPECT_FALSE(Tools::Platform::isOwnDirectory(workPath("file")));
    EXPECT_FALSE(Tools::Platform::isOwnDirectory(workPath("missing")));
    if (::chown(folder.c_str(), 65534, 65534) == 0) {
        EXPECT_FALSE(Tools::Platform::isOwnDirectory(folder));
    }
}

// The address of a receiver in the preferred directory; whatever is there goes at the end.
class Listening {
public:
    Listening() : m_socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0))
    {
        Tools::Platform::makeDebugSocketAddress(Tools::Platform::debugSocketDirectories().front(),
                                                m_address);
        ::bind(m_socket.get(), reinterpret_cast<const sockaddr*>(&m_address), sizeof(m_address));
    }
    ~Listening() { ::unlink(m_address.sun_path); }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;

    void listen() const { ::listen(m_socket.get(), 0); }
    const char* path() const { return m_address.sun_path; }

private:
    sockaddr_un m_address = {};
    Tools::Platform::FileDescriptor m_socket;
};

TEST_F(DebugOutput, waitsAMomentOnlyForAReceiverThatDoesNotAccept)
{
    const Listening receiver;
    receiver.listen();
    const RawSender first(4'000'000'004); // fills its queue
    ASSERT_TRUE(first.isConnected());
    const auto start = std::chrono::steady_clock::now();
    Tools::debugPrintf("nobody takes it");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1000));
    EXPECT_FALSE(Tools::DebugReceiver::get()->checkWindow());
}

TEST_F(DebugOutput, doesNotTalkToOtherUsers)
{
    {
        const Listening receiver;
        {
            // Who listens counts, not whose the name is.
            const OrdinaryUser user;
            receiver.listen();
        }
        EXPECT_EQ(Tools::DebugReceiver::get()->checkWindow(), ::geteuid() != 0);
    }
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can be another user";
    const TestReceiver receiver;
    ::chmod(Tools::Platform::debugSocketDirectories().front().c_str(), 0755);
    ::chmod(workDirectory().c_str(), 0755);
    sockaddr_un address;
    Tools::Platform::makeDebugSocketAddress(Tools::Platform::debugSocketDirectories().front(),
                                            address);
    ::chmod(address.sun_path, 0777);
    const pid_t child = ::fork();
    if (child == 0) {
        const OrdinaryUser user;
        RawSender sender(4'000'000'005);
        ::_exit(sender.isConnected() && sender.ask() == RawSender::Answer::Refused ? 7 : 8);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(DebugSocket, removesNothingButALeftSocket)
{
    sockaddr_un address;
    Tools::Platform::makeDebugSocketAddress(Tools::Platform::debugSocketDirectories().front(),
                                            address);
    {
        Tools::Platform::FileDescriptor left(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        ASSERT_EQ(::bind(left.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
                  0);
    }
    EXPECT_EQ(Tools::Platform::DebugListener().start(),
              Tools::Platform::DebugListener::Start::Done);
    writeFile(address.sun_path, "somebody's text");
    Tools::Platform::DebugListener().start();
    EXPECT_EQ(readFile(address.sun_path), "somebody's text");
    ::unlink(address.sun_path);
}

TEST_F(DebugOutput, childrenInheritNothingOfTheLibrary)
{
    const std::string record = workPath("descriptors");
    const auto descriptorsOfAChild = [&record] {
        Tools::Process process;
        process.setCommandLine("\"" + builtProgram("test_child_program") + "\" --descriptors");
        process.setEnvironment("MDTOOLS_RECORD", record);
        process.enableWait(true);
        EXPECT_TRUE(process.run());
        return readFile(record);
    };
    const std::string before = descriptorsOfAChild();
    EXPECT_NE(before.find("descriptor: 0\n"), std::string::npos);
    const TestReceiver receiver;
    Tools::debugPrintf("connected");
    EXPECT_FALSE(receiver.pieces().empty());
    std::FILE* const file = Tools::File::open(workPath("open file"), "w");
    EXPECT_EQ(descriptorsOfAChild(), before);
    Tools::File::close(file);
}

}
