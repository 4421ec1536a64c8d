#pragma once

#include <mdtools/command.h>
#include <mdtools/data_changed.h>
#include <mdtools/export.h>
#include <mdtools/nullable.h>

#include <memory>
#include <string>
#include <vector>

namespace Tools {

class CommandListState;

// The commands that were carried out, oldest first, with the position that undo and redo have come
// to. It owns its commands and notifies its handlers when it gets new ones or loses all. It belongs
// to one thread.
//
// A command that runs may change the list that runs it, or destroy it: commands that are cut off
// then live on until the outermost undo or redo of that list has returned. What a command cuts off
// another list, which does not run, is deleted at once; so is what a group's list has cut off when
// the group's own turn is over. No destructor of a list or group needs memory, nor stack for depth.
class MDTOOLS_API CommandList {
public:
    CommandList();
    virtual ~CommandList();
    CommandList(const CommandList&) = delete;
    CommandList& operator=(const CommandList&) = delete;

    // Records a command that was carried out already, and takes it over. What could have been
    // redone is deleted. Then the handlers are notified, without an argument. A null entry is kept;
    // undo and redo end there. A command that is recorded again has two entries; it is deleted
    // once, with its last one.
    void add(Command* command);
    void add(std::unique_ptr<Command> command);
    // The same for a group that has commands; an empty one is deleted. Null is ignored.
    void addGroup(GroupCommand* group);
    void addGroup(std::unique_ptr<GroupCommand> group);

    // Undo the newest command that is not undone yet, redo the one that was undone last. Commands
    // that are not reversible are stepped over on the way. False, or no description, if there was
    // none. The position has moved before the command runs: one that throws counts as undone or
    // redone. Handlers are not notified; the commands themselves notify of the data.
    bool undo();
    bool redo();
    mdt::Nullable<std::string> undoWithDescription();
    mdt::Nullable<std::string> redoWithDescription();

    // The descriptions of the reversible commands that could be undone or redone, the next one
    // first.
    std::vector<std::string> getUndoDescriptions() const;
    std::vector<std::string> getRedoDescriptions() const;

    // No entry is before, or after, the position. Entries that undo and redo step over or end at
    // count: a buffer that is not empty may hold nothing to undo.
    bool isUndoBufferEmpty() const;
    bool isRedoBufferEmpty() const;
    // All entries, on both sides of the position. A group is one, whatever it holds.
    bool hasCommands() const;
    int getNumberOfCommands() const;

    // Delete all commands: reset() in silence, removeAll() notifies the handlers.
    void reset();
    void removeAll();

    // As those of DataChangedManager. A handler may add commands, or remove all; that notifies
    // again within the round. It must not destroy the list.
    void addDataChangedHandler(DataChangedHandler* handler);
    void removeDataChangedHandler(DataChangedHandler* handler);

private:
    friend class GroupCommand;
    friend class CommandListState;

    CommandListState* m_state;
};

}
