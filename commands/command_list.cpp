#include <mdtools/command_list.h>

#include "commands/command_list_state.h"

namespace Tools {

CommandList::CommandList() : m_state(new CommandListState) {}

CommandList::~CommandList()
{
    m_state->abandon();
}

void CommandList::add(Command* command)
{
    add(std::unique_ptr<Command>(command));
}

// What was undone is cut off. It is destroyed once the list is whole again, as a destructor may
// come back to it. Where something was cut off, there is room for the command.
void CommandList::add(std::unique_ptr<Command> command)
{
    std::vector<Command*> undone;
    if (m_state->undoPosition + 1 != m_state->size())
        undone = m_state->cutOff(m_state->undoPosition + 1);
    m_state->commands.push_back(command.get());
    if (Command* const added = command.release())
        ++added->m_entries;
    m_state->undoPosition = m_state->size() - 1;
    m_state->redoPosition = m_state->size();
    if (!undone.empty())
        CommandListState::destroy(std::move(undone));
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

// Not by way of the description: copying it costs more than the step.
bool CommandList::undo()
{
    const CommandListState::Run run(*m_state);
    Command* const command = m_state->stepBack();
    if (command != nullptr)
        command->reverse();
    return command != nullptr;
}

bool CommandList::redo()
{
    const CommandListState::Run run(*m_state);
    Command* const command = m_state->stepForward();
    if (command != nullptr)
        command->activate();
    return command != nullptr;
}

// The description is read after the step: the command may change it.
mdt::Nullable<std::string> CommandList::undoWithDescription()
{
    const CommandListState::Run run(*m_state);
    Command* const command = m_state->stepBack();
    if (command == nullptr)
        return {};
    command->reverse();
    return command->getDescription();
}

mdt::Nullable<std::string> CommandList::redoWithDescription()
{
    const CommandListState::Run run(*m_state);
    Command* const command = m_state->stepForward();
    if (command == nullptr)
        return {};
    command->activate();
    return command->getDescription();
}

// Up to a null entry, where undo and redo end, too.
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
    m_state->clear();
}

void CommandList::removeAll()
{
    reset();
    m_state->handlers.invokeDataChanged(nullptr);
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
