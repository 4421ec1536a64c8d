#include "girder/edit_session.h"
#include "girder/model_file.h"
#include "support/test_environment.h"

#include <mdtools/file.h>

#include <gmock/gmock.h>

#include <sstream>

namespace {

using namespace Girder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

Model threeSpans()
{
    Model model;
    model.title = "Three \"spans\"";
    for (const double length : {6.0, 8.0, 6.0})
        model.spans.push_back({length, {{0.0, 21000.0}}, {5.0, {}}});
    model.spans[1].loads.points = {{2.0, 10.0}, {4.0, 20.0}};
    model.spans[2].stiffness = {{0.0, 21000.0}, {5.0, 12000.5}};
    model.supports = {Support::Fixed, Support::Interior, Support::Interior, Support::Hinged};
    model.train = {{0.0, 100.0}, {1.5, 80.0}};
    return model;
}

class GirderEdit : public ::testing::Test {
protected:
    // False if some line failed; what was said is in m_output and m_errors.
    bool perform(const std::string& lines)
    {
        std::istringstream in(lines);
        std::ostringstream out, errors;
        const bool result = EditSession(m_document, m_file, 4, NumberFormat{}, out, errors).run(in);
        m_output = out.str();
        m_errors = errors.str();
        return result;
    }

    double lengthOf(std::size_t span) const { return m_document.span(span).length; }

    std::vector<double> forcesOf(std::size_t span) const
    {
        std::vector<double> forces;
        for (const PointLoad& load : m_document.span(span).loads.points)
            forces.push_back(load.force);
        return forces;
    }

    Document m_document{threeSpans()};
    std::string m_file = MdToolsTest::workDirectory() + "/edited.girder";
    std::string m_output;
    std::string m_errors;
};

TEST_F(GirderEdit, editsUndoAndRedo)
{
    EXPECT_TRUE(perform("length 1 2*3,5 # a formula\nload 1 9\nadd 2 3.0 -15\nremove 2 1\n"));
    EXPECT_EQ(m_output, "span 1: 7 m, 5 kN/m, 0 point loads\n"
                        "span 1: 7 m, 9 kN/m, 0 point loads\n"
                        "span 2: 8 m, 5 kN/m, 3 point loads\n"
                        "span 2: 8 m, 5 kN/m, 2 point loads\n"
                        "The changes were not saved.\n");
    EXPECT_THAT(forcesOf(1), ElementsAre(20.0, -15.0));

    EXPECT_TRUE(perform("undo list\nundo\nundo\nundo\nundo\nredo list"));
    EXPECT_EQ(m_output, "span 2: remove 10 kN at 2 m\nspan 2: add -15 kN at 3 m\n"
                        "span 1: load 9 kN/m\nspan 1: length 7 m\n"
                        "span 2: 8 m, 5 kN/m, 3 point loads\nundone: span 2: remove 10 kN at 2 m\n"
                        "span 2: 8 m, 5 kN/m, 2 point loads\nundone: span 2: add -15 kN at 3 m\n"
                        "span 1: 7 m, 5 kN/m, 0 point loads\nundone: span 1: load 9 kN/m\n"
                        "span 1: 6 m, 5 kN/m, 0 point loads\nundone: span 1: length 7 m\n"
                        "span 1: length 7 m\nspan 1: load 9 kN/m\n"
                        "span 2: add -15 kN at 3 m\nspan 2: remove 10 kN at 2 m\n"
                        "The changes were not saved.\n");
    EXPECT_EQ(lengthOf(0), 6.0);
    EXPECT_THAT(forcesOf(1), ElementsAre(10.0, 20.0));

    EXPECT_TRUE(perform("redo\nredo\nlength 3 5\n"));
    EXPECT_TRUE(m_document.history().isRedoBufferEmpty()); // a new edit cuts off what was undone
    EXPECT_EQ(lengthOf(0), 7.0);
    EXPECT_EQ(m_document.span(0).loads.uniform, 9.0);
}

TEST_F(GirderEdit, groupsAndSelections)
{
    EXPECT_TRUE(perform("group New loads\nload 1 1\nadd 1 1 1\nadd 1 2 2\nend\nundo list\nundo"));
    EXPECT_THAT(m_output, HasSubstr("\nNew loads\n"));
    EXPECT_THAT(m_output, HasSubstr("\nundone: New loads\n"));
    EXPECT_THAT(forcesOf(0), IsEmpty());
    EXPECT_EQ(m_document.span(0).loads.uniform, 5.0);
    EXPECT_TRUE(perform("redo"));
    EXPECT_THAT(forcesOf(0), ElementsAre(1.0, 2.0));

    // An edit of several selected spans is one step of its own.
    EXPECT_TRUE(perform("select 1 3 2\nselect 2\nlength selected 5.5\nundo\n"));
    EXPECT_THAT(m_output, HasSubstr("span 2: 8 m, 5 kN/m, 2 point loads\nspan 3: 6 m, 5 kN/m, 0 "
                                    "point loads, selected\n"));
    EXPECT_THAT(m_output, HasSubstr("undone: selected spans: length 5.5\n"));
    EXPECT_EQ(lengthOf(0), 6.0);
    EXPECT_EQ(lengthOf(2), 6.0);
    EXPECT_TRUE(perform("select all\nload selected 3\n"));
    EXPECT_EQ(m_document.span(1).loads.uniform, 3.0);
    EXPECT_FALSE(perform("select none\nload selected 4\n"));
    EXPECT_EQ(m_errors, "line 2: no span is selected\n");

    // A group that the lines leave open is ended with them.
    EXPECT_TRUE(perform("group\nload 1 8\n"));
    EXPECT_TRUE(perform("undo"));
    EXPECT_THAT(m_output, HasSubstr("undone: several edits\n"));
}

TEST_F(GirderEdit, faultsChangeNothing)
{
    struct Case {
        const char *line, *error;
    };
    static const Case cases[] = {
        {"stretch 1 2", "there is no command \"stretch\""},
        {"length 1", "write: length SPAN VALUE"},
        {"length 1 2 3", "write: length SPAN VALUE"},
        {"length 4 2", "there is no span \"4\""},
        {"length 0 2", "there is no span \"0\""},
        {"length 1x 2", "there is no span \"1x\""},
        {"length 99999999999999999999 2", "there is no span \"99999999999999999999\""},
        {"length 1 abc", "\"abc\" is no number"},
        {"length 1 1/0", "\"1/0\" is no number"},
        {"length 1 0", "the length must be greater than 0"},
        {"length 2 3", "span 2 has a point load behind that"},
        {"length 3 4", "the stiffness of span 3 goes beyond that"},
        {"add 2 8.5 1", "the position must lie within span 2"},
        {"remove 2 3", "there is no point load \"3\""},
        {"remove 1 1", "there is no point load \"1\""},
        {"end", "no group is open"},
        {"undo", "nothing to undo"},
        {"redo", "nothing to redo"},
        {"undo all", "write: undo [list], redo [list]"},
        {"save", "cannot be written"},
    };
    m_file = MdToolsTest::workDirectory() + "/no/where";
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_FALSE(perform(c.line));
        EXPECT_THAT(m_errors, HasSubstr(c.error));
        EXPECT_THAT(m_errors, ::testing::StartsWith("line 1: "));
    }
    EXPECT_FALSE(m_document.isModified());
    EXPECT_FALSE(m_document.history().hasCommands());
    EXPECT_FALSE(perform("group\ngroup\nload 1 8\nundo\nend\n"));
    EXPECT_EQ(m_errors, "line 2: a group is open already\n"
                        "line 4: the group must be ended first\n");
}

TEST_F(GirderEdit, savesWhatCanBeReadAgain)
{
    EXPECT_TRUE(perform("length 1 6.25\nsave\nquit\nno command\n"));
    EXPECT_THAT(m_output, HasSubstr("saved: " + m_file + "\n"));
    EXPECT_FALSE(m_document.isModified());
    for (int round = 0; round < 2; ++round) {
        Remarks remarks("saved");
        const Model model = readModel(m_file, remarks);
        EXPECT_THAT(remarks.lines(), IsEmpty());
        EXPECT_EQ(model.title, "Three \"spans\"");
        EXPECT_EQ(model.spans[0].length, 6.25);
        EXPECT_EQ(model.spans[1].loads.points[1].force, 20.0);
        EXPECT_EQ(model.spans[2].stiffness[1].value, 12000.5);
        EXPECT_EQ(model.supports, threeSpans().supports);
        EXPECT_EQ(model.train[1].distance, 1.5);
        EXPECT_TRUE(perform("save\n")); // in place of the old file
        EXPECT_FALSE(Tools::File::exists(m_file + ".new"));
    }
}

TEST_F(GirderEdit, solves)
{
    m_document.setLoad(0, 0.0);
    EXPECT_TRUE(perform("solve\n"));
    EXPECT_THAT(m_output, HasSubstr("Three \"spans\"\n\n  Support"));
    EXPECT_FALSE(perform("load 1 1e308\nsolve\n"));
    EXPECT_THAT(m_errors, HasSubstr("line 2: some number is too large"));
}

}
