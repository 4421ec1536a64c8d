#pragma once

#include <mdtools/export.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace Tools {

// What has changed, told by a class derived from this one. Handlers get it as a pointer to const,
// which is null where there is nothing to tell but that something has changed.
class MDTOOLS_API DataChangedArgument {
public:
    virtual ~DataChangedArgument();

protected:
    DataChangedArgument();
    DataChangedArgument(const DataChangedArgument&);
    DataChangedArgument& operator=(const DataChangedArgument&);
};

// Somebody who wants to hear of changes.
class MDTOOLS_API DataChangedHandler {
public:
    virtual ~DataChangedHandler();

    virtual void dataChanged(const DataChangedArgument* argument) = 0;

protected:
    DataChangedHandler();
    DataChangedHandler(const DataChangedHandler&);
    DataChangedHandler& operator=(const DataChangedHandler&);
};

// A handler made of a function; an empty function hears nothing.
class MDTOOLS_API DataChangedFunction : public DataChangedHandler {
public:
    explicit DataChangedFunction(std::function<void(const DataChangedArgument*)> function);
    DataChangedFunction(const DataChangedFunction&);
    DataChangedFunction& operator=(const DataChangedFunction&);
    ~DataChangedFunction() override;

    void dataChanged(const DataChangedArgument* argument) override;

private:
    std::function<void(const DataChangedArgument*)> m_function;
};

// Tells its handlers of changes. It does not own them: a handler is removed from every manager
// before it is destroyed. Copies tell the same handlers. All calls belong to one thread.
class MDTOOLS_API DataChangedManager {
public:
    DataChangedManager();
    DataChangedManager(const DataChangedManager&);
    DataChangedManager& operator=(const DataChangedManager&);
    virtual ~DataChangedManager();

    // A handler is told once, however often it was added. Null is ignored.
    void addDataChangedHandler(DataChangedHandler* handler);
    // Ignored if the handler is not there.
    void removeDataChangedHandler(DataChangedHandler* handler);

    // Calls every handler, in an order that means nothing, and returns after the last one. An
    // exception of a handler ends the round and reaches the caller. A handler must not add or
    // remove handlers of the manager that is calling it. Where one does so all the same, nothing is
    // damaged: a removed handler is not called any more, even if it is gone, and an added one may
    // or may not be called in this round. Destroying the manager from a handler is not survived.
    void invokeDataChanged(const DataChangedArgument* argument);

private:
    void invokeBehind(DataChangedHandler* handler, const DataChangedArgument* argument);

    // In ascending order, without duplicates.
    std::vector<DataChangedHandler*> m_handlers;
    // Goes up with every change of the handlers.
    std::uint64_t m_changes = 0;
};

}
