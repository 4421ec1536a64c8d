#include <mdtools/data_changed.h>
#include <mdtools/displayer.h>
#include <mdtools/observer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Tools;

// What handlers and observers did, a word each.
std::string log;

std::string takeLog()
{
    return std::exchange(log, std::string());
}

class Notification : public ::testing::Test {
protected:
    Notification() { takeLog(); }
};

// Adds its name to the log, and does what its test wants.
class Handler : public DataChangedHandler {
public:
    explicit Handler(const std::string& name) : m_name(name) {}
    void dataChanged(const DataChangedArgument*) override
    {
        log += m_name;
        if (whenCalled)
            whenCalled();
    }

    std::function<void()> whenCalled;

private:
    std::string m_name;
};

TEST_F(Notification, dataChanged)
{
    std::vector<Handler> handlers; // in ascending order of their addresses
    for (const char* name : {"a", "b", "c", "d"})
        handlers.emplace_back(name);
    DataChangedManager manager;
    manager.invokeDataChanged(nullptr);
    for (const int i : {2, 0, 3, 1, 2, 0})
        manager.addDataChangedHandler(&handlers[static_cast<std::size_t>(i)]);
    manager.addDataChangedHandler(nullptr);
    manager.removeDataChangedHandler(nullptr);
    manager.invokeDataChanged(nullptr);
    EXPECT_EQ(takeLog(), "abcd");
    DataChangedManager copy(manager);
    copy.removeDataChangedHandler(&handlers[0]);
    copy.removeDataChangedHandler(&handlers[0]);
    copy.invokeDataChanged(nullptr);
    manager.invokeDataChanged(nullptr);
    EXPECT_EQ(takeLog(), "bcdabcd");

    // Against the rules, but nothing is damaged: "b" takes out itself and two others, one of them
    // already called.
    handlers[1].whenCalled = [&] {
        for (const int i : {0, 1, 2})
            manager.removeDataChangedHandler(&handlers[static_cast<std::size_t>(i)]);
    };
    manager.invokeDataChanged(nullptr);
    EXPECT_EQ(takeLog(), "abd");
    // One that brings another one during the round; what comes after it by its address is called.
    handlers[3].whenCalled = [&] {
        handlers[3].whenCalled = nullptr;
        for (const int i : {0, 1, 2})
            manager.addDataChangedHandler(&handlers[static_cast<std::size_t>(i)]);
    };
    handlers[1].whenCalled = nullptr;
    manager.removeDataChangedHandler(&handlers[0]);
    manager.invokeDataChanged(nullptr);
    EXPECT_EQ(takeLog(), "d");
    manager.invokeDataChanged(nullptr);
    EXPECT_EQ(takeLog(), "abcd");
    Handler late("e");
    handlers[0].whenCalled = [&] { manager.addDataChangedHandler(&late); };
    manager.invokeDataChanged(nullptr);
    EXPECT_THAT(takeLog(), ::testing::AnyOf("abcd", "abcde", "eabcd"));
    handlers[0].whenCalled = nullptr;
    manager.invokeDataChanged(nullptr);
    EXPECT_EQ(takeLog().size(), 5U);
    manager.removeDataChangedHandler(&late);
    for (const int i : {0, 1, 2})
        manager.removeDataChangedHandler(&handlers[static_cast<std::size_t>(i)]);
    handlers[3].whenCalled = [&] { manager = copy; };
    manager.invokeDataChanged(nullptr);
    EXPECT_EQ(takeLog(), "d");
    handlers[1].whenCalled = [] { throw std::runtime_error("b"); };
    EXPECT_THROW(manager.invokeDataChanged(nullptr), std::runtime_error);
    EXPECT_EQ(takeLog(), "b");

    struct Change : DataChangedArgument {
    } change;
    const DataChangedArgument* heard = nullptr;
    DataChangedFunction function([&](const DataChangedArgument* argument) { heard = argument; });
    function.dataChanged(&change);
    EXPECT_EQ(heard, &change);
    DataChangedFunction(nullptr).dataChanged(&change);
}

class View : public Displayer {};

class Shape : public Observer {
public:
    Shape(const std::string& name, Displayer* displayer) : Observer(displayer), m_name(name) {}
    ~Shape() override
    {
        log += "~" + m_name;
        if (whenGone)
            whenGone();
    }
    void addToDisplayer() override { log += "+" + m_name; }
    void removeFromDisplayer() override { log += "-" + m_name; }
    void updateInDisplayer() override
    {
        log += "*" + m_name;
        if (whenUpdated)
            whenUpdated();
    }

    std::function<void()> whenUpdated;
    std::function<void()> whenGone;

private:
    std::string m_name;
};

TEST_F(Notification, observers)
{
    View plan;
    View section;
    plan.refresh();
    {
        ObserverManager manager;
        auto* const a = new Shape("a", &plan);
        auto* const b = new Shape("b", &section);
        auto* const c = new Shape("c", &plan);
        for (Shape* shape : {a, b, c, a})
            manager.addObserver(shape);
        manager.addObserver(nullptr);
        EXPECT_EQ(manager.findObserver(&plan), a);
        EXPECT_EQ(manager.findObserver(&section), b);
        EXPECT_EQ(b->getDisplayer(), &section);
        manager.addToDisplayer(nullptr);
        manager.removeFromDisplayer(&plan);
        manager.updateInDisplayer(&section);
        EXPECT_EQ(takeLog(), "+a+b+c-a-c*b");

        // Against the rules, but nothing is damaged.
        a->whenUpdated = [&] { manager.removeObserver(a); };
        b->whenUpdated = [&] { manager.addObserver(a); };
        manager.updateInDisplayer(nullptr);
        EXPECT_EQ(takeLog(), "*a*b*c");
        // In the middle of a round two go, one of them itself, and come again after "c".
        b->whenUpdated = [&] {
            for (Shape* shape : {a, b})
                manager.removeObserver(shape);
            for (Shape* shape : {a, b})
                manager.addObserver(shape);
            manager.addToDisplayer(nullptr);
        };
        manager.updateInDisplayer(nullptr);
        EXPECT_EQ(takeLog(), "*b+c+a+b*c");
        b->whenUpdated = nullptr;
        manager.removeObserver(a);
        EXPECT_EQ(manager.findObserver(&plan), c);
        manager.removeObserver(a);
        delete a;
        EXPECT_EQ(takeLog(), "~a");
        // The end of one takes another back, and brings a new one.
        c->whenGone = [&manager, &plan, b] {
            manager.removeObserver(b);
            delete b;
            manager.addObserver(new Shape("d", &plan));
        };
    }
    EXPECT_EQ(takeLog(), "~c~b~d");
}

}
