#include <mdtools/argument_keeper.h>
#include <mdtools/dll_util.h>
#include <mdtools/environment.h>
#include <mdtools/file.h>
#include <mdtools/guid_util.h>
#include <mdtools/mail_process.h>
#include <mdtools/message_window.h>
#include <mdtools/process.h>
#include <mdtools/progress.h>
#include <mdtools/shell.h>

#include "support/child_process.h"
#include "support/files.h"
#include "support/process_state.h"
#include "support/test_environment.h"
#include "support/waiting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Tools;
using MdToolsTest::readFile;
namespace fs = std::filesystem;

std::string recorder()
{
    return MdToolsTest::builtProgram("test_child_program");
}

std::string inQuotes(const std::string& text)
{
    return "\"" + text + "\"";
}

std::string newFileName()
{
    static std::atomic<int> count = 0;
    return (fs::path(MdToolsTest::workDirectory()) / ("record" + std::to_string(++count))).string();
}

// What a program that is not waited for has recorded.
std::string waitForRecord(const std::string& file)
{
    // Its name may be there a moment before Wine lets others open it; a record is never empty.
    std::string record;
    EXPECT_TRUE(MdToolsTest::waitUntil([&] {
        record = readFile(file);
        return !record.empty();
    })) << "no "
        << file;
    return record;
}

// The record of the recorder, run with this text after its name.
std::string runRecorder(const std::string& arguments, std::uint32_t* code = nullptr,
                        const std::string& between = " ")
{
    const std::string file = newFileName();
    Process process;
    process.setEnvironment("MDTOOLS_RECORD", file);
    process.setCommandLine(inQuotes(recorder()) + between + arguments);
    process.enableWait(true);
    EXPECT_TRUE(process.run());
    if (code != nullptr)
        *code = process.returnCode();
    return readFile(file);
}

std::string ownDirectory()
{
    return fs::current_path().filename().string();
}

TEST(Process, argumentsReachTheProgram)
{
    struct Case {
        const char* line;
        std::vector<const char*> arguments;
    };
    static const Case cases[] = {
        {"", {}},
        {"a  b\tc", {"a", "b", "c"}},
        {"\"a b\" c", {"a b", "c"}},
        {"a\"b c\"d", {"ab cd"}},
        {"\"\" x", {"", "x"}},
        {"a\\b \\\\server\\x\\", {"a\\b", "\\\\server\\x\\"}}, // no quote, plain backslashes
        {"a\\\"b", {"a\"b"}},
        {"\"a\\\\\" b", {"a\\", "b"}},
        {"\"a\\\\\\\" b\"", {"a\\\" b"}},
        {"* ? $HOME %PATH%", {"*", "?", "$HOME", "%PATH%"}}, // nothing is expanded
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        std::string expected = "directory: " + ownDirectory() + "\n";
        for (const char* argument : c.arguments)
            expected += std::string("argument: ") + argument + "\n";
        EXPECT_EQ(runRecorder(c.line), expected);
        // Without a blank it is still the program's name.
        EXPECT_EQ(runRecorder(c.line, nullptr, "\"x y\"\\ "), expected);
    }
}

TEST(Process, exitCodes)
{
    for (const std::uint32_t expected : {0U, 1U, 255U}) {
        std::uint32_t code = 99;
        runRecorder("--exit=" + std::to_string(expected), &code);
        EXPECT_EQ(code, expected);
    }
}

TEST(Process, findsTheProgram)
{
    const fs::path folder = fs::path(MdToolsTest::workDirectory()) / "two words";
    fs::create_directory(folder);
    const fs::path copy = folder / fs::path(recorder()).filename();
    fs::copy_file(recorder(), copy);
    std::string mixed = copy.string();
    mixed[mixed.rfind(mixed.find('\\') == std::string::npos ? '/' : '\\')] = '\\';

    std::string blanks; // each might end the program's name
    for (int i = 0; i < 100'000; ++i)
        blanks += " x";

    struct Case {
        std::string line;
        bool found;
    };
    const Case cases[] = {
        {inQuotes(copy.string()) + " --exit=7", true},
        {copy.string() + " --exit=7", true}, // the shortest part that names a program
        {inQuotes(mixed) + " --exit=7", true},
        {"", false},
        {"   ", false},
        {" " + copy.string() + " --exit=7", false}, // blanks in front belong to the name
        {" " + inQuotes(copy.string()) + " --exit=7", false},
        {inQuotes(""), false},
        {inQuotes((folder / "missing").string()), false},
        {"mdtools-no-such-program --exit=7", false},
        {"mdtools-no-such-program" + blanks, false},
        {inQuotes(folder.string()) + " --exit=7", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        Process process;
        process.setCommandLine(c.line);
        process.enableWait(true);
        EXPECT_EQ(process.run(), c.found);
        EXPECT_EQ(process.returnCode(), c.found ? 7U : 0U);
    }
    fs::remove_all(folder);
}

TEST(Process, aNulEndsTheCommandLine)
{
    using namespace std::string_literals;
    const std::string start = "directory: " + ownDirectory() + "\n";
    EXPECT_EQ(runRecorder("a b\0c \"d"s), start + "argument: a\nargument: b\n");
    EXPECT_EQ(runRecorder("\0x"s), start);
}

TEST(Process, startsInItsDirectory)
{
    const fs::path folder = fs::path(MdToolsTest::workDirectory()) / "place";
    fs::create_directory(folder);
    const std::string file = newFileName();
    Process process;
    process.setCommandLine(inQuotes(recorder()));
    process.setEnvironment("MDTOOLS_RECORD", file);
    process.setCurrentDirectory(folder.generic_string());
    process.enableWait(true);
    EXPECT_TRUE(process.run());
    EXPECT_EQ(readFile(file), "directory: place\n");
    process.setCurrentDirectory(folder.generic_string() + "/missing");
    EXPECT_FALSE(process.run());
    fs::remove_all(folder);
}

TEST(Process, overridesOfTheEnvironment)
{
    Environment known("MDTOOLS_TEST_KNOWN");
    known.setValue("before");
    Process process;
    process.setCommandLine(inQuotes(recorder()) +
                           " --variable=MDTOOLS_TEST_KNOWN --variable=MDTOOLS_TEST_NEW");
    process.setEnvironment("MDTOOLS_TEST_KNOWN", "replaced");
    process.setEnvironment("MDTOOLS_TEST_KNOWN", "during");
    process.setEnvironment("MDTOOLS_TEST_NEW", "new");
    process.enableWait(true);
    for (const bool fails : {false, true}) {
        const std::string file = newFileName();
        process.setEnvironment("MDTOOLS_RECORD", file);
        if (fails)
            process.setCommandLine("mdtools-no-such-program");
        EXPECT_EQ(process.run(), !fails);
        EXPECT_EQ(Environment("MDTOOLS_TEST_KNOWN").getValue(), "before");
        // One that was not there stays.
        EXPECT_EQ(Environment("MDTOOLS_TEST_NEW").getValue(), "new");
        if (!fails) {
            const std::string record = readFile(file);
            EXPECT_NE(record.find("variable: MDTOOLS_TEST_KNOWN=during\n"), std::string::npos);
            EXPECT_NE(record.find("variable: MDTOOLS_TEST_NEW=new\n"), std::string::npos);
        }
    }
}

// A message comes while the process is waited for; its handler runs the same object once more.
TEST(Process, handlesMessagesWhileItWaits)
{
    Environment("MDTOOLS_TEST_KNOWN").setValue("before");
    const std::string signal = newFileName();
    const std::string record = newFileName();
    Process process;
    process.setCommandLine(inQuotes(recorder()) + " " + inQuotes("--until=" + signal) +
                           " --silent --exit=5");
    process.setEnvironment("MDTOOLS_TEST_KNOWN", "during");
    process.enableWait(true);
    Tools::MessageWindow window([&](unsigned int) {
        process.setCommandLine(inQuotes(recorder()) + " --variable=MDTOOLS_TEST_KNOWN --exit=3");
        process.setEnvironment("MDTOOLS_RECORD", record);
        EXPECT_TRUE(process.run());
        EXPECT_EQ(process.returnCode(), 3U);
        EXPECT_EQ(Environment("MDTOOLS_TEST_KNOWN").getValue(), "during");
        std::ofstream{signal};
    });
    std::thread sender([&window] {
        Tools::ProgressMessenger(window.handle(), Tools::MessageWindow::FirstMessage).activate();
    });
    EXPECT_TRUE(process.run());
    sender.join();
    EXPECT_EQ(process.returnCode(), 5U);
    EXPECT_NE(readFile(record).find("variable: MDTOOLS_TEST_KNOWN=during\n"), std::string::npos);
    EXPECT_EQ(Environment("MDTOOLS_TEST_KNOWN").getValue(), "before");
}

TEST(Process, withoutWaitingReturnsAtOnce)
{
    const std::string file = newFileName();
    Process process;
    process.setCommandLine(inQuotes(recorder()) + " --silent --exit=7");
    process.enableWait(true);
    EXPECT_TRUE(process.run());
    process.enableWait(false);
    process.setEnvironment("MDTOOLS_RECORD", file);
    const std::string signal = newFileName();
    process.setCommandLine(inQuotes(recorder()) + " " + inQuotes("--until=" + signal) +
                           " --exit=5");
    EXPECT_TRUE(process.run());
    EXPECT_FALSE(fs::exists(file));
    std::ofstream{signal};
    EXPECT_EQ(process.returnCode(), 7U); // that of the run that was waited for
    EXPECT_NE(waitForRecord(file), "");
}

TEST(Process, startAndWait)
{
    const std::string input = newFileName();
    const std::string record = newFileName();
    std::ofstream(input, std::ios::binary) << "two\nlines";
    Environment("MDTOOLS_RECORD").setValue(record);
    const std::string signal = newFileName();
    const ProcessHandle process = Process::start(
        inQuotes(recorder()) + " " + inQuotes("--until=" + signal) + " --stdin", false, input);
    ASSERT_NE(process, nullptr);
    EXPECT_FALSE(Process::waitFor(process, 1));
    std::ofstream{signal};
    EXPECT_TRUE(Process::waitFor(process, 0)); // no limit
    EXPECT_TRUE(Process::waitFor(process, 1));
    EXPECT_TRUE(Process::waitFor(process, -1));
    Process::close(process);
    EXPECT_NE(readFile(record).find("input: two\nlines\n"), std::string::npos);

    EXPECT_EQ(Process::start(inQuotes(recorder()), true, input + ".missing"), nullptr);
    EXPECT_EQ(Process::start(inQuotes(recorder()), true, MdToolsTest::workDirectory()), nullptr);
    EXPECT_EQ(Process::start("mdtools-no-such-program", true, ""), nullptr);
    std::FILE* const writer = File::open(input, "a");
    EXPECT_EQ(Process::start(inQuotes(recorder()), true, input), nullptr);
    EXPECT_EQ(File::close(writer), 0);
    EXPECT_FALSE(Process::waitFor(nullptr, 1));
    Process::close(nullptr);
}

TEST(Process, leaveNothingBehind)
{
    // A system may have given this one a child for the windows of other tests.
    const int children = MdToolsTest::countChildren();
    Process first;
    first.setCommandLine(inQuotes(recorder()) + " --silent");
    EXPECT_TRUE(first.run());
    const int handles = MdToolsTest::countHandles();
    std::vector<std::thread> threads;
    std::atomic<int> failures = 0;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 25; ++i) {
                Process process;
                process.setCommandLine(inQuotes(recorder()) +
                                       " --silent --exit=" + std::to_string(i));
                process.enableWait(i % 2 == t % 2);
                if (!process.run() || (i % 2 == t % 2 && process.returnCode() != unsigned(i)))
                    ++failures;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);
    // Those that were not waited for end when they like.
    EXPECT_TRUE(MdToolsTest::waitUntil([children] {
        return MdToolsTest::countChildren() <= children;
    })) << MdToolsTest::countChildren()
        << " children";
    EXPECT_LE(MdToolsTest::countHandles(), handles);
}

TEST(MailProcess, composesItsCommandLine)
{
    // A recorder stands in for the mailer on the search path.
    const fs::path folder = fs::path(MdToolsTest::workDirectory()) / "mailer";
    fs::create_directory(folder);
    fs::copy_file(recorder(), folder / ("postie" + fs::path(recorder()).extension().string()));
    Environment path("PATH");
    const std::string previous = path.getValue();
    path.setValue(folder.string() + MdToolsTest::PathSeparator + previous);

    MailProcess mail;
    EXPECT_EQ(mail.getName(), "CMailProcess");
    EXPECT_FALSE(mail.run()); // nobody to send it to
    mail.addReceiver("a");
    mail.addReceiver("b c");
    mail.setSender("s");
    mail.setSubject("");
    mail.setSmtpHost("h");
    mail.enableWait(true);
    const std::string start = "directory: " + ownDirectory() +
                              "\nargument: -host:h\nargument: -from:s\n" +
                              "argument: -to:a,b c\nargument: -s:\n";
    for (const std::string last : {"-nomsg", "-file:body.txt"}) {
        const std::string file = newFileName();
        mail.setMessageFileName(last == "-nomsg" ? "" : "body.txt");
        mail.setEnvironment("MDTOOLS_RECORD", file);
        EXPECT_TRUE(mail.run());
        EXPECT_EQ(readFile(file), start + "argument: " + last + "\n");
    }
    path.setValue(previous);
    EXPECT_FALSE(mail.run());
    fs::remove_all(folder);
}

TEST(Shell, startsProgramsAndNamesFailures)
{
    Shell shell;
    EXPECT_EQ(shell.getErrorMessage(), "");
    for (const std::string& missing :
         {MdToolsTest::workDirectory() + "/no such file.txt", std::string(1'000'000, 'a')}) {
        EXPECT_EQ(shell.execute(missing), Shell::FileNotFound);
        EXPECT_EQ(shell.getErrorMessage(), "File not found: " + missing);
    }
    const Shell copy(shell);
    EXPECT_EQ(copy.getErrorMessage(), shell.getErrorMessage());

    const std::string record = newFileName();
    Environment("MDTOOLS_RECORD").setValue(record);
    EXPECT_EQ(shell.execute(recorder(), "\"a b\" c"), Shell::Success);
    EXPECT_EQ(shell.getErrorMessage(), "Success.");
    EXPECT_NE(waitForRecord(record).find("argument: a b\nargument: c\n"), std::string::npos);
}

TEST(DllUtil, findsFunctions)
{
    const std::string library = MdToolsTest::builtLibrary("test_plugin");
    int (*const answer)() = DllUtil::get()->getFunction(library, "answer");
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);

    ArgumentKeeper arguments({"one", "", "th\xE4re"});
    const auto count = DllUtil::get()->getArgcArgvFunction(library, "countCharacters");
    ASSERT_NE(count, nullptr);
    EXPECT_EQ(count(arguments.getArgC(), arguments.getArgV()), 8);

    // The second one is there, but not the library's own.
    for (const std::string name : {"missing", "strlen"})
        EXPECT_EQ(DllUtil::get()->getFunction(library, name), nullptr) << name;
    for (const std::string name : {"mdtools-no-such-library", "", "/", "."})
        EXPECT_EQ(DllUtil::get()->getFunction(name, "answer"), nullptr) << name;
    EXPECT_EQ(DllUtil::get()->getFunction(recorder() + ".txt", "answer"), nullptr);
}

TEST(ArgumentKeeper, mayBeWrittenInto)
{
    ArgumentKeeper keeper({"program", "x y"});
    ASSERT_EQ(keeper.getArgC(), 2);
    char** arguments = keeper.getArgV();
    EXPECT_STREQ(arguments[0], "program");
    EXPECT_STREQ(arguments[1], "x y");
    EXPECT_EQ(arguments[2], nullptr);
    arguments[1][0] = 'z';
    EXPECT_STREQ(keeper.getArgV()[1], "z y");
    ArgumentKeeper empty({});
    EXPECT_EQ(empty.getArgC(), 0);
    EXPECT_EQ(empty.getArgV()[0], nullptr);
}

TEST(GuidUtil, textForm)
{
    const std::string text = "{6F9619FF-8B86-D011-B42D-00CF4FC964FF}";
    const mdt::Nullable<Guid> guid = GuidUtil::read(text);
    ASSERT_TRUE(guid.hasValue());
    EXPECT_EQ(guid.getValue().Data1, 0x6F9619FFU);
    EXPECT_EQ(guid.getValue().Data2, 0x8B86);
    EXPECT_EQ(guid.getValue().Data3, 0xD011);
    const unsigned char last[] = {0xB4, 0x2D, 0x00, 0xCF, 0x4F, 0xC9, 0x64, 0xFF};
    EXPECT_EQ(std::memcmp(guid.getValue().Data4, last, sizeof(last)), 0);
    EXPECT_EQ(GuidUtil::write(guid.getValue()), text);

    const Guid one = GuidUtil::create();
    EXPECT_EQ(GuidUtil::write(GuidUtil::read(GuidUtil::write(one)).getValue()),
              GuidUtil::write(one));
    EXPECT_NE(GuidUtil::write(one), GuidUtil::write(GuidUtil::create()));

    for (const std::string& bad :
         {std::string(), std::string("{}"), text.substr(1), text + " ", " " + text,
          std::string("{6f9619ff-8b86-d011-b42d-00cf4fc964ff}"),
          std::string("{6F9619FF-8B86-D011-B42D-00CF4FC964FG}"),
          std::string("{6F9619FF8B86-D011-B42D-00CF4FC964FF-}"), text + '\0'})
        EXPECT_FALSE(GuidUtil::read(bad).hasValue()) << bad;
}

}
