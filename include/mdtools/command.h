#pragma once

#include <mdtools/export.h>

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <utility>

namespace Tools {

class CommandList;

// An edit that can be done and, if it is reversible, undone. It is recorded in a CommandList after
// it was carried out. All commands and lists belong to one thread.
class MDTOOLS_API Command {
public:
    virtual ~Command();

    // Does the edit, or does it again.
    virtual void activate() = 0;
    // Takes the edit back.
    virtual void reverse() = 0;

    // What undo and redo menus show.
    const std::string& getDescription() const;
    void setDescription(const std::string& description);

    // Undo and redo step over a command that is not reversible.
    bool isReversible() const;
    void setReversible(bool reversible);

    // Hands this command, which was made with new, over to the list. Without a list there is no
    // undo, and the caller keeps the command.
    void enableUndoRedo(CommandList* list);

protected:
    Command(const std::string& description, bool reversible);
    // Not reversible, without description.
    Command() = default;
    explicit Command(bool reversible);
    Command(const Command&);
    Command& operator=(const Command&);

private:
    friend class CommandList;
    friend class CommandListState;
    friend class GroupCommand;

    bool m_reversible = false;
    // Both belong to the object and are not copied: whether this is a GroupCommand, and how many
    // entries of lists hold it.
    bool m_isGroup = false;
    int m_entries = 0;
    std::string m_description;
};

// A command that is reversible from the first.
class MDTOOLS_API ReversibleCommand : public Command {
public:
    ~ReversibleCommand() override;

protected:
    explicit ReversibleCommand(const std::string& description);
    ReversibleCommand();
    ReversibleCommand(const ReversibleCommand&) = default;
    ReversibleCommand& operator=(const ReversibleCommand&) = default;
};

// A reversible command made of pairs of functions, each pair a setter of one property and its undo.
class MDTOOLS_API FunctionCommand : public Command {
public:
    FunctionCommand();
    FunctionCommand(std::function<void()> doFunction, std::function<void()> undoFunction);
    FunctionCommand(const FunctionCommand&) = default;
    FunctionCommand& operator=(const FunctionCommand&) = default;
    ~FunctionCommand() override;

    void addSetter(std::function<void()> doFunction, std::function<void()> undoFunction);

    // Both call their functions from the first pair to the last. The undo functions do not run
    // backwards: each restores one property, whatever the others do. An empty function throws
    // std::bad_function_call; the pairs before it have run. A pair that a function adds meanwhile
    // waits for the next call.
    void activate() override;
    void reverse() override;

private:
    using Setter = std::pair<std::function<void()>, std::function<void()>>;

    void callAll(std::function<void()> Setter::*function);

    // A function stays where it is while it runs, even if it adds another pair.
    std::list<Setter> m_setters;
};

// A reversible command made of other commands, done and undone as one. Add those that were carried
// out to its list, then give the group to the outer list with CommandList::addGroup().
//
// At its end its commands are deleted while its list is still there, so that they may take handlers
// off it. The destructor of a derived class comes before that and finds all of them in the list.
class MDTOOLS_API GroupCommand : public Command {
public:
    GroupCommand();
    ~GroupCommand() override;
    GroupCommand(const GroupCommand&) = delete;
    GroupCommand& operator=(const GroupCommand&) = delete;

    // Owned by the group.
    CommandList* getCommandList() const;
    // Of the inner list, undone ones included.
    bool hasCommands() const;

    // Redoes, or undoes, all that the inner list can. GroupCommands may be nested to any depth.
    // Objects of derived classes are called through these two, so each level of such groups takes
    // its share of the stack while it runs; they may be destroyed at any depth as well.
    void activate() override;
    void reverse() override;

private:
    friend class CommandListState;

    // What the inner list is to do with all its commands.
    enum class Direction { Back, Forward };
    void runAll(Direction direction);

    std::unique_ptr<CommandList> m_commands;
};

}
