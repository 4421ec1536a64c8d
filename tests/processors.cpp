#include <mdtools/system.h>

#include "support/test_receiver.h"
#include "threads/processors.h"
#include "trace/debug_sender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Tools;
using testing::ElementsAre;

// A machine of the test's own making.
class FakeSource : public ProcessorSource {
public:
    Platform::Processors processors;
    mutable std::vector<std::string> messages;

    Platform::Processors read() const override { return processors; }
    void report(const char* text) const override { messages.emplace_back(text); }
};

TEST(CoreCount, fallsBackWithAMessage)
{
    using Answer = Platform::Processors::Answer;
    struct Case {
        Answer answer;
        int error;
        int cores;
        const char* message;
    };
    const Case cases[] = {
        {Answer::NotSupported, 0, 1,
         "\n getCpuCount : GetLogicalProcessorInformation is not supported.\n"},
        {Answer::NoMemory, 0, 2, "\n getCpuCount : Error: Allocation failure\n"},
        {Answer::Failed, 5, 3, "\n getCpuCount : Error 5\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        FakeSource source;
        source.processors.answer = c.answer;
        source.processors.error = c.error;
        const CoreCount count = determineCoreCount(source);
        EXPECT_EQ(count.cores, c.cores);
        EXPECT_FALSE(count.isDetermined);
        EXPECT_THAT(source.messages, ElementsAre(c.message));
    }
}

TEST(CoreCount, countsCoresNotHardwareThreads)
{
    FakeSource source;
    source.processors.records = {{0, 0x3, 0}, {2, 0x3, 1}, {2, 0x3, 1}, {0, 0x8000000000000004, 0},
                                 {2, 0xC, 2}, {9, 0xF, 0}, {2, 0xF, 3}, {2, 0xF, 4},
                                 {1, 0xF, 0}, {3, 0xF, 0}, {3, 0x0, 0}};
    const CoreCount count = determineCoreCount(source);
    EXPECT_TRUE(count.isDetermined);
    EXPECT_EQ(count.cores, 2);
    EXPECT_THAT(
        source.messages,
        ElementsAre("\n getCpuCount : Error: Unsupported LOGICAL_PROCESSOR_RELATIONSHIP value.\n",
                    "\n getCpuCount : GetLogicalProcessorInformation results:\n",
                    "Number of NUMA nodes: 1\n", "Number of physical processor packages: 2\n",
                    "Number of processor cores: 2\n", "Number of logical processors: 4\n",
                    "Number of processor L1/L2/L3 caches: 2/1/1\n"));
}

TEST(CoreCount, isDeterminedOnceAndBeforeAFunctionIsAsked)
{
    int (*const function)() = [] { return 16; };
    FakeSource source;
    source.processors.answer = Platform::Processors::Answer::Failed;
    CoreCounter counter;
    // What has failed is tried again each time, and the function is not asked.
    EXPECT_EQ(counter.count(source, function), 3);
    EXPECT_EQ(counter.count(source, nullptr), 3);
    EXPECT_EQ(source.messages.size(), 2U);
    source.processors = {};
    source.processors.records = {{0, 0x1, 0}, {0, 0x2, 0}, {2, 0x3, 4}};
    EXPECT_EQ(counter.count(source, function), 16);
    const std::size_t messages = source.messages.size();
    EXPECT_GT(messages, 2U);
    source.processors.records.clear();
    EXPECT_EQ(counter.count(source, nullptr), 2);
    EXPECT_EQ(source.messages.size(), messages);
}

TEST(CoreCount, reportsTheMachineOnTheDebugChannel)
{
    using testing::StartsWith;
    const MdToolsTest::TestReceiver receiver;
    ASSERT_TRUE(receiver.running());
    DebugSender::restart();
    const CoreCount count = determineCoreCount(ProcessorSource());
    DebugSender::end();
    std::vector<std::string> pieces;
    for (const auto& piece : receiver.pieces())
        pieces.push_back(piece.text);
    EXPECT_THAT(pieces,
                ElementsAre("\n", " getCpuCount : GetLogicalProcessorInformation results:\n",
                            StartsWith("Number of NUMA nodes: "),
                            StartsWith("Number of physical processor packages: "),
                            "Number of processor cores: " + std::to_string(count.cores) + '\n',
                            StartsWith("Number of logical processors: "),
                            StartsWith("Number of processor L1/L2/L3 caches: ")));
    EXPECT_TRUE(count.isDetermined);
}

TEST(CoreCount, isThatOfTheMachineUnlessOverridden)
{
    const int cores = System::getCpuCoreCount();
    EXPECT_GE(cores, 1);
    EXPECT_LE(cores, static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U)));
    System::attachCpuCoreCountFunction([] { return 16; });
    EXPECT_EQ(System::getCpuCoreCount(), 16);
    System::attachCpuCoreCountFunction(nullptr);
    EXPECT_EQ(System::getCpuCoreCount(), cores);
}

}
