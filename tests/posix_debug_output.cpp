// What only this platform has: fork.
#include <mdtools/debug_output.h>

#include "support/debug_output_test.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

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

}
