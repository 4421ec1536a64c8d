#pragma once

#include <mdtools/command.h>
#include <mdtools/data_changed.h>

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

    // Take all commands out and delete them.
    void clear();
    // Deletes these, now or when nothing runs any more.
    void destroy(const std::vector<Command*>& all);
    // The list is gone: deletes everything, itself included, now or when nothing runs any more.
    void abandon();

private:
    ~CommandListState() = default;
    void finish();
    std::vector<Command*> release();
    static void destroyNow(std::vector<Command*> all);

    int m_runs = 0;
    // There is something to do when nothing runs any more.
    bool m_hasKept = false;
    bool m_isAbandoned = false;
    std::vector<Command*> m_kept;
};

}
