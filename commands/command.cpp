#include <mdtools/command.h>

#include <mdtools/command_list.h>

#include "commands/command_list_state.h"

#include <typeinfo>

namespace Tools {

Command::Command(const std::string& description, bool reversible)
    : m_reversible(reversible), m_description(description)
{}

Command::Command(bool reversible) : m_reversible(reversible) {}

// The number of entries belongs to the object: a copy has none yet.
Command::Command(const Command& other)
    : m_reversible(other.m_reversible), m_description(other.m_description)
{}

Command& Command::operator=(const Command& other)
{
    m_reversible = other.m_reversible;
    m_description = other.m_description;
    return *this;
}

Command::~Command() = default;

const std::string& Command::getDescription() const
{
    return m_description;
}

void Command::setDescription(const std::string& description)
{
    m_description = description;
}

bool Command::isReversible() const
{
    return m_reversible;
}

void Command::setReversible(bool reversible)
{
    m_reversible = reversible;
}

void Command::enableUndoRedo(CommandList* list)
{
    if (list != nullptr)
        list->add(this);
}

ReversibleCommand::ReversibleCommand(const std::string& description) : Command(description, true) {}
ReversibleCommand::ReversibleCommand() : Command(true) {}
ReversibleCommand::~ReversibleCommand() = default;

FunctionCommand::FunctionCommand() : Command(true) {}

FunctionCommand::FunctionCommand(std::function<void()> doFunction,
                                 std::function<void()> undoFunction)
    : Command(true)
{
    addSetter(std::move(doFunction), std::move(undoFunction));
}

FunctionCommand::~FunctionCommand() = default;

void FunctionCommand::addSetter(std::function<void()> doFunction,
                                std::function<void()> undoFunction)
{
    m_setters.emplace_back(std::move(doFunction), std::move(undoFunction));
}

void FunctionCommand::activate()
{
    callAll(&Setter::first);
}

void FunctionCommand::reverse()
{
    callAll(&Setter::second);
}

// As many as there are at the beginning: one that is added meanwhile waits for the next call.
void FunctionCommand::callAll(std::function<void()> Setter::*function)
{
    auto setter = m_setters.begin();
    for (std::size_t left = m_setters.size(); left > 0; --left, ++setter)
        (*setter.*function)();
}

GroupCommand::GroupCommand() : Command(true), m_commands(std::make_unique<CommandList>())
{
    m_isGroup = true;
}

GroupCommand::~GroupCommand()
{
    CommandListState& state = *m_commands->m_state;
    state.abandonGroup(std::move(m_commands));
}

CommandList* GroupCommand::getCommandList() const
{
    return m_commands.get();
}

bool GroupCommand::hasCommands() const
{
    return m_commands->hasCommands();
}

void GroupCommand::activate()
{
    runAll(Direction::Forward);
}

void GroupCommand::reverse()
{
    runAll(Direction::Back);
}

// A walk over the tree of groups on an explicit stack; each entry is a Run, which keeps its list
// alive. Inner groups are entered here instead of being called, so that their depth costs no stack.
// Those of a derived class are called: they may do more.
void GroupCommand::runAll(Direction direction)
{
    const bool back = direction == Direction::Back;
    std::vector<CommandListState::Run> runs;
    runs.emplace_back(*m_commands->m_state);
    while (!runs.empty()) {
        CommandListState& state = runs.back().state();
        Command* const command = back ? state.stepBack() : state.stepForward();
        if (command == nullptr)
            runs.pop_back();
        else if (command->m_isGroup && typeid(*command) == typeid(GroupCommand))
            runs.emplace_back(*static_cast<GroupCommand*>(command)->m_commands->m_state);
        else if (back)
            command->reverse();
        else
            command->activate();
    }
}

}
