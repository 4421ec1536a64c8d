#include <mdtools/command_list.h>

#include "commands/command_run.h"

#include <utility>

namespace Tools {

struct CommandList::State {
    // Where the next undo and the next redo start.
    int undoPosition = -1;
    int redoPosition = 0;
    std::vector<Command*> commands;
    DataChangedManager handlers;

    int size() const { return static_cast<int>(commands.size()); }
    Command* at(int index) const { return commands[static_cast<std::size_t>(index)]; }
};

CommandList::CommandList() : m_state(std::make_unique<State>()) {}

CommandList::~CommandList()
{
    reset();
}

void CommandList::add(Command* command)
{
    add(std::unique_ptr<Command>(command));
}

void CommandList::add(std::unique_ptr<Command> command)
{
    std::vector<Command*>& commands = m_state->commands;
    const auto kept = commands.begin() + (m_state->undoPosition + 1);
    const std::vector<Command*> undone(kept, commands.end());
    commands.erase(kept, commands.end());
    commands.push_back(command.get());
    command.release();
    m_state->undoPosition = m_state->size() - 1;
    m_state->redoPosition = m_state->size();
    CommandRun::destroy(undone);
    m_state->handlers.invokeDataChanged(nullptr);
}

void CommandList::addGroup(GroupCommand* group)
{
    addGroup(std::unique_ptr<GroupCommand>(group));
}

void CommandList::addGroup(std::unique_ptr<GroupCommand> group)
{
    if (group != nullptr && group->hasCommands())
        add(std::move(group));
}

bool CommandList::undo()
{
    return undoWithDescription().hasValue();
}

bool CommandList::redo()
{
    return redoWithDescription().hasValue();
}

mdt::Nullable<std::string> CommandList::undoWithDescription()
{
    const CommandRun scope;
    Command* const command = stepBack();
    if (command == nullptr)
        return {};
    command->reverse();
    return command->getDescription();
}

mdt::Nullable<std::string> CommandList::redoWithDescription()
{
    const CommandRun scope;
    Command* const command = stepForward();
    if (command == nullptr)
        return {};
    command->activate();
    return command->getDescription();
}

Command* CommandList::stepBack()
{
    while (m_state->undoPosition >= 0) {
        m_state->redoPosition = m_state->undoPosition--;
        Command* const command = m_state->at(m_state->redoPosition);
        if (command == nullptr || command->isReversible())
            return command;
    }
    return nullptr;
}

Command* CommandList::stepForward()
{
    while (m_state->redoPosition < m_state->size()) {
        m_state->undoPosition = m_state->redoPosition++;
        Command* const command = m_state->at(m_state->undoPosition);
        if (command == nullptr || command->isReversible())
            return command;
    }
    return nullptr;
}

std::vector<std::string> CommandList::getUndoDescriptions() const
{
    std::vector<std::string> descriptions;
    for (int i = m_state->undoPosition; i >= 0 && m_state->at(i) != nullptr; --i) {
        if (m_state->at(i)->isReversible())
            descriptions.push_back(m_state->at(i)->getDescription());
    }
    return descriptions;
}

std::vector<std::string> CommandList::getRedoDescriptions() const
{
    std::vector<std::string> descriptions;
    const int size = m_state->size();
    for (int i = m_state->redoPosition; i < size && m_state->at(i) != nullptr; ++i) {
        if (m_state->at(i)->isReversible())
            descriptions.push_back(m_state->at(i)->getDescription());
    }
    return descriptions;
}

bool CommandList::isUndoBufferEmpty() const
{
    return m_state->undoPosition == -1;
}

bool CommandList::isRedoBufferEmpty() const
{
    return m_state->redoPosition == m_state->size();
}

bool CommandList::hasCommands() const
{
    return !m_state->commands.empty();
}

int CommandList::getNumberOfCommands() const
{
    return m_state->size();
}

void CommandList::reset()
{
    CommandRun::destroy(release());
}

void CommandList::removeAll()
{
    reset();
    m_state->handlers.invokeDataChanged(nullptr);
}

std::vector<Command*> CommandList::release()
{
    m_state->undoPosition = -1;
    m_state->redoPosition = 0;
    return std::exchange(m_state->commands, {});
}

void CommandList::addDataChangedHandler(DataChangedHandler* handler)
{
    m_state->handlers.addDataChangedHandler(handler);
}

void CommandList::removeDataChangedHandler(DataChangedHandler* handler)
{
    m_state->handlers.removeDataChangedHandler(handler);
}

}
