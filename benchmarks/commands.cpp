// Undo lists beside QUndoStack, notification beside sigc++ and Boost.Signals2.

#include <mdtools/command_list.h>
#include <mdtools/data_changed.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#ifdef WITH_QT
#include <QUndoStack>
#endif
#ifdef WITH_SIGC
#include <sigc++/sigc++.h>
#endif
#ifdef WITH_SIGNALS2
#include <boost/signals2.hpp>
#endif

namespace {

constexpr int Commands = 10000;
int value = 0;

class Increment : public Tools::ReversibleCommand {
public:
    Increment() : Tools::ReversibleCommand("Move node") {}
    void activate() override { ++value; }
    void reverse() override { --value; }
};

void addMdtools(benchmark::State& state)
{
    for (auto _ : state) {
        Tools::CommandList list;
        for (int i = 0; i < Commands; ++i)
            list.add(std::make_unique<Increment>());
        benchmark::DoNotOptimize(list.getNumberOfCommands());
    }
    state.SetItemsProcessed(state.iterations() * Commands);
}

void stepMdtools(benchmark::State& state)
{
    Tools::CommandList list;
    for (int i = 0; i < Commands; ++i)
        list.add(std::make_unique<Increment>());
    for (auto _ : state) {
        while (list.undo()) {
        }
        while (list.redo()) {
        }
    }
    state.SetItemsProcessed(state.iterations() * Commands * 2);
}

BENCHMARK(addMdtools)->Name("undo_add/mdtools");
BENCHMARK(stepMdtools)->Name("undo_step/mdtools");

#ifdef WITH_QT
class QtIncrement : public QUndoCommand {
public:
    QtIncrement() : QUndoCommand(QStringLiteral("Move node")) {}
    void redo() override { ++value; }
    void undo() override { --value; }
};

void addQt(benchmark::State& state)
{
    for (auto _ : state) {
        QUndoStack stack;
        for (int i = 0; i < Commands; ++i)
            stack.push(new QtIncrement);
        benchmark::DoNotOptimize(stack.count());
    }
    state.SetItemsProcessed(state.iterations() * Commands);
}

void stepQt(benchmark::State& state)
{
    QUndoStack stack;
    for (int i = 0; i < Commands; ++i)
        stack.push(new QtIncrement);
    for (auto _ : state) {
        while (stack.canUndo())
            stack.undo();
        while (stack.canRedo())
            stack.redo();
    }
    state.SetItemsProcessed(state.iterations() * Commands * 2);
}

BENCHMARK(addQt)->Name("undo_add/QUndoStack");
BENCHMARK(stepQt)->Name("undo_step/QUndoStack");
#endif

class Counter : public Tools::DataChangedHandler {
public:
    void dataChanged(const Tools::DataChangedArgument* argument) override
    {
        m_count += argument == nullptr ? 1 : 2;
    }

private:
    // Each its own: the calls are measured, not one counter's latency.
    int m_count = 0;
};

void notifyMdtools(benchmark::State& state)
{
    std::vector<Counter> counters(static_cast<std::size_t>(state.range(0)));
    Tools::DataChangedManager manager;
    for (Counter& counter : counters)
        manager.addDataChangedHandler(&counter);
    for (auto _ : state)
        manager.invokeDataChanged(nullptr);
    benchmark::DoNotOptimize(counters.data());
}

BENCHMARK(notifyMdtools)->Name("notify/mdtools")->Arg(1)->Arg(10)->Arg(100);

#ifdef WITH_SIGC
void notifySigc(benchmark::State& state)
{
    std::vector<Counter> counters(static_cast<std::size_t>(state.range(0)));
    sigc::signal<void, const Tools::DataChangedArgument*> signal;
    for (Counter& counter : counters)
        signal.connect(sigc::mem_fun(counter, &Counter::dataChanged));
    for (auto _ : state)
        signal.emit(nullptr);
    benchmark::DoNotOptimize(counters.data());
}

BENCHMARK(notifySigc)->Name("notify/sigc")->Arg(1)->Arg(10)->Arg(100);
#endif

#ifdef WITH_SIGNALS2
void notifySignals2(benchmark::State& state)
{
    std::vector<Counter> counters(static_cast<std::size_t>(state.range(0)));
    boost::signals2::signal<void(const Tools::DataChangedArgument*)> signal;
    for (Counter& counter : counters)
        signal.connect([&counter](const Tools::DataChangedArgument* argument) {
            counter.dataChanged(argument);
        });
    for (auto _ : state)
        signal(nullptr);
    benchmark::DoNotOptimize(counters.data());
}

BENCHMARK(notifySignals2)->Name("notify/signals2")->Arg(1)->Arg(10)->Arg(100);
#endif

}
