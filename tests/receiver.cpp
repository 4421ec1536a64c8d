#include <mdtools/debug_output.h>

#include "support/child_process.h"
#include "support/process_state.h"
#include "trace/debug_sender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace MdToolsTest;
using ::testing::HasSubstr;

using Texts = std::vector<std::string>;

// The program runs until it is asked to end or, where a test cannot ask, until its time is over.
std::unique_ptr<Child> startReceiver(Texts arguments)
{
    arguments.insert(arguments.end(), {"--seconds", "4"});
    auto child = std::make_unique<Child>(builtProgram("mdtools-receiver"), arguments);
    EXPECT_TRUE(child->waitUntil([] {
        Tools::DebugSender::restart();
        return Tools::DebugSender::connect();
    })) << "no receiver";
    return child;
}

ChildResult end(Child& receiver)
{
    Tools::DebugSender::end();
    interrupt(receiver.processId());
    return receiver.wait();
}

TEST(Receiver, writesTheBytesAlone)
{
    const auto receiver = startReceiver({"--raw"});
    Tools::debugPrintf("one\ntwo");
    Tools::debugPrintf("\n\nthree %s\n", "\xE4\t%s");
    const ChildResult result = end(*receiver);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "one\ntwo\n\nthree \xE4\t%s\n");
    EXPECT_EQ(result.errors, "");
}

TEST(Receiver, describesEachPiece)
{
    const auto receiver = startReceiver({});
    const ChildResult second = runChild(builtProgram("mdtools-receiver"), {"--seconds", "4"});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_THAT(second.errors, HasSubstr("another receiver is running"));

    Tools::debugPrintf("one\ntwo without an end");
    Tools::debugPrintf("three\n");
    const ChildResult result = end(*receiver);
    EXPECT_EQ(result.exitCode, 0);
    const std::regex pattern(R"( \d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d \[\d+\] (.*))");
    std::istringstream output(result.output);
    Texts texts;
    for (std::string line; std::getline(output, line);) {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(line, match, pattern)) << line;
        texts.push_back(match[1]);
    }
    EXPECT_THAT(texts, ::testing::ElementsAre("one", "two without an end", "three"));
}

TEST(Receiver, explainsItsArguments)
{
    struct Case {
        Texts arguments;
        long exitCode;
    };
    const Case cases[] = {{{"--help"}, 0},          {{"--seconds", "0"}, 0},
                          {{"--seconds"}, 2},       {{"--seconds", "soon"}, 2},
                          {{"--seconds", "-1"}, 2}, {{"--seconds", ""}, 2},
                          {{"--seconds", "1s"}, 2}, {{"--seconds", "99999999999"}, 2},
                          {{"--loud"}, 2},          {{"text"}, 2}};
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.arguments));
        const ChildResult result = runChild(builtProgram("mdtools-receiver"), c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode);
        const bool explained = result.errors.find("usage: mdtools-receiver") == 0;
        EXPECT_EQ(explained, c.exitCode == 2);
    }
}

}
