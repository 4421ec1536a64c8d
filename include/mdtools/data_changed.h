#pragma once

#include <mdtools/export.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace Tools {

// What has changed, as a class derived from this one describes it. Handlers get it as a pointer to
// const, which is null where there is nothing to say but that something has changed.
class MDTOOLS_API DataChangedArgument {
public:
    virtual ~DataChangedArgument();

protected:
    DataChangedArgument() = default;
    DataChangedArgument(const DataChangedArgument&) = default;
    DataChangedArgument& operator=(const DataChangedArgument&) = default;
};

// Somebody who wants to hear of changes.
class MDTOOLS_API DataChangedHandler {
public:
    virtual ~DataChangedHandler();

    virtual void dataChanged(const DataChangedArgument* argument) = 0;

protected:
    DataChangedHandler() = default;
    DataChangedHandler(const DataChangedHandler&) = default;
    DataChangedHandler& operator=(const DataChangedHandler&) = default;
};

// A handler made of a function; an empty function hears nothing.
class MDTOOLS_API DataChangedFunction : public DataChangedHandler {
public:
    explicit DataChangedFunction(std::function<void(const DataChangedArgument*)> function);
    DataChangedFunction(const DataChangedFunction&) = default;
    DataChangedFunction& operator=(const DataChangedFunction&) = default;
    ~DataChangedFunction() override;

    void dataChanged(const DataChangedArgument* argument) override;

private:
    std::function<void(const DataChangedArgument*)> m_function;
};

// Notifies its handlers of changes. It does not own them: a handler is removed from every manager
// before it is destroyed. Copies notify the same handlers. All calls belong to one thread.
class MDTOOLS_API DataChangedManager {
public:
    DataChangedManager() = default;
    DataChangedManager(const DataChangedManager&) = default;
    DataChangedManager& operator=(const DataChangedManager&);
    virtual ~DataChangedManager();

    // A handler is called once a round, however often it was added. Null is ignored.
    void addDataChangedHandler(DataChangedHandler* handler);
    // Ignored if the handler is not there.
    void removeDataChangedHandler(DataChangedHandler* handler);

    // Calls every handler, in an order that means nothing, and returns after the last one. An
    // exception of a handler ends the round and reaches the caller. A handler must not add or
    // remove handlers of the manager that is calling it. Where one does so all the same, nothing is
    // damaged: a removed handler is not called any more, even if it is gone, and an added one may
    // or may not be called in this round. Destroying the manager from a handler is not survived.
    //
    // A handler may notify again, through the same manager or another one: the inner round calls
    // every handler, this one included, and returns before the outer one goes on. Nothing ends a
    // handler that does so each time.
    void invokeDataChanged(const DataChangedArgument* argument);

private:
    void invokeAfter(DataChangedHandler* handler, const DataChangedArgument* argument);

    // In ascending order, without duplicates.
    std::vector<DataChangedHandler*> m_handlers;
    // Goes up with every change of the handlers.
    std::uint64_t m_changes = 0;
};

}
