#include "envelope_run.h"

#include <mdtools/message_window.h>
#include <mdtools/threads.h>

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <utility>

namespace Girder {

namespace {

// So many times in all the progress is shown.
constexpr int Shows = 200;
constexpr int PollMilliseconds = 50;
constexpr auto StartTime = std::chrono::seconds(10);

// Counts the positions that the parts have done. Whoever finds the messenger in use goes on: the
// next report comes soon.
class Reporter {
public:
    Reporter(int count, Tools::ProgressMessenger& messenger)
        : m_step(count / Shows + 1), m_messenger(messenger)
    {
        m_messenger.setMaximum(static_cast<std::uint64_t>(count));
    }

    void advance()
    {
        const int done = ++m_done;
        if (done % m_step != 0 || !m_lock.tryLock())
            return;
        m_messenger.setPosition(static_cast<std::uint64_t>(done));
        m_lock.unlock();
    }

private:
    int m_step;
    std::atomic<int> m_done{0};
    Tools::CriticalSection m_lock;
    Tools::ProgressMessenger& m_messenger;
};

// What the thread in the background and the one that waits for it share. The background thread
// alone writes `envelope` and `isComplete`, before it sets `isFinished`; the other one reads them
// after that. The references are used until then only, and so long the waiting thread stays.
struct Task {
    Task(const EnvelopeSolver& theSolver, Tools::CancelHandler& theCancel,
         Tools::WindowHandle window)
        : solver(theSolver),
          cancel(theCancel),
          messenger(window, Tools::MessageWindow::FirstMessage)
    {}

    const EnvelopeSolver& solver;
    Tools::CancelHandler& cancel;
    Tools::ProgressMessenger messenger;
    Envelope envelope;
    bool isComplete = false;
    // Taken by the one of the two that comes first: the thread to run it, or the other to give up.
    std::atomic<bool> isTaken{false};
    std::atomic<bool> isFinished{false};
};

class BackgroundRun : public Tools::Thread {
public:
    explicit BackgroundRun(std::shared_ptr<Task> task) : m_task(std::move(task)) {}

    bool run() override
    {
        if (m_task->isTaken.exchange(true))
            return false;
        m_task->isComplete = computeEnvelope(m_task->solver, false, m_task->cancel,
                                             m_task->messenger, m_task->envelope);
        // The thread that waits leaves as soon as it has handled this last message.
        m_task->isFinished = true;
        m_task->messenger.reset();
        return false;
    }

private:
    std::shared_ptr<Task> m_task;
};

}

bool computeEnvelope(const EnvelopeSolver& solver, bool sequential, Tools::CancelHandler& cancel,
                     Tools::ProgressMessenger& progress, Envelope& envelope)
{
    Reporter reporter(solver.positions(), progress);
    Tools::CriticalSection lock;
    std::map<int, Envelope> parts; // by their first position
    const auto computePart = [&](int begin, int end) {
        Envelope part = solver.makeEmpty();
        for (int position = begin; position < end; ++position) {
            if (cancel.isCancelled())
                return;
            solver.add(position, part);
            reporter.advance();
        }
        const Tools::CriticalSectionLocker locker(lock);
        parts.emplace(begin, std::move(part));
    };
    Tools::ThreadUtility::forEach(solver.positions(), computePart, sequential);
    if (cancel.isCancelled())
        return false;
    envelope = solver.makeEmpty();
    for (const auto& [begin, part] : parts)
        envelope.add(part);
    return true;
}

RunEnd computeEnvelopeInBackground(const EnvelopeSolver& solver, Tools::CancelHandler& cancel,
                                   Tools::ProgressHandler* display, Envelope& envelope)
{
    std::shared_ptr<Task> task;
    bool isFinished = false;
    Tools::MessageWindow window([&](unsigned int) {
        task->messenger.update(display);
        isFinished = task->isFinished;
    });
    task = std::make_shared<Task>(solver, cancel, window.handle());
    (new BackgroundRun(task))->start();
    const auto start = std::chrono::steady_clock::now();
    while (!isFinished) {
        window.waitMessages(PollMilliseconds);
        const bool isLate = std::chrono::steady_clock::now() - start > StartTime;
        if (isLate && !task->isTaken.exchange(true))
            return RunEnd::NoThread;
    }
    if (!task->isComplete)
        return RunEnd::Cancelled;
    envelope = std::move(task->envelope);
    return RunEnd::Done;
}

}
