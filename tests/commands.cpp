#include <mdtools/command.h>
#include <mdtools/command_list.h>
#include <mdtools/data_changed.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Tools;

// What commands, handlers and observers did, a word each.
std::string log;

std::string takeLog()
{
    return std::exchange(log, std::string());
}

// Writes "+name" when done, "-name" when undone and "~name" at its end.
class Edit : public Command {
public:
    explicit Edit(const std::string& name, bool reversible = true) : Command(name, reversible) {}
    ~Edit() override { log += "~" + getDescription(); }
    void activate() override { run("+"); }
    void reverse() override { run("-"); }

    std::function<void()> whenRun;

private:
    void run(const std::string& sign)
    {
        log += sign + getDescription();
        if (whenRun)
            whenRun();
    }
};

Edit* newEdit(const std::string& name, bool reversible = true)
{
    return new Edit(name, reversible);
}

std::string join(const std::vector<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts)
        all += text + ",";
    return all;
}

class Commands : public ::testing::Test {
protected:
    Commands() { takeLog(); }
};

TEST_F(Commands, undoAndRedo)
{
    CommandList list;
    EXPECT_TRUE(list.isUndoBufferEmpty());
    EXPECT_TRUE(list.isRedoBufferEmpty());
    EXPECT_FALSE(list.undo());
    EXPECT_FALSE(list.redo());
    EXPECT_FALSE(list.hasCommands());

    list.add(newEdit("A"));
    list.add(std::make_unique<Edit>("B"));
    newEdit("C")->enableUndoRedo(&list);
    EXPECT_EQ(takeLog(), ""); // nothing is done again
    EXPECT_EQ(list.getNumberOfCommands(), 3);
    EXPECT_EQ(join(list.getUndoDescriptions()), "C,B,A,");
    EXPECT_EQ(list.undoWithDescription().getValue(), "C");
    EXPECT_EQ(list.undoWithDescription().getValue(), "B");
    EXPECT_EQ(takeLog(), "-C-B");
    EXPECT_EQ(join(list.getUndoDescriptions()), "A,");
    EXPECT_EQ(join(list.getRedoDescriptions()), "B,C,");
    EXPECT_EQ(list.redoWithDescription().getValue(), "B");
    EXPECT_TRUE(list.undo());
    EXPECT_EQ(takeLog(), "+B-B");

    list.add(newEdit("D")); // what could be redone is gone
    EXPECT_EQ(takeLog(), "~C~B");
    EXPECT_EQ(list.getNumberOfCommands(), 2);
    EXPECT_FALSE(list.redo());
    EXPECT_TRUE(list.undo());
    EXPECT_TRUE(list.undo());
    EXPECT_FALSE(list.undo());
    EXPECT_EQ(takeLog(), "-D-A");
    EXPECT_TRUE(list.isUndoBufferEmpty());
    EXPECT_FALSE(list.isRedoBufferEmpty());
    list.reset();
    EXPECT_EQ(takeLog().size(), 4U);
    EXPECT_TRUE(list.isRedoBufferEmpty());
}

TEST_F(Commands, irreversibleOnesAreSteppedOver)
{
    CommandList list;
    list.add(newEdit("A"));
    list.add(newEdit("B", false));
    EXPECT_EQ(join(list.getUndoDescriptions()), "A,");
    EXPECT_EQ(list.undoWithDescription().getValue(), "A");
    EXPECT_EQ(join(list.getRedoDescriptions()), "A,");
    EXPECT_EQ(list.redoWithDescription().getValue(), "A");
    EXPECT_FALSE(list.isRedoBufferEmpty());
    EXPECT_FALSE(list.redo()); // moves past B
    EXPECT_TRUE(list.isRedoBufferEmpty());
    EXPECT_EQ(takeLog(), "-A+A");
    // One that becomes reversible later takes part from then on.
    Edit* const late = newEdit("L", false);
    list.add(late);
    late->setReversible(true);
    late->setDescription("late");
    EXPECT_EQ(list.undoWithDescription().getValue(), "late");
}

TEST_F(Commands, aNullEntryEndsTheWay)
{
    CommandList list;
    list.add(newEdit("A"));
    list.add(static_cast<Command*>(nullptr));
    list.add(newEdit("B"));
    EXPECT_EQ(join(list.getUndoDescriptions()), "B,");
    EXPECT_TRUE(list.undo());
    EXPECT_FALSE(list.undo()); // past the null entry
    EXPECT_TRUE(list.undo());
    EXPECT_EQ(join(list.getRedoDescriptions()), "A,");
    EXPECT_EQ(takeLog(), "-B-A");
}

TEST_F(Commands, ownershipOnEveryPath)
{
    {
        CommandList list;
        list.add(newEdit("A"));
        list.add(newEdit("B"));
        list.undo();
        takeLog();
    }
    EXPECT_EQ(takeLog().size(), 4U); // both, the undone one too

    {
        // One that was carried out twice, cut off once; a copy of it counts for itself.
        CommandList list;
        Edit* const twice = newEdit("A");
        list.add(twice);
        list.add(new Edit(*twice));
        list.add(twice);
        list.undo();
        list.add(newEdit("B"));
        EXPECT_EQ(takeLog(), "-A");
        list.add(twice);
    }
    EXPECT_EQ(takeLog(), "~B~A~A");

    Edit kept("kept");
    kept.enableUndoRedo(nullptr);
    EXPECT_EQ(takeLog(), "");

    CommandList list;
    Edit* const failing = newEdit("F");
    failing->whenRun = [] { throw std::runtime_error("failed"); };
    list.add(failing);
    EXPECT_THROW(list.undo(), std::runtime_error);
    EXPECT_TRUE(list.isUndoBufferEmpty()); // it counts as undone
    EXPECT_THROW(list.redo(), std::runtime_error);
    EXPECT_FALSE(list.isUndoBufferEmpty());
    takeLog();

    // A command that is cut off while it runs lives until it has returned.
    Edit* const self = newEdit("S");
    self->whenRun = [&] { list.add(newEdit("N")); };
    list.add(self);
    EXPECT_EQ(list.undoWithDescription().getValue(), "S");
    EXPECT_EQ(takeLog(), "-S~S");
    EXPECT_EQ(join(list.getUndoDescriptions()), "N,F,");
    for (const bool redone : {false, true}) {
        auto dying = std::make_unique<CommandList>();
        Edit* const last = newEdit("L");
        dying->add(last);
        if (redone)
            dying->undo();
        takeLog();
        last->whenRun = [&] { dying.reset(); };
        EXPECT_TRUE(redone ? dying->redo() : dying->undo());
        EXPECT_EQ(takeLog(), redone ? "+L~L" : "-L~L");
    }
}

// What is cut off while the list runs goes when the list's own outermost step is over: neither
// earlier, nor with the step of another list.
TEST_F(Commands, cutOffCommandsLiveAsLongAsTheListRuns)
{
    CommandList outer;
    CommandList inner;
    Edit* const step = newEdit("I");
    step->whenRun = [&] {
        inner.removeAll();
        log += ".";
    };
    inner.add(newEdit("J"));
    inner.add(step);
    Edit* const all = newEdit("O");
    all->whenRun = [&] {
        inner.undo();
        outer.reset();
        outer.undo();
        log += "!";
    };
    outer.add(all);
    outer.undo();
    EXPECT_EQ(takeLog(), "-O-I.~I~J!~O");
}

TEST_F(Commands, handlersHearOfNewAndLostCommands)
{
    int calls = 0;
    DataChangedFunction handler([&](const DataChangedArgument* argument) {
        EXPECT_EQ(argument, nullptr);
        ++calls;
    });
    CommandList list;
    list.addDataChangedHandler(&handler);
    list.add(newEdit("A"));
    EXPECT_EQ(calls, 1);
    list.undo();
    list.redo();
    list.addGroup(std::make_unique<GroupCommand>());
    list.reset();
    EXPECT_EQ(calls, 1);
    list.removeAll();
    EXPECT_EQ(calls, 2);
    list.removeDataChangedHandler(&handler);
    list.removeAll();
    EXPECT_EQ(calls, 2);

    // They find the list as it is afterwards, with nothing left of what it lost.
    DataChangedFunction witness([&](const DataChangedArgument*) {
        log += "(" + std::to_string(list.getNumberOfCommands()) + join(list.getRedoDescriptions()) +
               ")";
    });
    list.add(newEdit("A"));
    list.add(newEdit("B"));
    list.undo();
    list.addDataChangedHandler(&witness);
    takeLog();
    list.add(newEdit("C"));
    EXPECT_EQ(takeLog(), "~B(2)");
    list.removeAll();
    EXPECT_EQ(takeLog(), "~C~A(0)");
    list.removeDataChangedHandler(&witness);

    DataChangedFunction thrower(
        [](const DataChangedArgument*) { throw std::runtime_error("heard"); });
    list.addDataChangedHandler(&thrower);
    EXPECT_THROW(list.add(newEdit("A")), std::runtime_error);
    EXPECT_EQ(list.getNumberOfCommands(), 1); // recorded all the same
    list.removeDataChangedHandler(&thrower);
}

TEST_F(Commands, functionPairs)
{
    FunctionCommand command([] { log += "x"; }, [] { log += "X"; });
    EXPECT_TRUE(command.isReversible());
    EXPECT_EQ(command.getDescription(), "");
    command.addSetter([] { log += "y"; }, [] { log += "Y"; });
    command.activate();
    command.reverse();
    EXPECT_EQ(takeLog(), "xyXY"); // not backwards
    command.addSetter([] { log += "z"; }, nullptr);
    command.activate();
    EXPECT_THROW(command.reverse(), std::bad_function_call);
    EXPECT_EQ(takeLog(), "xyzXY");
    // A function that is moved while it runs would lose its name.
    FunctionCommand growing;
    const auto grow = [&growing, name = std::string(50, 'g')] {
        for (int i = 0; i < 100; ++i)
            growing.addSetter([] { log += "n"; }, nullptr);
        log += name[0];
    };
    growing.addSetter(grow, [] {});
    growing.activate();
    EXPECT_EQ(takeLog(), "g");
    growing.activate();
    EXPECT_EQ(takeLog(), "g" + std::string(100, 'n'));
    FunctionCommand empty;
    empty.activate();
    empty.reverse();
}

TEST_F(Commands, groupsAreOneStep)
{
    CommandList list;
    list.addGroup(new GroupCommand);
    list.addGroup(static_cast<GroupCommand*>(nullptr));
    EXPECT_FALSE(list.hasCommands());

    auto* const group = new GroupCommand;
    group->setDescription("both");
    newEdit("A")->enableUndoRedo(group->getCommandList());
    auto* const inner = new GroupCommand;
    newEdit("B")->enableUndoRedo(inner->getCommandList());
    newEdit("I", false)->enableUndoRedo(inner->getCommandList());
    newEdit("C")->enableUndoRedo(inner->getCommandList());
    group->getCommandList()->addGroup(inner);
    list.addGroup(group);
    EXPECT_EQ(list.getNumberOfCommands(), 1);
    EXPECT_EQ(list.undoWithDescription().getValue(), "both");
    EXPECT_EQ(takeLog(), "-C-B-A");
    EXPECT_TRUE(list.redo());
    EXPECT_EQ(takeLog(), "+A+B+C");
    list.reset();
    EXPECT_EQ(takeLog().size(), 8U);
}

// Does more than a group, and tells how many commands it finds at its end.
class Macro : public GroupCommand {
public:
    ~Macro() override { log += "~" + std::to_string(getCommandList()->getNumberOfCommands()); }
    void activate() override
    {
        log += "<";
        GroupCommand::activate();
        log += ">";
    }
    void reverse() override
    {
        log += ">";
        GroupCommand::reverse();
        log += "<";
    }
};

// Takes itself off the list that it was added to, and counts what is left there.
class Listener : public Edit, public DataChangedHandler {
public:
    Listener(const std::string& name, GroupCommand& group)
        : Edit(name), m_list(*group.getCommandList())
    {
        m_list.addDataChangedHandler(this);
    }
    ~Listener() override
    {
        m_list.removeDataChangedHandler(this);
        log += "~" + std::to_string(m_list.getNumberOfCommands());
    }
    void dataChanged(const DataChangedArgument*) override {}

private:
    CommandList& m_list;
};

template <class Group>
std::unique_ptr<GroupCommand> makeListeners()
{
    std::unique_ptr<GroupCommand> group = std::make_unique<Group>();
    for (const char* name : {"A", "B"})
        group->getCommandList()->add(std::make_unique<Listener>(name, *group));
    return group;
}

// Groups of derived classes are called, also within groups; whoever deletes them, they find their
// commands, and these find the list.
TEST_F(Commands, groupsOfDerivedClasses)
{
    auto group = std::make_unique<GroupCommand>();
    auto macro = makeListeners<Macro>();
    auto innermost = std::make_unique<GroupCommand>();
    innermost->getCommandList()->addGroup(makeListeners<Macro>());
    macro->getCommandList()->addGroup(std::move(innermost));
    group->getCommandList()->addGroup(std::move(macro));
    CommandList list;
    list.addGroup(std::move(group));
    EXPECT_TRUE(list.undo());
    EXPECT_EQ(takeLog(), ">>-B-A<-B-A<");
    EXPECT_TRUE(list.redo());
    EXPECT_EQ(takeLog(), "<+A+B<+A+B>>");
    list.reset();
    EXPECT_EQ(takeLog(), "~3~2~0~B~0~A~0~B~0~A");

    for (const bool isDerived : {false, true}) {
        for (const char* by : {"caller", "list", "group", "list that runs"}) {
            SCOPED_TRACE(by);
            auto listeners = isDerived ? makeListeners<Macro>() : makeListeners<GroupCommand>();
            CommandList owner;
            if (by == std::string("group")) {
                auto outer = std::make_unique<GroupCommand>();
                outer->getCommandList()->addGroup(std::move(listeners));
                owner.addGroup(std::move(outer));
            } else if (by != std::string("caller")) {
                owner.addGroup(std::move(listeners));
            }
            if (by == std::string("list that runs")) {
                auto* const last = newEdit("");
                last->whenRun = [&] { owner.reset(); };
                owner.add(last);
                owner.undo();
            }
            listeners.reset();
            owner.reset();
            const std::string told = takeLog();
            EXPECT_THAT(told, ::testing::HasSubstr(isDerived ? "~2~0~B~0~A" : "~0~B~0~A"));
        }
    }
}

// Groups a million deep, and as many commands side by side, cost no stack.
TEST_F(Commands, depthAndLength)
{
    constexpr int Count = 1000000;
    int value = 0;
    CommandList list;
    auto innermost = std::make_unique<GroupCommand>();
    innermost->getCommandList()->add(new FunctionCommand([&] { ++value; }, [&] { --value; }));
    for (int i = 0; i < Count; ++i) {
        auto outer = std::make_unique<GroupCommand>();
        outer->getCommandList()->addGroup(std::move(innermost));
        innermost = std::move(outer);
    }
    list.addGroup(std::move(innermost));
    EXPECT_TRUE(list.undo());
    EXPECT_EQ(value, -1);
    EXPECT_TRUE(list.redo());
    EXPECT_EQ(value, 0);
    list.reset();

    for (int i = 0; i < Count; ++i)
        list.add(new FunctionCommand([&] { ++value; }, [&] { --value; }));
    while (list.undo()) {
    }
    EXPECT_EQ(value, -Count);
    while (list.redo()) {
    }
    EXPECT_EQ(value, 0);
}

// The end of a command comes back to its list: brings another one, runs it, cuts it off, or ends
// the list.
TEST_F(Commands, endsThatComeBack)
{
    struct Guard {
        std::function<void()> whenGone;
        ~Guard() { whenGone(); }
    };
    for (const bool inGroup : {false, true}) {
        for (const bool whileRunning : {false, true}) {
            SCOPED_TRACE(testing::Message() << inGroup << whileRunning);
            auto owner = std::make_unique<CommandList>();
            auto group = std::make_unique<GroupCommand>();
            CommandList& list = inGroup ? *group->getCommandList() : *owner;
            auto guard = std::make_shared<Guard>();
            guard->whenGone = [&list] {
                log += ".";
                Edit* const late = newEdit("N");
                late->whenRun = [&list] { list.reset(); };
                list.add(late);
                list.undo();
            };
            list.add(std::make_unique<FunctionCommand>([guard] {}, [] {}));
            guard.reset();
            list.add(newEdit("A"));
            if (inGroup)
                owner->addGroup(std::move(group));
            Edit* const last = newEdit("L");
            if (whileRunning)
                last->whenRun = [&owner] { owner->reset(); };
            owner->add(last);
            owner->undo();
            owner.reset();
            EXPECT_EQ(takeLog(), "-L~L~A.-N~N");
        }
    }
    auto owner = std::make_unique<CommandList>();
    auto guard = std::make_shared<Guard>();
    guard->whenGone = [&owner] { owner.reset(); };
    owner->add(std::make_unique<FunctionCommand>([guard] {}, [] {}));
    guard.reset();
    Edit* const last = newEdit("L");
    last->whenRun = [&owner] { owner->reset(); };
    owner->add(last);
    EXPECT_TRUE(owner->undo());
    EXPECT_EQ(owner, nullptr);
    EXPECT_EQ(takeLog(), "-L~L");
}

}
