// The end of trees and lists needs no memory: it comes when there is none left, too.
#include "support/allocations.h"

#include <mdtools/command.h>
#include <mdtools/command_list.h>
#include <mdtools/data_changed.h>
#include <mdtools/smart_record.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

namespace {

using namespace Tools;
using MdToolsTest::isOutOfMemory;

// Ends the object while there is no memory; a destructor that asks for some ends the program.
template <class T>
void endWithoutMemory(std::optional<T>& object)
{
    isOutOfMemory = true;
    object.reset();
    isOutOfMemory = false;
}

// False where the run-time library takes memory for texts by operators of its own.
bool areTextsCounted()
{
    const std::size_t before = MdToolsTest::liveCount;
    std::size_t within = before;
    {
        std::ostringstream stream;
        stream << std::string(100, 'x');
        const std::string text = stream.str() + std::string(200, 'y');
        within = MdToolsTest::liveCount;
    }
    return within > before && MdToolsTest::liveCount == before;
}

Smart::Record makeLevel(Smart::Record inner, bool inSequence)
{
    Smart::Record outer;
    outer.setText("text", "a text of more than a few bytes");
    if (inSequence) {
        Smart::Sequence sequence;
        sequence.push_back(std::move(inner));
        sequence.push_back(Smart::Record().setReal("x", 0.5));
        outer.setSequence("inner", std::move(sequence));
    } else {
        outer.setRecord("inner", std::move(inner));
    }
    return outer;
}

std::string textOf(const Smart::Record& record)
{
    std::ostringstream stream;
    record.writeTo(stream, 0, "");
    return stream.str();
}

TEST(Destruction, ofRecords)
{
    struct Case {
        int depth;
        int width;
        bool inSequences;
    };
    static const Case cases[] = {
        {30, 1, false},    {41, 1, false},     {43, 3, true},     {200000, 1, false},
        {200000, 1, true}, {100, 3000, false}, {100, 3000, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.depth << " deep, " << c.width << " wide");
        const std::size_t before = MdToolsTest::liveCount;
        std::optional<Smart::Record> root(std::in_place);
        Smart::Sequence trees;
        for (int i = 0; i < c.width; ++i) {
            Smart::Record tree;
            for (int depth = 0; depth < c.depth; ++depth)
                tree = makeLevel(std::move(tree), c.inSequences);
            trees.push_back(std::move(tree));
        }
        root->setSequence("trees", std::move(trees));
        std::optional<Smart::Record> copy(std::in_place);
        if (c.width < 10)
            *copy = *root;
        if (c.depth < 100 && c.width < 10) {
            EXPECT_EQ(textOf(*copy), textOf(*root));
        }
        endWithoutMemory(root);
        endWithoutMemory(copy);
        if (areTextsCounted()) {
            EXPECT_EQ(MdToolsTest::liveCount, before);
        }
    }
}

// What a record does not hold any more is gone at once.
TEST(Destruction, ofValues)
{
    if (!areTextsCounted())
        GTEST_SKIP() << "What texts take cannot be counted here.";
    const Smart::Record inner = makeLevel(makeLevel(Smart::Record(), true), false);
    const std::string text(100, 't');
    Smart::Sequence sequence;
    sequence.push_back(inner);
    using Set = std::function<void(Smart::Record&)>;
    const Set sets[] = {
        [&](Smart::Record& record) { record.setText("v", text); },
        [&](Smart::Record& record) { record.setRecord("v", inner); },
        [&](Smart::Record& record) { record.setSequence("v", sequence); },
        [](Smart::Record& record) { record.setReal("v", 0.5); },
        [](Smart::Record& record) { record.setDecimal("v", 7); },
    };
    const std::size_t before = MdToolsTest::liveCount;
    for (const Set& first : sets) {
        for (const Set& second : sets) {
            Smart::Record record;
            record.setText("other", text);
            first(record);
            second(record);
            record.erase("v");
            EXPECT_EQ(record.getText("other"), text);
        }
    }
    EXPECT_EQ(MdToolsTest::liveCount, before);
}

int alive = 0;

class Edit : public ReversibleCommand {
public:
    Edit() : ReversibleCommand("edit") { ++alive; }
    ~Edit() override { --alive; }
    void activate() override {}
    void reverse() override {}
};

class DerivedGroup : public GroupCommand {
public:
    DerivedGroup() { ++alive; }
    ~DerivedGroup() override { --alive; }
};

template <class Group>
std::unique_ptr<GroupCommand> makeGroups(int depth)
{
    std::unique_ptr<GroupCommand> innermost = std::make_unique<Group>();
    innermost->getCommandList()->add(std::make_unique<Edit>());
    for (int i = 1; i < depth; ++i) {
        std::unique_ptr<GroupCommand> outer = std::make_unique<Group>();
        outer->getCommandList()->add(std::make_unique<Edit>());
        outer->getCommandList()->addGroup(std::move(innermost));
        outer->getCommandList()->add(std::make_unique<Edit>());
        innermost = std::move(outer);
    }
    return innermost;
}

TEST(Destruction, ofGroupsAndLists)
{
    for (const int depth : {1, 99, 102, 100000}) {
        SCOPED_TRACE(depth);
        std::optional<CommandList> list(std::in_place);
        list->addGroup(makeGroups<GroupCommand>(depth));
        list->addGroup(makeGroups<DerivedGroup>(depth));
        list->addGroup(makeGroups<GroupCommand>(depth));
        endWithoutMemory(list);
        EXPECT_EQ(alive, 0);
        // Not in a list.
        std::optional<std::unique_ptr<GroupCommand>> group(makeGroups<DerivedGroup>(depth));
        endWithoutMemory(group);
        EXPECT_EQ(alive, 0);
    }
    std::optional<CommandList> wide(std::in_place);
    for (int i = 0; i < 100000; ++i)
        wide->add(std::make_unique<Edit>());
    wide->undo();
    endWithoutMemory(wide);
    EXPECT_EQ(alive, 0);
}

// Also while a command of the list runs, when everything has to stay until that has returned.
TEST(Destruction, ofAListThatRuns)
{
    std::optional<CommandList> list(std::in_place);
    bool lived = false;
    auto group = std::make_unique<GroupCommand>();
    group->getCommandList()->add(std::make_unique<Edit>());
    group->getCommandList()->add(std::make_unique<FunctionCommand>([] {},
                                                                   [&] {
                                                                       endWithoutMemory(list);
                                                                       lived = alive == 2;
                                                                   }));
    list->add(std::make_unique<Edit>());
    list->addGroup(std::move(group));
    EXPECT_TRUE(list->undo());
    EXPECT_TRUE(lived);
    EXPECT_EQ(alive, 0);
}

// A list that cannot grow stays what it was.
TEST(Destruction, ofWhatCannotBeAdded)
{
    CommandList list;
    for (int i = 0; i < 16; ++i)
        list.add(std::make_unique<Edit>());
    while (list.undo()) {
    }
    list.redo();
    auto late = std::make_unique<Edit>();
    isOutOfMemory = true;
    EXPECT_THROW(list.add(std::move(late)), std::bad_alloc);
    isOutOfMemory = false;
    EXPECT_EQ(list.getNumberOfCommands(), 16);
    EXPECT_TRUE(list.redo());
    list.reset();
    EXPECT_EQ(alive, 0);
}

}
