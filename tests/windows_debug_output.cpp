// What only this platform does: it answers windows while a trace waits for the receiver.
#include <mdtools/debug_output.h>
#include <mdtools/message_window.h>

#include "platform/window.h"
#include "support/debug_output_test.h"

#include <gmock/gmock.h>

namespace {

using namespace MdToolsTest;
using ::testing::ElementsAre;

// Waiting for the block that its own thread has taken, such a handler would wait for ever.
TEST_F(DebugOutput, sendsWhatAWindowTracesMeanwhileAfterwards)
{
    constexpr unsigned int Message = Tools::MessageWindow::FirstMessage;
    Tools::MessageWindow window([](unsigned int) { Tools::debugPrintf("inner\nend"); });
    const TestReceiver receiver([&](const Piece& piece) {
        if (piece.text == "outer\n")
            Tools::Platform::sendMessage(window.handle(), Message);
    });
    Tools::debugPrintf("outer\nrest\n");
    Tools::debugPrintf("next");
    EXPECT_THAT(texts(receiver), ElementsAre("outer\n", "rest\n", "inner\n", "end", "next"));
}

}
