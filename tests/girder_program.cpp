#include "girder/record_text.h"
#include "girder_test.h"
#include "support/child_process.h"

#include <mdtools/folders.h>

#include <gmock/gmock.h>

namespace {

using namespace Girder;
using namespace GirderTest;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST_F(GirderProgram, computesAndStoresTheResult)
{
    const std::string model = write("two.girder", twoSpans);
    const RunResult computed = runWith({model, "--result", inWorkDirectory("out")});
    EXPECT_EQ(computed.outcome, Outcome::Done);
    EXPECT_EQ(computed.errors, "");
    EXPECT_THAT(computed.output, StartsWith("Two\\ \"spans\"\n"));
    EXPECT_THAT(computed.output, HasSubstr("Results: " + inWorkDirectory("out")));

    Tools::Smart::Record record;
    Remarks remarks("out");
    ASSERT_TRUE(readRecord(MdToolsTest::readFile(inWorkDirectory("out")), record, remarks));
    EXPECT_EQ(record.getText("title"), "Two\\ \"spans\"");
    ASSERT_EQ(record.getSequence("supports").size(), 3U);
    ASSERT_EQ(record.getSequence("spans").size(), 2U);
    const Tools::Smart::Sequence& stations = record.getSequence("spans")[1].getSequence("stations");
    ASSERT_EQ(stations.size(), 11U);
    EXPECT_EQ(stations[10].getReal("x"), 8.0);
    EXPECT_NEAR(stations[10].getReal("moment"), record.getSequence("supports")[2].getReal("moment"),
                1e-9);

    // Without a model the last one is computed again; the files are in the program's directory.
    const RunResult again = runWith({});
    EXPECT_EQ(again.outcome, Outcome::Done);
    EXPECT_EQ(MdToolsTest::readFile(inWorkDirectory("files/two.result")),
              MdToolsTest::readFile(inWorkDirectory("out")));
    EXPECT_EQ(MdToolsTest::readFile(inWorkDirectory("files/two.txt")),
              MdToolsTest::readFile(inWorkDirectory("out.txt")));
}

TEST_F(GirderProgram, labelledText)
{
    runWith({write("two.girder", replaced("title", "stations = 2 title"))});
    const std::string text = MdToolsTest::readFile(inWorkDirectory("files/two.txt"));
    EXPECT_THAT(text, StartsWith("title = \"Two\\ 'spans'\" "));
    EXPECT_THAT(text,
                HasSubstr("\nsupport = 2 kind = \"interior\" x = 8.000000000e+00 reaction = "));
    EXPECT_THAT(text, HasSubstr("\nspan = 2 start = 8.000000000e+00 length = 8.000000000e+00 "));
    EXPECT_THAT(text,
                HasSubstr(" stations = 3 x = 0.000000000e+00,4.000000000e+00,8.000000000e+00 "));
    EXPECT_THAT(text, HasSubstr("\nextreme = \"minimum moment\" value = -"));
}

TEST_F(GirderProgram, logsWhatItDoes)
{
    const std::string good = write("good", twoSpans);
    const std::string bad = write("bad", replaced("length = 8.0", "length = -8"));
    runWith({good});
    runWith({bad});
    const std::string log = MdToolsTest::readFile(inWorkDirectory("files/girder.log"));
    EXPECT_THAT(log,
                HasSubstr(" " + good + ": results in " + inWorkDirectory("files/good.result")));
    EXPECT_THAT(log, HasSubstr(" " + bad + ": spans[2].length: must be greater"));
    // Each line begins with date and time.
    EXPECT_EQ(log.substr(2, 1) + log.substr(5, 1) + log.substr(13, 1), "..:");
}

TEST_F(GirderProgram, archivesFinishedJobs)
{
    const std::string model = write("hall.girder", twoSpans);
    const std::string archive = inWorkDirectory("archive/deep");
    EXPECT_THAT(runWith({model, "--archive", archive}).output,
                HasSubstr("Archive: " + archive + "/hall\n"));
    for (const char* name : {"/hall/hall.girder", "/hall/hall.result", "/hall/hall.txt"})
        EXPECT_NE(MdToolsTest::readFile(archive + name), "") << name;
    // A second job of the same name gets a folder of its own, too.
    EXPECT_THAT(runWith({model, "--archive", archive}).output,
                HasSubstr("Archive: " + archive + "/hall-2\n"));
    EXPECT_EQ(MdToolsTest::readFile(archive + "/hall-2/hall.girder"), twoSpans);
    const RunResult failed = runWith({model, "--archive", model});
    EXPECT_EQ(failed.outcome, Outcome::Failed);
    EXPECT_EQ(failed.errors, model + ": the job cannot be archived here\n");
}

TEST_F(GirderProgram, listing)
{
    const std::string model =
        write("simple.girder", "( version = \"1.0\" title = \"Beam\" stations = 2\n"
                               " spans = [ ( length = 8 stiffness = 64000 load = 12.5 ) ]\n"
                               " supports = [ ( kind = \"hinged\" ) ( kind = \"hinged\" ) ] )");
    const RunResult computed = runWith({model, "--result", inWorkDirectory("out")});
    EXPECT_THAT(computed.output, StartsWith("Beam\n\n"
                                            "  Support   x [m]  reaction [kN]  moment [kNm]\n"
                                            "  1 hinged  0.000         50.000         0.000\n"
                                            "  2 hinged  8.000         50.000         0.000\n\n"
                                            "  Span 1  x [m]  M [kNm]   V [kN]  w [mm]\n"
                                            "          0.000    0.000   50.000   0.000\n"
                                            "          4.000  100.000    0.000  10.417\n"
                                            "          8.000    0.000  -50.000   0.000\n\n"
                                            "  Extremes       value  span  x [m]\n"
                                            "  max M [kNm]  100.000     1  4.000\n"
                                            "  min M [kNm]    0.000     1  0.000\n"
                                            "  max V [kN]    50.000     1  0.000\n"
                                            "  min V [kN]   -50.000     1  8.000\n"
                                            "  max w [mm]    10.417     1  4.000\n"
                                            "  min w [mm]     0.000     1  0.000\n"));
}

TEST_F(GirderProgram, failures)
{
    const std::string good = write("good", twoSpans);
    const std::string huge = write("huge", replaced("load = 12.0", "load = 1e308"));
    const std::string bad = write("bad", replaced("length = 8.0", "length = -8"));
    using enum Outcome;
    const std::string absent = inWorkDirectory("absent");
    const std::string nowhere = inWorkDirectory("no/where");
    struct Case {
        std::vector<std::string> arguments;
        Outcome outcome;
        std::string error;
    };
    const Case cases[] = {
        {{bad}, Failed, bad + ": spans[2].length: must be greater than 0, but is -8\n"},
        {{huge}, Failed, huge + ": some number is too large or too small"},
        {{absent}, Failed, absent + ": cannot be read\n"},
        {{good, "--result", nowhere}, Failed, nowhere + ": cannot be written\n"},
        {{good, "--result", good}, WrongUsage, "girder: the results would replace the model\n"},
        {{good, good}, WrongUsage, "girder: one model at a time\nusage: "},
        {{good, "--result"}, WrongUsage, "girder: \"--result\" needs a value\nusage: "},
        {{"--colour"}, WrongUsage, "girder: there is no option \"--colour\" here\nusage: "},
        {{"settings", "all"}, WrongUsage, "girder: \"settings\" takes no arguments\n"},
        {{"set", "Decimals"}, WrongUsage, "girder: \"set\" takes a name and a value\n"},
        {{"set", "Decimals", "3x"},
         WrongUsage,
         "girder: Decimals must be a whole number from 0 to 9, but is \"3x\"\n"},
        {{"set", "Colour", "3"}, WrongUsage, "girder: there is no setting \"Colour\"\n"},
        {{"set", "NumberStyle", "bold"},
         WrongUsage,
         "girder: NumberStyle must be one of fixed, scientific, general, engineering, "},
        {{"set", "Trace", "1"}, WrongUsage, "girder: Trace must be \"on\" or \"off\""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.error);
        const RunResult failed = runWith(c.arguments);
        EXPECT_EQ(failed.outcome, c.outcome);
        EXPECT_THAT(failed.errors, StartsWith(c.error));
    }
}

TEST_F(GirderProgram, outputThatNobodyTakes)
{
    struct FullDisk : std::streambuf {};
    FullDisk disk;
    std::istringstream in;
    std::ostream out(&disk);
    std::ostringstream errors;
    EXPECT_EQ(run({write("good", twoSpans)}, {in, out, errors}), Outcome::Failed);
    EXPECT_EQ(errors.str(), "girder: the output cannot be written\n");
}

TEST_F(GirderProgram, settings)
{
    EXPECT_EQ(runWith({"set", "stationsPerSpan", "4"}).outcome, Outcome::Done);
    EXPECT_EQ(runWith({"set", "Decimals", "1"}).outcome, Outcome::Done);
    const std::string model = inWorkDirectory("x.girder");
    EXPECT_EQ(runWith({"set", "LastModel", model}).outcome, Outcome::Done);
    EXPECT_EQ(runWith({"set", "NumberStyle", "Engineering"}).outcome, Outcome::Done);
    const std::string settings = "Decimals = 1\nDirectory = " + inWorkDirectory("files") +
                                 "\nLastModel = " + model +
                                 "\nMailHost = \nMailReceivers = " + Tools::getUserName() +
                                 "\nMailSender = " + Tools::getUserName() +
                                 "\nNumberStyle = engineering\nStationsPerSpan = 4\n";
    EXPECT_THAT(runWith({"settings"}).output, StartsWith(settings));

    EXPECT_EQ(runWith({"set", "Decimals", "10"}).outcome, Outcome::WrongUsage);
    EXPECT_THAT(runWith({"settings"}).output, StartsWith(settings));

    const RunResult computed =
        runWith({write("two.girder", twoSpans), "--result", inWorkDirectory("out")});
    EXPECT_THAT(computed.output, HasSubstr("\n          2.0E+00 "));
}

const std::string train =
    "\n train = [ ( distance = 0 force = 60 ) ( distance = 2 force = 90 ) ] )\n";

TEST_F(GirderProgram, envelope)
{
    const std::string model = write("train.girder", replaced("\n)\n", train));
    const RunResult done = runWith({"envelope", model, "--positions", "401"});
    EXPECT_EQ(done.outcome, Outcome::Done);
    EXPECT_EQ(done.errors, "");
    EXPECT_THAT(done.output, HasSubstr("Envelope of the train alone\n\n  Support  min reaction"));
    Tools::Smart::Record record;
    Remarks remarks("out");
    ASSERT_TRUE(readRecord(MdToolsTest::readFile(inWorkDirectory("files/train.envelope")), record,
                           remarks));
    EXPECT_EQ(record.getSequence("reactions").size(), 3U);
    const auto& middle = record.getSequence("spans")[0].getSequence("stations")[5];
    EXPECT_EQ(middle.getReal("x"), 4.0);
    EXPECT_GT(middle.getRecord("moment").getReal("maximum"), 100.0);

    EXPECT_EQ(runWith({"envelope", model, "--positions", "1"}).outcome, Outcome::WrongUsage);
    EXPECT_EQ(runWith({"envelope", model, "--positions", "2x"}).outcome, Outcome::WrongUsage);
    const std::string without = write("without.girder", twoSpans);
    EXPECT_EQ(runWith({"envelope", without}).errors,
              without + ": train: is missing, there is nothing to move over the girder\n");
}

TEST_F(GirderProgram, edit)
{
    const std::string model = write("edit.girder", twoSpans);
    const RunResult done = runWith({"edit", model}, "length 1 9\nsolve\nsave\n");
    EXPECT_EQ(done.outcome, Outcome::Done);
    EXPECT_THAT(done.output, HasSubstr("saved: " + model));
    EXPECT_THAT(MdToolsTest::readFile(model), HasSubstr("length = 9\n"));
    EXPECT_EQ(runWith({"edit", model}, "length 1\n").outcome, Outcome::Failed);
}

TEST_F(GirderProgram, runsAsProcess)
{
    const std::string program = MdToolsTest::builtProgram("girder");
    const std::string good = write("good", twoSpans);
    const std::string bad = write("bad", replaced("length = 8.0", "length = 8m"));
    const auto done = MdToolsTest::runChild(program, {good, "--result", inWorkDirectory("out")});
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_EQ(done.output, runWith({good, "--result", inWorkDirectory("out")}).output);
    EXPECT_EQ(done.errors, "");
    const auto failed = MdToolsTest::runChild(program, {bad});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_EQ(failed.output, "");
    EXPECT_EQ(failed.errors,
              bad + ": spans[2].length: line 5: expected a value, but found \"8m\"\n");
    EXPECT_EQ(MdToolsTest::runChild(program, {"set"}).exitCode, 2);
    const std::string version = MdToolsTest::runChild(program, {"--version"}).output;
    EXPECT_THAT(version, StartsWith("girder "));
    EXPECT_THAT(version, HasSubstr("\nThe MdTools maintainers\n"));
}

}
