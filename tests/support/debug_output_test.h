#pragma once

#include "support/test_receiver.h"
#include "trace/debug_sender.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace MdToolsTest {

using Texts = std::vector<std::string>;

// Each test is a process that has not traced yet.
class DebugOutput : public ::testing::Test {
protected:
    DebugOutput() { Tools::DebugSender::restart(); }
    ~DebugOutput() override { Tools::DebugSender::end(); }
};

// Of the only sender there was; this process is one, too.
inline Texts texts(const TestReceiver& receiver)
{
    Texts result;
    for (const Piece& piece : receiver.pieces())
        result.push_back(piece.text);
    return result;
}

}
