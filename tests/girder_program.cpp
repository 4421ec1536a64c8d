#include "girder/model_file.h"
#include "girder/moment_drawing.h"
#include "girder/number_text.h"
#include "girder/program.h"
#include "girder/record_text.h"
#include "support/child_process.h"
#include "support/shared_value.h"
#include "support/test_environment.h"

#include <mdtools/environment.h>
#include <mdtools/folders.h>
#include <mdtools/path.h>
#include <mdtools/registry.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

using namespace Girder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

std::string inWorkDirectory(const std::string& name)
{
    return Tools::Path::convert(MdToolsTest::workDirectory(), true) + "/" + name;
}

std::string write(const std::string& name, const std::string& text)
{
    const std::string file = inWorkDirectory(name);
    std::ofstream(file, std::ios::binary) << text;
    return file;
}

std::string read(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

struct RunResult {
    Outcome outcome;
    std::string output;
    std::string errors;
};

RunResult runWith(const std::vector<std::string>& arguments, const std::string& input = "")
{
    std::istringstream lines(input);
    std::ostringstream output, errors;
    const Outcome outcome = run(arguments, {lines, output, errors});
    return {outcome, output.str(), errors.str()};
}

// Keeps the program's files in the work directory.
class GirderProgram : public ::testing::Test {
protected:
    GirderProgram() { runWith({"set", "Directory", inWorkDirectory("files")}); }
    // The next test finds the defaults again.
    ~GirderProgram() override
    {
        Tools::RegistryKey settings = Tools::Registry::find(
            Tools::Registry::CurrentUser, "SOFTWARE\\MERODA\\Girder\\Settings", true);
        std::vector<Tools::RegistryValue> values;
        for (Tools::RegistryValue::Iterator it(settings); it.valid(); ++it)
            values.push_back(*it);
        for (const Tools::RegistryValue& value : values)
            settings.remove(value);
        MdToolsTest::removeUserKey("SOFTWARE\\MERODA\\Girder");
    }
};

const std::string twoSpans =
    "( version = \"1.1\"\n"
    " title = \"Two\\\\ \\\"spans\\\"\" # comment\n"
    " spans = [\n"
    "  ( length = 8 stiffness = 2.1e4 load = 12.0 )\n"
    "  ( length = 8.0 stiffness = 21000 load = 12\n"
    "    pointLoads = [ ( position = 2.5 force = -1e1 ) ] ) ]\n"
    " supports = [ (kind=\"hinged\") (kind=\"interior\") (kind=\"fixed\") ]\n"
    ")\n";

std::string replaced(const std::string& from, const std::string& to)
{
    std::string text = twoSpans;
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

TEST(GirderModel, reads)
{
    Remarks remarks("two");
    const Model model = readModel(write("two", twoSpans), remarks);
    EXPECT_TRUE(remarks.recorder().isEmpty());
    EXPECT_EQ(model.title, "Two\\ \"spans\"");
    EXPECT_EQ(model.stations, 0);
    EXPECT_THAT(model.supports, ElementsAre(Support::Hinged, Support::Interior, Support::Fixed));
    ASSERT_EQ(model.spans.size(), 2U);
    EXPECT_EQ(model.spans[0].length, 8.0);
    ASSERT_EQ(model.spans[1].stiffness.size(), 1U);
    EXPECT_EQ(model.spans[1].stiffness[0].value, 21000.0);
    ASSERT_EQ(model.spans[1].loads.points.size(), 1U);
    EXPECT_EQ(model.spans[1].loads.points[0].position, 2.5);
    EXPECT_EQ(model.spans[1].loads.points[0].force, -10.0);
}

// Each fault gives one line, which names the entry.
TEST(GirderModel, faults)
{
    struct Case {
        const char *from, *to, *remark;
    };
    static const Case cases[] = {
        // Entries.
        {"title = ", "name = ", "title: is missing"},
        {"length = 8.0", "", "spans[2].length: is missing"},
        {"length = 8.0", "length = -8.0", "spans[2].length: must be greater than 0, but is -8"},
        {"length = 8.0", "length = 1e999", "spans[2].length: is too large a number"},
        {"8 stiffness = 2.1e4 load = 12.0 )\n  ( length = 8.0",
         "1e308 stiffness = 2.1e4 load = 0 ) ( length = 1e308", "spans: are too long together"},
        {"length = 8.0", "length = ( )", "spans[2].length: must be a number, but is a record"},
        {"stiffness = 2.1e4", "stiffness = 0", "spans[1].stiffness: must be greater than 0"},
        {"load = 12\n", "load = [ ]", "spans[2].load: must be a number, but is a list"},
        {"force = -1e1", "", "spans[2].pointLoads[1].force: is missing"},
        {"position = 2.5", "position = 8.1",
         "spans[2].pointLoads[1].position: must lie within the span, from 0 to 8, but is 8.1"},
        {"[ ( position = 2.5 force = -1e1 ) ]", "5",
         "spans[2].pointLoads: must be a list in brackets"},
        {"(kind=\"fixed\")", "", "supports"},
        {"\"fixed\"", "\"interior\"",
         "supports[3].kind: must be \"hinged\" or \"fixed\" at an end"},
        {"\"interior\"", "\"hinged\"", "supports[2].kind: must be \"interior\""},
        {"\"interior\"", "7", "supports[2].kind: must be a quoted text, but is a whole number"},
        {"\"Two", "7 #", "title: must be a quoted text, but is a whole number"},
        {" title", " stations = 0 title",
         "stations: must be a whole number from 1 to 1000, but is 0"},
        {" title", " stations = 9.5 title", "stations: must be a whole number, but is a number"},
        {"\"1.1\"", "\"3.0\"",
         "version: is not known to this program, which reads up to 1.1: \"3.0\""},
        {"version = \"1.1\"", "", "version: is missing"},
        {"length = 8.0", "length = \"abc\"",
         "spans[2].length: is no formula with a value: \"abc\""},
        {"length = 8.0", "length = \"1/0\"",
         "spans[2].length: is no formula with a value: \"1/0\""},
        {"length = 8.0", "length = \"\"", "spans[2].length: is no formula with a value: \"\""},
        {"length = 8.0", "length = \"2-5\"", "spans[2].length: must be greater than 0, but is -3"},
        {"= 21000", "= [ (position=1 value=5) (position=1 value=6) ]",
         "spans[2].stiffness[2].position: must lie behind that of the point before"},
        {"= 21000", "= [ (position=9 value=5) ]",
         "spans[2].stiffness[1].position: must lie within"},
        {"= 21000", "= [ ]", "spans[2].stiffness: must hold one point at least"},
        {"load = 12.0", "load = 12.0 depth = 0.4", "spans[1].reinforcement: is missing"},
        {"\n)\n", "\n train = [ ( distance = -1 force = 5 ) ] )\n",
         "train[1].distance: must not be negative, but is -1"},
        {"load = 12.0", "load = 12.0 laod = 1", "spans[1].laod: is no entry of a model"},
        // The text itself: every way for it to be no record, with the line.
        {"length = 8.0", "length = 8m",
         "spans[2].length: line 5: expected a value, but found \"8m\""},
        {"length = 8.0", "length 8.0",
         "spans[2].length: line 5: expected \"=\", but found \"8.0\""},
        {"length = 8.0", "length = x",
         "spans[2].length: line 5: expected a value, but found \"x\""},
        {"length = 8.0", "7", "spans[2]: line 5: expected the name of an entry or \")\""},
        {"( length = 8.0", "length = 8.0", "spans[2]: line 5: expected \"(\" or \"]\""},
        {"( version", "[ version", "line 1: expected \"(\", but found \"[\""},
        {"\n)\n", "\n",
         "supports: line 8: expected the name of an entry or \")\", but found the end"},
        {"\n)\n", "\n) # end\n x", "line 9: expected nothing more"},
        {"\n)\n", "\n) 1x", "expected nothing more"},
        {"\"fixed\"", "\"fixed",
         "supports[3].kind: line 7: expected a value, but found a quoted text"},
        {"(kind=\"fixed\") ]\n", "(kind=\"fixed\")\n",
         "supports[4]: line 8: expected \"(\" or \"]\", but found \")\""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.from + std::string(" -> ") + c.to);
        Remarks remarks("bad");
        readModel(write("bad", replaced(c.from, c.to)), remarks);
        ASSERT_FALSE(remarks.lines().empty());
        EXPECT_THAT(remarks.lines().front(), HasSubstr(c.remark));
        EXPECT_THAT(remarks.lines().front(), StartsWith("bad: "));
    }
}

TEST(GirderModel, formulasAndStiffnessTables)
{
    Remarks remarks("formulas");
    const std::string text =
        replaced("stiffness = 21000", "stiffness = [ (position = 0 value = \"33e6*0,5\")"
                                      " (position = \"8/2\" value = 7e6) ]"
                                      " reinforcement = \"4d12\" depth = \"0,4\"");
    const Model model = readModel(write("formulas", text), remarks);
    EXPECT_FALSE(remarks.hasError());
    ASSERT_EQ(model.spans.size(), 2U);
    ASSERT_EQ(model.spans[1].stiffness.size(), 2U);
    EXPECT_EQ(model.spans[1].stiffness[0].value, 16.5e6);
    EXPECT_EQ(model.spans[1].stiffness[1].position, 4.0);
    EXPECT_NEAR(model.spans[1].reinforcement, 4.5239, 1e-4);
    EXPECT_EQ(model.spans[1].depth, 0.4);

    // What is new needs the version that brought it; an older file is read all the same.
    Remarks old("old");
    readModel(write("old", "( version = \"1.0\"" + text.substr(text.find('\n'))), old);
    EXPECT_THAT(old.lines(),
                ElementsAre("old: version: note: the format is now at version 1.1",
                            "old: spans[2].stiffness: needs version 1.1 of the format, but the "
                            "model has 1.0",
                            "old: spans[2].reinforcement: needs version 1.1 of the format, but the "
                            "model has 1.0"));
}

// All remarks are shown, not the first one only.
TEST(GirderModel, severalRemarks)
{
    std::string text = replaced("length = 8.0", "length = -8");
    text.replace(text.find("12.0"), 4, "[]  ");
    Remarks errors("bad");
    readModel(write("bad", text), errors);
    EXPECT_THAT(errors.lines(),
                ElementsAre("bad: spans[1].load: must be a number, but is a list in brackets",
                            "bad: spans[2].length: must be greater than 0, but is -8",
                            HasSubstr("spans[2].pointLoads[1].position")));

    Remarks warnings("odd");
    text = replaced("stiffness = 21000", "stiffness = 21000000");
    const std::string force = "( position = 2.5 force = -1e1 )";
    text.insert(text.find(force), force);
    readModel(write("odd", text), warnings);
    EXPECT_FALSE(warnings.hasError());
    EXPECT_THAT(warnings.lines(),
                ElementsAre("odd: spans[2].pointLoads[2]: warning: is the same as the one before",
                            HasSubstr("odd: spans[2].stiffness: warning: differs")));
}

TEST(GirderModel, hostileTexts)
{
    std::string nested = "(a=", opened = "(a=[";
    for (int i = 0; i < 200000; ++i) {
        nested += "(a=";
        opened += "(a=[";
    }
    for (const std::string& text :
         {std::string(), std::string(3, '\0'), nested, opened, "(" + std::string(1000000, 'x'),
          "(title = \"" + std::string(1000000, '\\')}) {
        Remarks remarks("hostile");
        readModel(write("hostile", text), remarks);
        ASSERT_EQ(remarks.lines().size(), 1U);
        EXPECT_LT(remarks.lines().front().size(), 300U);
    }
    Remarks remarks("none");
    readModel(MdToolsTest::workDirectory(), remarks);
    readModel(inWorkDirectory("none"), remarks);
    EXPECT_THAT(remarks.lines(), ElementsAre("none: cannot be read", "none: cannot be read"));
}

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
    ASSERT_TRUE(readRecord(read(inWorkDirectory("out")), record, remarks));
    EXPECT_EQ(record.getText("title"), "Two\\ \"spans\"");
    ASSERT_EQ(record.getSequence("supports").size(), 3U);
    ASSERT_EQ(record.getSequence("spans").size(), 2U);
    const Tools::Smart::Sequence& stations = record.getSequence("spans")[1].getSequence("stations");
    ASSERT_EQ(stations.size(), 11U);
    EXPECT_EQ(stations[10].getReal("x"), 8.0);
    EXPECT_NEAR(stations[10].getReal("moment"), record.getSequence("supports")[2].getReal("moment"),
                1e-9);

    // Without a model the last one is computed again; the files stand in the program's directory.
    const RunResult again = runWith({});
    EXPECT_EQ(again.outcome, Outcome::Done);
    EXPECT_EQ(read(inWorkDirectory("files/two.result")), read(inWorkDirectory("out")));
    EXPECT_EQ(read(inWorkDirectory("files/two.txt")), read(inWorkDirectory("out.txt")));
}

TEST_F(GirderProgram, labelledText)
{
    runWith({write("two.girder", replaced("title", "stations = 2 title"))});
    const std::string text = read(inWorkDirectory("files/two.txt"));
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
    const std::string log = read(inWorkDirectory("files/girder.log"));
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
        EXPECT_NE(read(archive + name), "") << name;
    // A second job of the same name gets a folder of its own, too.
    EXPECT_THAT(runWith({model, "--archive", archive}).output,
                HasSubstr("Archive: " + archive + "/hall-2\n"));
    EXPECT_EQ(read(archive + "/hall-2/hall.girder"), twoSpans);
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
    struct Case {
        std::vector<std::string> arguments;
        Outcome outcome;
        std::string error;
    };
    const Case cases[] = {
        {{bad}, Outcome::Failed, bad + ": spans[2].length: must be greater than 0, but is -8\n"},
        {{huge}, Outcome::Failed, huge + ": some number is too large or too small"},
        {{inWorkDirectory("absent")},
         Outcome::Failed,
         inWorkDirectory("absent") + ": cannot be read\n"},
        {{good, "--result", inWorkDirectory("no/where")},
         Outcome::Failed,
         inWorkDirectory("no/where") + ": cannot be written\n"},
        {{good, "--result", good},
         Outcome::WrongUsage,
         "girder: the results would replace the model\n"},
        {{good, good}, Outcome::WrongUsage, "girder: one model at a time\nusage: "},
        {{good, "--result"}, Outcome::WrongUsage, "girder: \"--result\" needs a value\nusage: "},
        {{"--colour"},
         Outcome::WrongUsage,
         "girder: there is no option \"--colour\" here\nusage: "},
        {{"settings", "all"}, Outcome::WrongUsage, "girder: \"settings\" takes no arguments\n"},
        {{"set", "Decimals"}, Outcome::WrongUsage, "girder: \"set\" takes a name and a value\n"},
        {{"set", "Decimals", "3x"},
         Outcome::WrongUsage,
         "girder: Decimals must be a whole number from 0 to 9, but is \"3x\"\n"},
        {{"set", "Colour", "3"}, Outcome::WrongUsage, "girder: there is no setting \"Colour\"\n"},
        {{"set", "NumberStyle", "bold"},
         Outcome::WrongUsage,
         "girder: NumberStyle must be one of fixed, scientific, general, engineering, "},
        {{"set", "Trace", "1"}, Outcome::WrongUsage, "girder: Trace must be \"on\" or \"off\""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.error);
        const RunResult failed = runWith(c.arguments);
        EXPECT_EQ(failed.outcome, c.outcome);
        EXPECT_THAT(failed.errors, StartsWith(c.error));
    }
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
    ASSERT_TRUE(readRecord(read(inWorkDirectory("files/train.envelope")), record, remarks));
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
    EXPECT_THAT(read(model), HasSubstr("length = 9\n"));
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

// The recording program under another name in a directory of its own; what was recorded last.
class Recorder {
public:
    explicit Recorder(const std::string& directory, const std::string& name)
        : m_directory(inWorkDirectory(directory))
    {
        const std::filesystem::path program = MdToolsTest::builtProgram("test_child_program");
        std::filesystem::create_directories(m_directory);
        std::filesystem::copy_file(program, m_directory + "/" + name);
        Tools::Environment("MDTOOLS_RECORD").setValue(m_record);
    }
    ~Recorder()
    {
        std::filesystem::remove_all(m_directory);
        std::filesystem::remove(m_record);
        Tools::Environment("MDTOOLS_EXIT").setValue("");
    }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    std::string record() const { return read(m_record); }

private:
    std::string m_directory;
    std::string m_record = inWorkDirectory("record");
};

const std::string umlauts = "\xDC"
                            "berbau \xDF\xE4\xF6\xFC";

TEST_F(GirderProgram, prints)
{
    const std::string model = write("paper.girder", replaced("Two", umlauts));
    const std::string job = inWorkDirectory("files/paper.xml");
    MdToolsTest::SharedValue installation(Tools::Registry::LocalMachine,
                                          "SOFTWARE\\MERODA\\Install", "Directory");
    installation.set(Tools::RegistryValue::String, "");
    EXPECT_EQ(runWith({"print", model}).errors,
              job + ": there is no print tool: the settings name no installation directory\n");
    const std::string family = inWorkDirectory("family");
    installation.set(Tools::RegistryValue::String, family);
    EXPECT_EQ(runWith({"print", model}).errors,
              job + ": there is no print tool: " + family + "\\Tools\\MdPrint.Exe is missing\n");

    const Recorder tool("family/Tools", "MdPrint.Exe");
    const RunResult printed = runWith({"print", model});
    EXPECT_EQ(printed.outcome, Outcome::Done);
    EXPECT_EQ(printed.errors, "");
    EXPECT_THAT(printed.output, HasSubstr("Print job: " + job + "\n"));
    EXPECT_THAT(tool.record(), HasSubstr("argument: @" + job + "\n"));
    const std::string parameters = read(job);
    EXPECT_THAT(parameters, HasSubstr("files&#047;paper.listing</Dateiname>"));
    EXPECT_THAT(parameters, HasSubstr("<Optionen Env=\"meroda\" DirektDrucken=\"yes\"/>"));
    EXPECT_THAT(parameters, HasSubstr("<Inhalt>&#220;berbau&#032;&#223;&#228;&#246;&#252;&#092;"));

    // The listing, and on a page of its own the moment line.
    const std::string listing = read(inWorkDirectory("files/paper.listing"));
    EXPECT_THAT(listing, StartsWith(umlauts));
    const std::size_t page = listing.find("\fMoments [kNm]");
    ASSERT_NE(page, std::string::npos);
    EXPECT_THAT(listing.substr(page), HasSubstr(" |A"));
}

TEST_F(GirderProgram, mails)
{
    const std::string model = write("mail.girder", twoSpans);
    Tools::Environment path("PATH");
    const std::string previous = path.getValue();
    const std::string extension =
        std::filesystem::path(MdToolsTest::builtProgram("test_child_program")).extension().string();
    EXPECT_EQ(runWith({"mail", model}).errors,
              model + ": the mailer \"postie\" cannot be started\n");

    const Recorder mailer("mailer", "postie" + extension);
    path.setValue(inWorkDirectory("mailer") + MdToolsTest::PathSeparator + previous);
    const std::string user = Tools::getUserName();
    const std::string end =
        "argument: -s:Two\\ 'spans'\nargument: -file:" + inWorkDirectory("files/mail.listing") +
        "\n";
    EXPECT_EQ(runWith({"mail", model}).outcome, Outcome::Done);
    EXPECT_THAT(mailer.record(),
                HasSubstr("argument: -from:" + user + "\nargument: -to:" + user + "\n" + end));
    for (const auto& [name, value] :
         {std::pair("MailHost", "mail.host"), std::pair("MailSender", "a@b.c"),
          std::pair("MailReceivers", "d@e.f, g@h.i")})
        EXPECT_EQ(runWith({"set", name, value}).outcome, Outcome::Done);
    EXPECT_EQ(runWith({"mail", model}).outcome, Outcome::Done);
    EXPECT_THAT(mailer.record(), HasSubstr("argument: -host:mail.host\nargument: -from:a@b.c\n"
                                           "argument: -to:d@e.f,g@h.i\n" +
                                           end));
    const RunResult sent = runWith({"mail", model, "--to", "j@k.l"});
    EXPECT_THAT(sent.output, HasSubstr("Sent to: j@k.l\n"));
    EXPECT_THAT(mailer.record(), HasSubstr("argument: -to:j@k.l\n"));

    Tools::Environment("MDTOOLS_EXIT").setValue("3");
    EXPECT_EQ(runWith({"mail", model}).errors, model + ": the mailer failed with exit code 3\n");
    EXPECT_EQ(runWith({"mail", model, "--to", "a\"b"}).errors,
              model + ": cannot be handed to the mailer: a\"b\n");
    path.setValue(previous);
}

TEST(GirderDrawing, momentLine)
{
    const auto draw = [](double load, Support end) {
        Model model;
        model.spans = {{8.0, {{0.0, 1000.0}}, {load, {}}}};
        model.supports = {end, Support::Hinged};
        std::ostringstream out;
        drawMoments(model, {NumberStyle::Fixed, 1}, out);
        return out.str();
    };
    const std::string simple = draw(12.0, Support::Hinged);
    EXPECT_THAT(simple, HasSubstr("\n 0.0 |A" + std::string(70, '-') + "A\n"));
    // The lowest row begins half a row of 24 above the peak, where the parabola is sqrt(1/48) of
    // its half width, 5.2 of 36 columns, away from the middle.
    EXPECT_THAT(simple, HasSubstr("\n96.0 |" + std::string(30, ' ') + "************\n"));
    const std::string clamped = draw(12.0, Support::Fixed);
    EXPECT_THAT(clamped, HasSubstr("\n-96.0 |*\n"));
    EXPECT_THAT(clamped, HasSubstr("\n  0.0 |#----------------*"));
    EXPECT_THAT(clamped, HasSubstr("\n 54.0 |"));
    // Nothing to draw, numbers near the ends of the range.
    for (const double load : {0.0, 1e-320, 1e300})
        EXPECT_THAT(draw(load, Support::Fixed), HasSubstr(" |#"));
}

TEST(GirderNumbers, texts)
{
    EXPECT_EQ(toText(-4.5), "-4.5");
    struct Case {
        double value;
        const char *fixed, *scientific, *general, *engineering;
    };
    static const Case cases[] = {
        {1234.56784, "1234.568", "1.235E+03", "1.23E+03", "1.235E+03"},
        {-0.0004, "0.000", "-4.000E-04", "-0.0004", "-400.000E-06"},
        {-0.0, "0.000", "0.000E+00", "0", "0.000E+00"},
        {-5e-324, "0.000", "0.000E+00", "0", "0.000E+00"}, // no number of use
    };
    for (const Case& c : cases) {
        EXPECT_EQ(toListText(c.value, {NumberStyle::Fixed, 3}), c.fixed);
        EXPECT_EQ(toListText(c.value, {NumberStyle::Scientific, 3}), c.scientific);
        EXPECT_EQ(toListText(c.value, {NumberStyle::General, 3}), c.general);
        EXPECT_EQ(toListText(c.value, {NumberStyle::Engineering, 3}), c.engineering);
    }
}

}
