// What only this platform has: a message loop of the program's own.
#include <mdtools/message_window.h>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

TEST(MessageWindow, leavesTheProgramItsRequestToEnd)
{
    int handled = 0;
    Tools::MessageWindow window([&](unsigned int) { ++handled; });
    ::PostMessageA(window.handle(), Tools::MessageWindow::FirstMessage, 0, 0);
    ::PostQuitMessage(17);
    EXPECT_EQ(window.processMessages(), 1);
    EXPECT_EQ(window.processMessages(), 0);
    EXPECT_EQ(window.waitMessages(-1), 0);
    MSG message{};
    EXPECT_EQ(::GetMessageA(&message, nullptr, 0, 0), 0);
    EXPECT_EQ(message.message, UINT{WM_QUIT});
    EXPECT_EQ(message.wParam, 17U);
    EXPECT_EQ(handled, 1);
    EXPECT_EQ(window.waitMessages(1), 0);
}

}
