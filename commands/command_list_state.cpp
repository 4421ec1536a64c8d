#include "commands/command_list_state.h"

#include <mdtools/command_list.h>

#include <utility>

namespace Tools {

void CommandListState::clear()
{
    destroy(release());
}

void CommandListState::destroy(const std::vector<Command*>& all)
{
    if (all.empty())
        return;
    if (m_runs == 0) {
        destroyNow(all);
        return;
    }
    m_kept.insert(m_kept.end(), all.begin(), all.end());
    m_hasKept = true;
}

void CommandListState::abandon()
{
    m_isAbandoned = true;
    m_hasKept = true;
    clear();
    if (m_runs == 0)
        finish();
}

void CommandListState::finish()
{
    m_hasKept = false;
    destroyNow(std::exchange(m_kept, {}));
    if (m_isAbandoned)
        delete this;
}

std::vector<Command*> CommandListState::release()
{
    undoPosition = -1;
    redoPosition = 0;
    return std::exchange(commands, {});
}

// Also on an explicit stack: groups in groups are taken apart one by one, so that their depth costs
// no stack.
void CommandListState::destroyNow(std::vector<Command*> all)
{
    while (!all.empty()) {
        Command* const command = all.back();
        all.pop_back();
        if (command == nullptr || --command->m_entries > 0)
            continue;
        if (command->m_mayBeGroup) {
            if (const auto* group = dynamic_cast<GroupCommand*>(command)) {
                CommandListState& state = *group->m_commands->m_state;
                if (state.m_runs == 0) {
                    const std::vector<Command*> inner = state.release();
                    all.insert(all.end(), inner.begin(), inner.end());
                }
            }
        }
        delete command;
    }
}

}
