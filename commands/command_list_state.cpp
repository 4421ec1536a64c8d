#include "commands/command_list_state.h"

#include <mdtools/command_list.h>

#include <typeinfo>
#include <utility>

namespace Tools {

namespace {

// So deep groups of derived classes are destroyed by recursion; what lies deeper is handed over.
constexpr int MaxDepth = 100;

}

void CommandListState::clear()
{
    if (commands.empty())
        return;
    if (m_runs != 0) {
        keep(0);
        release();
    } else {
        destroyNow(release(), 0);
    }
}

// Nothing has changed if there is no memory for it.
std::vector<Command*> CommandListState::cutOff(int begin)
{
    std::vector<Command*> cut;
    if (m_runs != 0)
        keep(begin);
    else
        cut.assign(commands.begin() + begin, commands.end());
    commands.resize(static_cast<std::size_t>(begin));
    return cut;
}

void CommandListState::keep(int begin)
{
    m_kept.insert(m_kept.end(), commands.begin() + begin, commands.end());
    m_hasKept = true;
}

void CommandListState::destroy(std::vector<Command*> cut)
{
    destroyNow(std::move(cut), 0);
}

// A walk under way finds nothing more to run; the commands stay where they are until it has ended,
// as there may be no memory to put them elsewhere.
void CommandListState::abandon() noexcept
{
    m_isAbandoned = true;
    undoPosition = -1;
    redoPosition = size();
    if (m_runs != 0)
        m_hasKept = true;
    else
        finish();
}

// The list lives until its commands have gone.
void CommandListState::abandonGroup(std::unique_ptr<CommandList> list) noexcept
{
    m_list = list.release();
    undoPosition = -1;
    redoPosition = size();
    if (m_runs != 0) {
        m_hasKept = true;
    } else if (m_depth > MaxDepth) {
        empty(*m_emptied);
    } else {
        finish();
    }
}

// Counts as a run as well: what the ends of the commands cut off or abandon waits for the next
// turn.
void CommandListState::finish() noexcept
{
    m_runs = 1;
    do {
        m_hasKept = false;
        if (m_isAbandoned || m_list != nullptr)
            destroyNow(release(), m_depth);
        destroyNow(std::exchange(m_kept, {}), m_depth);
    } while (m_hasKept);
    m_runs = 0;
    if (m_list != nullptr)
        delete std::exchange(m_list, nullptr);
    else if (m_isAbandoned)
        delete this;
}

std::vector<Command*> CommandListState::release() noexcept
{
    undoPosition = -1;
    redoPosition = 0;
    return std::exchange(commands, {});
}

// A walk over the tree of groups whose stack is made of the inner lists themselves, linked by
// m_outer, so that neither the depth of the tree costs stack nor its destruction memory. A group's
// commands go before its list, and before the group where its own destructor is all there is. A
// derived class finds them still there in its destructor.
void CommandListState::destroyNow(std::vector<Command*> all, int depth) noexcept
{
    CommandListState* emptied = nullptr;
    for (;;) {
        std::vector<Command*>& left = emptied != nullptr ? emptied->m_kept : all;
        if (left.empty()) {
            if (emptied == nullptr)
                return;
            CommandListState* const outer = emptied->m_outer;
            emptied->endEmptied();
            emptied = outer;
            continue;
        }
        Command* const command = left.back();
        left.pop_back();
        if (command == nullptr || --command->m_entries > 0)
            continue;
        if (!command->m_isGroup || !enter(static_cast<GroupCommand&>(*command), emptied, depth))
            delete command;
    }
}

// True if the group's commands are to be deleted first; else the group is to be deleted.
bool CommandListState::enter(GroupCommand& group, CommandListState*& emptied, int depth) noexcept
{
    CommandListState& state = *group.m_commands->m_state;
    if (state.m_runs != 0)
        return false;
    if (typeid(group) != typeid(GroupCommand)) {
        state.m_emptied = &emptied;
        state.m_depth = depth + 1;
        return false;
    }
    state.m_group = &group;
    state.empty(emptied);
    return true;
}

// Counts as a run until all of them have gone.
void CommandListState::empty(CommandListState*& emptied) noexcept
{
    m_runs = 1;
    m_kept = release();
    m_outer = std::exchange(emptied, this);
}

// The group's, or the list's, end is that of this object, too.
void CommandListState::endEmptied() noexcept
{
    m_runs = 0;
    if (m_group == nullptr) {
        delete std::exchange(m_list, nullptr);
        return;
    }
    delete m_group;
}

}
