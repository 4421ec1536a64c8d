#include "girder/model_file.h"
#include "girder_test.h"

#include <gmock/gmock.h>

#include <initializer_list>

namespace {

using namespace Girder;
using namespace GirderTest;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

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

struct Fault {
    const char *from, *to, *remark;
};

// Each fault of the model that comes of replacing `from` gives one line, which names the entry.
void expectRemarks(std::initializer_list<Fault> faults)
{
    for (const Fault& fault : faults) {
        SCOPED_TRACE(fault.from + std::string(" -> ") + fault.to);
        Remarks remarks("bad");
        readModel(write("bad", replaced(fault.from, fault.to)), remarks);
        ASSERT_FALSE(remarks.lines().empty());
        EXPECT_THAT(remarks.lines().front(), HasSubstr(fault.remark));
        EXPECT_THAT(remarks.lines().front(), StartsWith("bad: "));
    }
}

TEST(GirderModel, faultyEntries)
{
    expectRemarks({
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
    });
}

// Every way for the text to be no record, with the line.
TEST(GirderModel, faultyTexts)
{
    expectRemarks({
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
    });
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

}
