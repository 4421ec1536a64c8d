#include <mdtools/logger.h>

#include <mdtools/clock.h>
#include <mdtools/file.h>

#include "platform/open_file.h"
#include "support/child_process.h"
#include "support/files.h"
#include "support/test_environment.h"
#include "support/test_receiver.h"
#include "trace/debug_sender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace MdToolsTest;
using namespace Tools;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Texts = std::vector<std::string>;

// The path of a file that is not there yet.
std::string newPath(const std::string& name)
{
    const std::string path = workPath(name);
    File::remove(path);
    return path;
}

// What the run-time's text mode makes of `text`.
std::string inTextMode(const std::string& text)
{
    const std::string path = newPath("text-mode");
    std::ofstream(path) << text;
    return readFile(path);
}

TEST(FileLogger, goesThroughItsLife)
{
    const std::string path = newPath("life.log");
    const std::string otherPath = newPath("other.log");
    FileLogger logger(path);
    logger.writeLine("nothing is open yet");
    logger.initialize(otherPath);
    logger.writeLine("it has a path already");
    EXPECT_FALSE(File::exists(path));
    EXPECT_FALSE(File::exists(otherPath));

    logger.initialize();
    logger.writeLine("one");
    EXPECT_EQ(readFile(path), inTextMode("one\n"));
    logger.release();
    logger.release();
    logger.writeLine("lost");
    EXPECT_EQ(readFile(path), inTextMode("one\n"));

    logger.initialize();
    logger.writeLine("fresh");
    logger.initialize();
    logger.writeLine("fresh again");
    EXPECT_EQ(readFile(path), inTextMode("fresh again\n"));

    FileLogger second("");
    second.initialize(path);
    second.writeLine("behind");
    logger.writeLine("between");
    second.initialize(otherPath);
    second.writeLine("");
    EXPECT_EQ(readFile(path), inTextMode("fresh again\nbehind\nbetween\n\n"));
}

TEST(FileLogger, writesEveryLineAsText)
{
    const Texts lines = {"",
                         "two\nlines",
                         "\r\n\n",
                         std::string("a\0b", 3),
                         "\xE4\xF6\xFC",
                         std::string(1023, 'x'),
                         std::string(1024, 'y'),
                         std::string(300000, 'z')};
    const std::string path = newPath("text.log");
    FileLogger logger(path);
    logger.initialize();
    std::string expected;
    for (const std::string& line : lines) {
        logger.writeLine(line);
        expected += line + "\n";
    }
    EXPECT_EQ(readFile(path), inTextMode(expected));
}

TEST(FileLogger, staysSilentWhereItCannotWrite)
{
    const std::string heldPath = newPath("held.log");
    Platform::OutputFile held;
    ASSERT_TRUE(held.open(heldPath, Platform::OutputFile::Sharing::Readers));
    const Texts paths = {"", workDirectory(), newPath("missing/x.log"), heldPath, "/dev/full"};
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        FileLogger logger("");
        logger.initialize(path);
        logger.writeLine("nowhere");
    }
    EXPECT_EQ(readFile(heldPath), "");
}

// A program that lives on does not keep the file from being removed.
TEST(FileLogger, isNotInherited)
{
    const std::string path = newPath("own.log");
    const std::string started = newPath("started.log");
    FileLogger logger(path);
    logger.initialize();
    Child child(builtProgram("log_client"), {"hold", started, "1"});
    ASSERT_TRUE(child.waitUntil([&] { return readLines(started).size() == 1; }));
    logger.release();
    EXPECT_FALSE(File::isLocked(path));
    EXPECT_TRUE(File::remove(path));
    EXPECT_FALSE(File::remove(started));
    child.kill();
}

// What a killed program left gets its end; nothing is cut off.
TEST(FileLogger, endsTornLines)
{
    struct Case {
        const char *before, *after;
    };
    static const Case cases[] = {
        {"", "a\nb\n"},
        {"torn", "torn\na\nb\n"},
        {"whole\n", "whole\na\nb\n"},
        {"whole\ntorn\r", "whole\ntorn\r\na\nb\n"},
    };
    const std::string path = newPath("torn.log");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.before);
        writeFile(path, inTextMode(c.before));
        FileLogger logger("");
        logger.initialize(path);
        EXPECT_EQ(readFile(path), inTextMode(c.before));
        logger.writeLine("a");
        logger.writeLine("b");
        EXPECT_EQ(readFile(path), inTextMode(c.after));
    }
}

TEST(FileLogger, goesOnAfterAFullDisk)
{
    const SmallDisk disk(workPath("small"), 65536);
    if (!disk.isThere())
        GTEST_SKIP() << disk.why();
    const std::string path = workPath("small/full.log");
    FileLogger logger("");
    logger.initialize(path);
    logger.writeLine("first");
    FileLogger other("");
    other.initialize(path);
    other.writeLine("second");
    writeFile(workPath("small/filler"), std::string(65536, 'f'));
    logger.writeLine(std::string(10'000, 'x'));
    other.writeLine("finds no room");
    const std::string torn = readFile(path);
    ASSERT_TRUE(torn.starts_with("first\nsecond\nxxx"));
    ASSERT_TRUE(torn.ends_with('x'));
    EXPECT_TRUE(File::remove(workPath("small/filler")));
    other.writeLine("third");
    logger.writeLine("fourth");
    EXPECT_EQ(readFile(path), torn + "\nthird\nfourth\n");
}

TEST(FileLogger, survivesAPipeWithoutReader)
{
    const std::string path = workPath("log-pipe");
    NamedPipe pipe(path, NamedPipe::Reader::Open);
    if (!pipe.isThere())
        GTEST_SKIP() << "Pipes have no names among the files here.";
    FileLogger logger(path);
    logger.initialize(); // a pipe is not removed
    logger.writeLine("one");
    EXPECT_EQ(pipe.read(), "one\n");
    pipe.close();
    logger.writeLine("lost");
    const NamedPipe again(path, NamedPipe::Reader::Open);
    logger.writeLine("two");
    EXPECT_EQ(again.read(), "two\n");
    FileLogger late(newPath("no-reader"));
    const NamedPipe unread(workPath("no-reader"), NamedPipe::Reader::None);
    late.initialize();
    late.writeLine("nobody reads");
}

TEST(FileLogger, beginsAfresh)
{
    const std::string path = newPath("fresh.log");
    writeFile(path, "old");
    FileLogger other("");
    other.initialize(path);
    other.writeLine("another program");
    FileLogger logger(path);
    logger.initialize();
    logger.writeLine("one");
    other.writeLine("two");
    EXPECT_EQ(readFile(path), inTextMode("one\ntwo\n"));
    other.release();

    // Only the file itself is meant.
    writeFile(workPath("fresh.1"), "stays");
    FileLogger pattern(workPath("fresh.*"));
    pattern.initialize();
    pattern.release();
    EXPECT_EQ(readFile(workPath("fresh.1")), "stays");
    EXPECT_EQ(readFile(path), inTextMode("one\ntwo\n"));

    logger.release();
    if (!makeLink(path, workPath("fresh-link")))
        GTEST_SKIP() << "No symbolic links here.";
    FileLogger linked(workPath("fresh-link"));
    linked.initialize();
    linked.writeLine("through the link");
    EXPECT_EQ(readFile(path), "through the link\n");
}

std::string clientLine(const std::string& tag, int number)
{
    return tag + " " + std::to_string(number) + " " + std::string(100, tag[0]);
}

TEST(FileLogger, sharesAFileWithOtherPrograms)
{
    if (!appendsInOneStep())
        GTEST_SKIP() << "Wine does not append in one step";
    constexpr int Count = 300;
    const std::string path = newPath("shared.log");
    std::vector<std::unique_ptr<Child>> children;
    for (const char* tag : {"a", "b", "c"})
        children.push_back(std::make_unique<Child>(builtProgram("log_client"),
                                                   Texts{tag, path, std::to_string(Count)}));
    for (const auto& child : children)
        EXPECT_EQ(child->wait().exitCode, 0);

    std::map<char, int> next;
    for (const std::string& line : readLines(path)) {
        ASSERT_FALSE(line.empty());
        const std::string tag(1, line[0]);
        ASSERT_EQ(line, clientLine(tag, next[line[0]]++));
    }
    for (const char tag : {'a', 'b', 'c'})
        EXPECT_EQ(next[tag], Count);
}

TEST(FileLogger, losesNothingToAKill)
{
    constexpr int Count = 100;
    const std::string path = newPath("killed.log");
    Child child(builtProgram("log_client"), {"hold", path, std::to_string(Count)});
    ASSERT_TRUE(child.waitUntil([&] { return readLines(path).size() >= Count; }));
    child.kill();
    EXPECT_NE(child.wait().exitCode, 0);
    std::string expected;
    for (int i = 0; i < Count; ++i)
        expected += clientLine("hold", i) + "\n";
    EXPECT_EQ(readFile(path), inTextMode(expected));
}

// Notes what it is called with, together with its name, in a common list.
class FakeLogger : public Logger {
public:
    FakeLogger(std::string name, Texts& notes) : m_name(std::move(name)), m_notes(notes) {}
    void release() override { m_notes.push_back(m_name + " released"); }
    void writeLine(const std::string& line) override { m_notes.push_back(m_name + ": " + line); }

private:
    std::string m_name;
    Texts& m_notes;
};

TEST(LoggerManager, fansLinesOut)
{
    Texts notes;
    const auto a = std::make_shared<FakeLogger>("a", notes);
    const auto b = std::make_shared<FakeLogger>("b", notes);
    const auto stranger = std::make_shared<FakeLogger>("stranger", notes);
    LoggerManager& manager = LoggerManager::get();
    for (const auto& logger : {b, a, b})
        manager.add(logger);
    manager.add(nullptr);
    manager.remove(stranger);
    manager.remove(nullptr);
    manager.writeLine("x");
    manager.remove(b);
    manager.add(b);
    manager.writeLine("y");
    EXPECT_THAT(notes, ElementsAre("b: x", "a: x", "a: y", "b: y"));
    EXPECT_EQ(b.use_count(), 2);

    notes.clear();
    manager.release();
    manager.release();
    manager.writeLine("nobody listens");
    EXPECT_THAT(notes, ElementsAre("a released", "b released"));
    EXPECT_EQ(b.use_count(), 1);
}

TEST(LoggerManager, formats)
{
    Texts notes;
    LoggerManager& manager = LoggerManager::get();
    manager.add(std::make_shared<FakeLogger>("a", notes));
    const std::string longText(100000, 'x');
    const char* none = nullptr;
    manager.writeFormatedLine("%s", "");
    manager.writeFormatedLine("%d of %s", 1, "two");
    manager.writeFormatedLine("%s", longText.c_str());
    manager.writeFormatedLine("before%cbehind", '\0');
    manager.writeFormatedLine(none);
    manager.release();
    EXPECT_THAT(notes,
                ElementsAre("a: ", "a: 1 of two", "a: " + longText, "a: before", "a released"));
}

// Leaves the manager as soon as it is called.
class LeavingLogger : public FakeLogger {
public:
    using FakeLogger::FakeLogger;
    void writeLine(const std::string& line) override
    {
        FakeLogger::writeLine(line);
        LoggerManager::get().remove(self.lock());
    }
    std::weak_ptr<Logger> self;
};

TEST(LoggerManager, letsASinkLeave)
{
    Texts notes;
    LoggerManager& manager = LoggerManager::get();
    {
        const auto leaving = std::make_shared<LeavingLogger>("leaving", notes);
        leaving->self = leaving;
        manager.add(leaving);
    }
    manager.writeLine("x");
    manager.writeLine("y");
    manager.release();
    EXPECT_THAT(notes, ElementsAre("leaving: x"));
}

// Logs in its destructor.
class TalkativeLogger : public FakeLogger {
public:
    using FakeLogger::FakeLogger;
    ~TalkativeLogger() override { LoggerManager::get().writeLine("gone"); }
};

TEST(LoggerManager, survivesSinksThatLogAtTheirEnd)
{
    Texts notes;
    LoggerManager& manager = LoggerManager::get();
    manager.add(std::make_shared<TalkativeLogger>("a", notes));
    manager.add(std::make_shared<FakeLogger>("b", notes));
    manager.release();
    EXPECT_THAT(notes, ElementsAre("a released", "b released"));
    notes.clear();
    auto talkative = std::make_shared<TalkativeLogger>("a", notes);
    manager.add(std::make_shared<FakeLogger>("b", notes));
    manager.add(talkative);
    const std::weak_ptr<Logger> watched = talkative;
    manager.remove(std::move(talkative));
    EXPECT_TRUE(watched.expired());
    manager.release();
    EXPECT_THAT(notes, ElementsAre("b: gone", "b released"));
}

// Destructors of static objects log as well.
TEST(LoggerManager, worksToTheEndOfTheProcess)
{
    const std::string path = newPath("late.log");
    EXPECT_EQ(runChild(builtProgram("log_client"), {"late", path, "1"}).exitCode, 0);
    EXPECT_THAT(readLines(path), ElementsAre(clientLine("late", 0), "late, by the manager",
                                             "late, by the sink", "sink released"));
}

TEST(LoggerNotifier, passesLinesOn)
{
    Texts notes;
    FakeLogger a("a", notes);
    FakeLogger b("b", notes);
    FakeLogger stranger("stranger", notes);
    LoggerNotifier notifier;
    for (Logger* logger : {&b, &a, &b})
        notifier.attach(logger);
    notifier.attach(nullptr);
    notifier.detach(nullptr);
    notifier.detach(&stranger);
    LoggerNotifier copy = notifier;
    notifier.detach(&b);
    const char* none = nullptr;
    notifier.notifyWriteLine(none);
    notifier.notifyWriteLine("x");
    copy.notifyWriteLine(std::string("y"));
    const LoggerNotifier moved = std::move(copy);
    moved.notifyWriteLine("");
    EXPECT_THAT(notes, ElementsAre("a: x", "b: y", "a: y", "b: ", "a: "));
}

// Detaches itself as soon as it is called.
class DetachingLogger : public FakeLogger {
public:
    using FakeLogger::FakeLogger;
    void writeLine(const std::string& line) override
    {
        FakeLogger::writeLine(line);
        notifier->detach(this);
    }
    LoggerNotifier* notifier = nullptr;
};

TEST(LoggerNotifier, letsASinkLeave)
{
    Texts notes;
    LoggerNotifier notifier;
    FakeLogger before("before", notes);
    DetachingLogger leaving("leaving", notes);
    leaving.notifier = &notifier;
    notifier.attach(&before);
    notifier.attach(&leaving);
    notifier.notifyWriteLine("x");
    notifier.notifyWriteLine(std::string("y"));
    EXPECT_THAT(notes, ElementsAre("before: x", "leaving: x", "before: y"));
}

// The number in the second of three pieces; -1 if the pieces are not as they should be.
long reportedTime(const Texts& pieces, const std::string& text)
{
    const std::string rule = std::string(79, '*') + "\n";
    const std::string head = text + ", ";
    if (pieces.size() != 3 || pieces[0] != rule || pieces[2] != rule ||
        pieces[1].compare(0, head.size(), head) != 0)
        return -1;
    return std::atol(pieces[1].c_str() + head.size());
}

const auto s_begin = std::chrono::steady_clock::now();

long millisecondsSince(std::chrono::steady_clock::time_point begin)
{
    const auto passed = std::chrono::steady_clock::now() - begin;
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(passed).count());
}

Texts report(const std::string& text)
{
    const TestReceiver receiver;
    DebugSender::restart();
    Clock::outputDebug(text);
    DebugSender::end();
    Texts texts;
    for (const Piece& piece : receiver.pieces())
        texts.push_back(piece.text);
    return texts;
}

TEST(Clock, reportsMilliseconds)
{
    EXPECT_THAT(report("silent"), IsEmpty());
    Clock::setActive(true);
    // Since the process started, which was not long before this program began. That can be seen
    // until the first init() only.
    static const long begun = millisecondsSince(s_begin);
    static const long whole = reportedTime(report("100% sure"), "100% sure");
    EXPECT_GE(whole, begun);
    EXPECT_LE(whole, millisecondsSince(s_begin) + 60000);

    const auto start = std::chrono::steady_clock::now();
    Clock::init();
    const long first = reportedTime(report("load"), "load");
    const long second = reportedTime(report("load"), "load");
    EXPECT_GE(first, 0);
    EXPECT_GE(second, first);
    EXPECT_LE(second, millisecondsSince(start) + 1);
    Clock::setActive(false);
    EXPECT_THAT(report("silent"), IsEmpty());
}

}
