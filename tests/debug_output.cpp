#include <mdtools/debug_output.h>

#include <mdtools/registry.h>

#include "platform/debug_channel.h"
#include "support/child_process.h"
#include "support/debug_output_test.h"
#include "support/module.h"
#include "support/process_state.h"
#include "trace/date_time.h"
#include "trace/debug_labels.h"
#include "trace/debug_sender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace MdToolsTest;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

std::string client()
{
    return builtProgram("debug_client");
}

// Where the system shows the names of shared memory as files; nowhere on Windows.
bool hasName(const std::string& name, std::uint32_t sender)
{
    return std::filesystem::exists("/dev/shm/" + name + std::to_string(sender));
}

TEST_F(DebugOutput, isSilentForGoodWithoutReceiver)
{
    EXPECT_FALSE(Tools::DebugReceiver::get()->checkWindow());
    std::error_code ignored;
    const std::string self = std::filesystem::read_symlink("/proc/self", ignored).string();
    EXPECT_FALSE(std::filesystem::exists("/dev/shm/MdDebugTransferMemory" + self));
    EXPECT_FALSE(std::filesystem::exists("/dev/shm/sem.MdDebugTransferMemoryEvent" + self));
    const TestReceiver receiver;
    ASSERT_TRUE(receiver.running());
    Tools::debugPrintf("late\n");
    EXPECT_FALSE(Tools::DebugReceiver::get()->checkWindow());
    EXPECT_THAT(receiver.pieces(), IsEmpty());
    EXPECT_EQ(Tools::Platform::DebugListener().start(),
              Tools::Platform::DebugListener::Start::AlreadyRunning);
}

TEST_F(DebugOutput, cutsMessagesIntoPieces)
{
    const std::string most(65535, 'x');
    const std::string most4094(4094, 'a');
    struct Case {
        std::string text;
        Texts pieces;
    };
    const Case cases[] = {
        {"", {}},
        {"one", {"one"}},
        {"line\n", {"line\n"}},
        {"a\nb", {"a\n", "b"}},
        {"a\n\nb\n", {"a\n", "\n", "b\n"}},
        {"\r\n\xE4\xFF\n", {"\r\n", "\xE4\xFF\n"}},
        {most4094 + "\nnext", {most4094 + "\n", "next"}},
        // The line feed finds no room, and all that follows is dropped.
        {most4094 + "b\nnext", {most4094 + "b"}},
        {std::string(5000, 'c') + "\nnext", {std::string(4095, 'c')}},
        {"short\n" + std::string(5000, 'd'), {"short\n", std::string(4095, 'd')}},
        {most, {most.substr(0, 4095)}},
        {most + "x", {}},
        {std::string(1023, 'e') + "\n", {std::string(1023, 'e') + "\n"}},
        {std::string(1022, 'f') + "\n", {std::string(1022, 'f') + "\n"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 80) + "; " + std::to_string(c.text.size()) + " bytes");
        const TestReceiver receiver;
        Tools::DebugSender::restart();
        Tools::debugPrintf("%s", c.text.c_str());
        Tools::DebugSender::end();
        EXPECT_EQ(texts(receiver), c.pieces);
    }
}

TEST_F(DebugOutput, ignoresWhatCannotBeFormatted)
{
    const TestReceiver receiver;
    const char* none = nullptr;
    Tools::debugPrintf(none);
    Tools::debugPrintf("%c%s", '\0', "hidden behind the end");
    Tools::debugPrintf("%*d", 70000, 1);
    EXPECT_THAT(receiver.pieces(), IsEmpty());
    EXPECT_TRUE(Tools::DebugReceiver::get()->checkWindow());
}

void callWithList(void (*function)(const char*, va_list), const char* format, ...)
{
    va_list args;
    va_start(args, format);
    function(format, args);
    va_end(args);
}

void callWithList(void (*function)(const char*, const char*, va_list), const char* label,
                  const char* format, ...)
{
    va_list args;
    va_start(args, format);
    function(label, format, args);
    va_end(args);
}

TEST_F(DebugOutput, hasManyEntrances)
{
    const TestReceiver receiver;
    const Tools::DebugReceiver* const debug = Tools::DebugReceiver::get();
    const char* const all = nullptr;
    const char* const off = "a label that nobody has switched on";
    EXPECT_TRUE(debug->checkLabel(all));
    EXPECT_FALSE(debug->checkLabel(off));
    for (const char* label : {all, off}) {
        Tools::debugPrintfLabel(label, "%d", 1);
        callWithList(Tools::debugVPrintfLabel, label, "%d", 2);
        MdDebugPrintfLabel(label, "%d", 3);
        callWithList(MdDebugVPrintfLabel, label, "%d", 4);
        debug->printfLabel(label, "%d", 5);
        // The only one that does not ask for the label.
        callWithList(
            [](const char* name, const char* format, va_list args) {
                Tools::DebugReceiver::get()->vprintfLabel(name, format, args);
            },
            label, "%s", label ? "off" : "all");
    }
    EXPECT_THAT(texts(receiver), ElementsAre("1", "2", "3", "4", "5", "all", "off"));

    Tools::debugPrintf("%d", 6);
    callWithList(Tools::debugVPrintf, "%d", 7);
    MdDebugPrintf("%d", 8);
    callWithList(MdDebugVPrintf, "%d", 9);
    debug->printf("%d", 10);
    callWithList([](const char* format,
                    va_list args) { Tools::DebugReceiver::get()->vprintf(format, args); },
                 "%d", 11);
    const Texts sent = texts(receiver);
    EXPECT_THAT(Texts(sent.begin() + 7, sent.end()), ElementsAre("6", "7", "8", "9", "10", "11"));
}

// "DebugLabels" as it is stored in a hive; the former value comes back at the end.
class StoredLabels {
public:
    StoredLabels(Tools::Registry::Hive hive, Tools::RegistryValue::Type type, const Texts& labels)
        : m_key(Tools::Registry::find(hive, "Software/MERODA/Settings", true)),
          m_former(m_key["DebugLabels"])
    {
        Tools::RegistryValue value;
        value.setName("DebugLabels").setType(type);
        if (type == Tools::RegistryValue::String)
            value.setData(labels.front());
        else if (type == Tools::RegistryValue::MultiString)
            value.setData(labels);
        m_key.add(value);
    }
    ~StoredLabels() { m_key.add(m_former); }
    StoredLabels(const StoredLabels&) = delete;
    StoredLabels& operator=(const StoredLabels&) = delete;

private:
    Tools::RegistryKey m_key;
    Tools::RegistryValue m_former;
};

TEST_F(DebugOutput, asksForLabels)
{
    using Tools::Registry;
    using Tools::RegistryValue;
    struct Case {
        RegistryValue::Type userType;
        Texts user;
        RegistryValue::Type machineType;
        Texts machine;
        Texts on, off;
    };
    const auto none = RegistryValue::None;
    const auto list = RegistryValue::MultiString;
    const Case cases[] = {
        {none, {}, none, {}, {}, {"", "a"}},
        {list,
         {"Mesh", "\xC4"
                  "b"},
         none,
         {},
         {"mesh", "MESH",
          "\xE4"
          "B"},
         {"mes", "meshx", ""}},
        // The machine's list counts only where the user has none at all.
        {list, {"a"}, list, {"b"}, {"a"}, {"b"}},
        {list, {}, list, {"B"}, {"b"}, {"a"}},
        {RegistryValue::String, {"a"}, list, {"b"}, {"b"}, {"a"}},
        // The list ends at the first empty entry.
        {list, {"a", "", "b"}, list, {"c"}, {"a"}, {"b", "c", ""}},
    };
    const TestReceiver receiver;
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.on));
        const StoredLabels user(Registry::CurrentUser, c.userType, c.user);
        const StoredLabels machine(Registry::LocalMachine, c.machineType, c.machine);
        Tools::DebugLabels::release();
        const std::size_t before = texts(receiver).size();
        for (const std::string& label : c.on) {
            EXPECT_TRUE(Tools::DebugReceiver::get()->checkLabel(label.c_str())) << label;
            Tools::debugPrintfLabel(label.c_str(), "seen");
        }
        for (const std::string& label : c.off) {
            EXPECT_FALSE(Tools::DebugReceiver::get()->checkLabel(label.c_str())) << label;
            Tools::debugPrintfLabel(label.c_str(), "unseen");
        }
        EXPECT_EQ(texts(receiver).size(), before + c.on.size());
        EXPECT_THAT(texts(receiver), ::testing::Each("seen"));
    }
    // They were read once; what is stored now is not seen.
    const StoredLabels late(Registry::CurrentUser, list, {"late"});
    EXPECT_FALSE(Tools::DebugReceiver::get()->checkLabel("late"));
    Tools::DebugLabels::release();
}

// The pieces that sendLines() of the client makes.
Texts linesOfClient(int count)
{
    Texts result;
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        result.insert(result.end(), {"first of " + number + "\n", "second of " + number + "\n",
                                     "rest of " + number});
    }
    return result;
}

TEST_F(DebugOutput, keepsProcessesApartAndMessagesInOrder)
{
    constexpr int Count = 200;
    const TestReceiver receiver;
    ASSERT_TRUE(receiver.running());
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < 3; ++i)
        children.push_back(
            std::make_unique<Child>(client(), Texts{"send-lines", std::to_string(Count)}));
    for (const auto& child : children) {
        const auto id = static_cast<std::uint32_t>(child->processId());
        EXPECT_EQ(child->wait().exitCode, 0);
        EXPECT_EQ(receiver.texts(id), linesOfClient(Count));
        EXPECT_FALSE(hasName("MdDebugTransferMemory", id));
        EXPECT_FALSE(hasName("sem.MdDebugTransferMemoryEvent", id));
    }
}

TEST_F(DebugOutput, sendsMessagesOfThreadsWhole)
{
    constexpr int Threads = 4;
    constexpr int Count = 200;
    const TestReceiver receiver;
    std::vector<std::thread> threads;
    for (int t = 0; t < Threads; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < Count; ++i)
                Tools::debugPrintf("%d %d\nmiddle\n%d end", t, i, t);
        });
    for (std::thread& thread : threads)
        thread.join();

    const Texts sent = texts(receiver);
    ASSERT_EQ(sent.size(), 3U * Threads * Count);
    std::map<char, int> next;
    for (std::size_t i = 0; i < sent.size(); i += 3) {
        const char thread = sent[i][0];
        const std::string name(1, thread);
        ASSERT_EQ(sent[i], name + " " + std::to_string(next[thread]++) + "\n");
        ASSERT_EQ(sent[i + 1], "middle\n");
        ASSERT_EQ(sent[i + 2], name + " end");
    }
}

TEST_F(DebugOutput, survivesReceiverThatDies)
{
    Child receiver(client(), {"receive-and-die"});
    ASSERT_TRUE(receiver.waitUntil([] {
        Tools::DebugSender::restart();
        return Tools::DebugSender::connect();
    }));
    Tools::debugPrintf("it dies now\nand this finds nobody\n");
    EXPECT_TRUE(Tools::DebugSender::isClosed());
    Tools::debugPrintf("nor this\n");
    EXPECT_TRUE(Tools::DebugReceiver::get()->checkWindow());
    EXPECT_EQ(receiver.wait().exitCode, 0);
}

// The sender is in the middle of a message then: it has taken the event and waits for an answer.
TEST_F(DebugOutput, survivesSenderThatDies)
{
    std::promise<std::uint32_t> arrived;
    std::promise<void> killed;
    const TestReceiver receiver([&](const Piece& piece) {
        if (piece.text != "second of 7\n")
            return;
        arrived.set_value(piece.sender);
        killed.get_future().wait();
    });
    Child child(client(), {"send-lines", "100"});
    std::future<std::uint32_t> sender = arrived.get_future();
    ASSERT_TRUE(child.waitUntil([&sender] {
        return sender.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    })) << "nothing was sent";
    const std::uint32_t id = sender.get();
    child.kill();
    EXPECT_NE(child.wait().exitCode, 0);
    killed.set_value();

    EXPECT_EQ(runChild(client(), {"send-lines"}).exitCode, 0);
    Tools::debugPrintf("and others go on");
    EXPECT_EQ(texts(receiver).back(), "and others go on");
    EXPECT_FALSE(hasName("MdDebugTransferMemory", id));
    EXPECT_FALSE(hasName("sem.MdDebugTransferMemoryEvent", id));
}

TEST_F(DebugOutput, takesOverWhatADeadProcessLeft)
{
    const TestReceiver receiver;
    Tools::debugPrintf("old");
    Tools::Platform::takeDebugBlock();
    Tools::DebugSender::restart();
    Tools::debugPrintf("new");
    EXPECT_THAT(texts(receiver), ElementsAre("old", "new"));
}

// A process may end while it traces, and its last traces still arrive.
TEST_F(DebugOutput, endsWhileThreadsTrace)
{
    for (int i = 0; i < 10; ++i) {
        const TestReceiver receiver;
        Child child(client(), {"exit-while-tracing"});
        const auto id = static_cast<std::uint32_t>(child.processId());
        EXPECT_EQ(child.wait().exitCode, 0);
        EXPECT_THAT(receiver.texts(id), ::testing::Contains("last words\n"));
        EXPECT_FALSE(hasName("MdDebugTransferMemory", id));
    }
}

TEST_F(DebugOutput, givesBackEverythingWhenUnloaded)
{
    const TestReceiver receiver;
    constexpr int Rounds = 200;
    int handles = 0;
    for (int i = 0; i < Rounds; ++i) {
        void* module = loadModule(libraryPath());
        ASSERT_NE(module, nullptr);
        const auto trace = reinterpret_cast<void (*)(const char*, ...)>(
            findFunction(module, "_Z13MdDebugPrintfPKcz"));
        ASSERT_NE(trace, nullptr);
        trace("round %d\n", i);
        freeModule(module);
        if (i == 10)
            handles = countHandles();
    }
    EXPECT_EQ(receiver.pieces().size(), Rounds);
    EXPECT_LE(countHandles(), handles + 10);
    EXPECT_FALSE(hasName("MdDebugTransferMemory", receiver.pieces().front().sender));
}

TEST(DebugReceiverHelper, dateAndTime)
{
    EXPECT_EQ(Tools::toDateAndTime({2026, 7, 3, 9, 5, 12}), " 03.07.2026 09:05:12");
    EXPECT_EQ(Tools::toDateAndTime({2026, 11, 23, 19, 45, 0}), " 23.11.2026 19:45:00");

    // The three forms name the moment of the call.
    using Helper = Tools::DebugReceiverHelper;
    std::string before, narrow;
    std::wstring wide;
    do {
        before = Tools::toDateAndTime(Tools::Platform::getLocalTime());
        narrow = Helper::getDateAndTime();
        EXPECT_GE(Helper::getDateAndTimeA().size(), before.size());
        wide = Helper::getDateAndTimeW();
    } while (before != Helper::getDateAndTimeA());
    EXPECT_EQ(narrow, before);
    EXPECT_EQ(wide, std::wstring(before.begin(), before.end()));
}

}
