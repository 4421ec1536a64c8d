#pragma once

#include <mdtools/command.h>
#include <mdtools/data_changed.h>

#include <memory>
#include <vector>

namespace Tools {

// What a CommandList is made of. It outlives its list while a command of it runs: deferred
// destruction, as a command may cut itself off, or destroy the list that runs it. A command counts
// the entries that hold it (Command::m_entries), over all lists, and is deleted with the last one.
//
// The entries are one sequence with a cut: those up to undoPosition are done, those from
// redoPosition on are undone. Both move by one entry at a time, so redoPosition is undoPosition
// + 1.
class CommandListState {
public:
    // While one of these lives, a command may be running, and none is deleted. They end in the
    // opposite order of their beginnings.
    class Run {
    public:
        explicit Run(CommandListState& state) : m_state(&state), m_previous(state.m_runs)
        {
            state.m_runs = m_previous + 1;
        }
        Run(Run&& other) noexcept : m_state(other.m_state), m_previous(other.m_previous)
        {
            other.m_state = nullptr;
        }
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;
        Run& operator=(Run&&) = delete;
        ~Run()
        {
            if (m_state == nullptr)
                return;
            // Put back, not counted down: a step must not wait for the count in memory twice.
            m_state->m_runs = m_previous;
            if (m_previous == 0 && m_state->m_hasKept)
                m_state->finish();
        }

        CommandListState& state() const { return *m_state; }

    private:
        CommandListState* m_state;
        int m_previous;
    };

    // Where the next undo and the next redo start.
    int undoPosition = -1;
    int redoPosition = 0;
    std::vector<Command*> commands;
    DataChangedManager handlers;

    int size() const { return static_cast<int>(commands.size()); }
    Command* at(int index) const { return commands[static_cast<std::size_t>(index)]; }

    // Move the position as undo and redo do; return the command to run, or null.
    Command* stepBack()
    {
        while (undoPosition >= 0) {
            redoPosition = undoPosition--;
            Command* const command = at(redoPosition);
            if (command == nullptr || command->m_reversible)
                return command;
        }
        return nullptr;
    }

    Command* stepForward()
    {
        while (redoPosition < size()) {
            undoPosition = redoPosition++;
            Command* const command = at(undoPosition);
            if (command == nullptr || command->m_reversible)
                return command;
        }
        return nullptr;
    }

    // Takes all commands out and deletes them, now or when nothing runs any more.
    void clear();
    // Takes the commands from `begin` on out. The caller destroys what comes back, when the list is
    // whole again; while something runs that is nothing, because they are kept here.
    std::vector<Command*> cutOff(int begin);
    static void destroy(std::vector<Command*> cut);
    // The list is gone: deletes everything, itself included, now or when nothing runs any more.
    void abandon() noexcept;
    // The group is gone: likewise, and with the list.
    void abandonGroup(std::unique_ptr<CommandList> list) noexcept;

private:
    ~CommandListState() = default;
    void keep(int begin);
    void finish() noexcept;
    std::vector<Command*> release() noexcept;
    static void destroyNow(std::vector<Command*> all, int depth) noexcept;
    static bool enter(GroupCommand& group, CommandListState*& emptied, int depth) noexcept;
    void empty(CommandListState*& emptied) noexcept;
    void endEmptied() noexcept;

    int m_runs = 0;
    // There is something to do when nothing runs any more.
    bool m_hasKept = false;
    bool m_isAbandoned = false;
    // Taken out of the list and to be deleted.
    std::vector<Command*> m_kept;

    // While a group's list is emptied: the group that is deleted next, or the list that has lost
    // its group, and the list that is emptied after this one.
    GroupCommand* m_group = nullptr;
    CommandList* m_list = nullptr;
    CommandListState* m_outer = nullptr;
    // While a group of a derived class is deleted by a list: to whom to hand this over, and how
    // many such destructors are under way.
    CommandListState** m_emptied = nullptr;
    int m_depth = 0;
};

}
