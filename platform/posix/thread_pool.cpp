#include "platform/thread_pool.h"

#include "platform/posix/signal_mask.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include <emmintrin.h>
#include <linux/futex.h>
#include <pthread.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Tools::Platform {

struct Work {
    WorkCallback callback;
    void* context;
};

namespace {

constexpr std::size_t CacheLine = 64;

// Adaptive spinning: waking a sleeping thread takes the system several microseconds, noticing a
// changed word a tenth of one. So everybody looks for a while before going to sleep.
constexpr std::chrono::nanoseconds SpinTime{10'000};

// Short work is done by the threads that are awake before it would pay to wake others. Longer work
// starts this much late on the sleeping ones.
constexpr std::chrono::nanoseconds PatienceTime{1'500};

// True as soon as `condition` holds; false if it does not within `time`.
template <class Condition>
bool spin(std::chrono::nanoseconds time, Condition condition)
{
    using Clock = std::chrono::steady_clock;
    constexpr int LooksBetweenTimes = 16;
    if (condition())
        return true;
    for (const Clock::time_point end = Clock::now() + time; Clock::now() < end;) {
        for (int i = 0; i < LooksBetweenTimes; ++i) {
            _mm_pause();
            if (condition())
                return true;
        }
    }
    return false;
}

// Sleeps (a futex) while `word` has this value, or until woken. It may wake for no reason, so
// callers look again.
void sleepWhile(std::atomic<std::uint32_t>& word, std::uint32_t value)
{
    ::syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
}

void wake(std::atomic<std::uint32_t>& word, std::uint32_t threads)
{
    const int most = static_cast<int>(std::min<std::uint32_t>(threads, INT_MAX));
    ::syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, most, nullptr, nullptr, 0);
}

int usableProcessors()
{
    cpu_set_t set;
    return ::sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
}

// How often this process is the child of a fork that had the library in use.
std::atomic<unsigned int> forks{0};

void watchForks()
{
    static const int watching =
        ::pthread_atfork(nullptr, nullptr, [] { forks.fetch_add(1, std::memory_order_relaxed); });
    static_cast<void>(watching);
}

}

// One thread, the caller, hands a batch of calls over and waits; the pool's threads claim one call
// after the other. What the one side writes for the other is on as few cache lines as possible:
// each line that has to move between two cores costs as much as all the rest of a short batch.
//
// One caller at a time: callers take turns by a lock above this class (thread_utility.cpp). The
// hand-over itself has no lock. Its invariants:
// - The slots are the caller's to write while no batch is out, that is until it stores the ticket
//   and from when it has seen the last call completed. A thread may use slot i only after it has
//   claimed call i; from then on the slot is that thread's alone.
// - The ticket (batch, number of calls) is written by the caller only, with release after the
//   slots. Whoever reads it with acquire sees the slots of that batch.
// - The claims (batch, calls claimed) are changed by the pool's threads only, by compare-exchange
//   from what they compared with the ticket. The batch in the word makes a claim fail whose thread
//   was held up since an earlier batch, so there is no ABA; a word of an earlier batch means "none
//   yet".
// - The count of completed calls only grows, round and round. Each thread adds its calls after it
//   has made them. The caller adds the sizes of its batches to a target of its own and may go on
//   when the two are equal: then every effect of the calls is visible to it.
// - No thread sleeps over work: it changes m_asleep before it looks at the ticket for the last
//   time, and the caller changes m_asleep, by nothing, after it stored the ticket. Whoever comes
//   second sees what the other did before: the thread the ticket, or the caller the sleeper.
// - Nor does the caller sleep over the last completion (Dekker's pattern, sequentially
//   consistent): it sets m_callerSleeps before it looks at m_completed, a thread adds to
//   m_completed before it looks at m_callerSleeps. And the word that the caller sleeps on is
//   m_completed itself.
class Pool { // NOLINT(clang-analyzer-optin.performance.Padding): the padding is the point
public:
    Pool(int minimum, int maximum);
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool();

    // Makes `count` calls of copies of `body`, each with the range that `range` gives for its
    // number.
    template <class Ranges>
    void run(const LoopBody& body, std::uint32_t count, const Ranges& range);

private:
    // A call, and for threads that look out for work all that they need on one line.
    struct alignas(CacheLine) Slot {
        // The body does not begin and end with the slot; "= default" would delete these.
        Slot() {} // NOLINT(modernize-use-equals-default)
        Slot(const Slot&) = delete;
        Slot& operator=(const Slot&) = delete;
        ~Slot() {} // NOLINT(modernize-use-equals-default)

        void call();

        // Of the first slot only: the number of the batch and, in the lower half, of its calls.
        std::atomic<std::uint64_t> ticket{0};
        // Lives from the hand-over until it has been called.
        union {
            LoopBody body;
        };
        Range range{};
    };
    static constexpr std::uint32_t FewSlots = 2;

    static std::uint32_t upper(std::uint64_t word)
    {
        return static_cast<std::uint32_t>(word >> 32);
    }
    static std::uint32_t lower(std::uint64_t word) { return static_cast<std::uint32_t>(word); }
    static std::uint64_t toWord(std::uint32_t upper, std::uint32_t lower)
    {
        return std::uint64_t{upper} << 32 | lower;
    }

    // The number of the next call to be claimed. While nothing of a batch has been claimed, the
    // word of the claims is still that of the batch before.
    static std::uint32_t nextCall(std::uint64_t ticket, std::uint64_t claims)
    {
        return upper(ticket) == upper(claims) ? lower(claims) : 0;
    }

    bool hasWork() const
    {
        const std::uint64_t claims = m_claims.load();
        const std::uint64_t ticket = m_few.front().ticket.load();
        return nextCall(ticket, claims) < lower(ticket);
    }

    Slot& slot(std::uint32_t i) { return i < FewSlots ? m_few[i] : m_many[i - FewSlots]; }

    template <class Ranges>
    static void callHere(std::vector<LoopBody> bodies, const Ranges& range) noexcept;
    void makeRoom(std::uint32_t count);
    void publish(std::uint32_t count);
    void waitFor(std::uint32_t count);
    void callThreads(std::uint32_t count);
    void startThreads(std::size_t number);
    void adoptAfterFork();

    static void* runThread(void* pool) noexcept;
    void workUntilStopped();
    void runClaimed();
    void complete(std::uint32_t number);
    void sleepUntilCalled();

    // The first line is all that must reach another core before a single call can be made.
    std::array<Slot, FewSlots> m_few;

    // The number of the batch and how many of its calls have been claimed. Changed by the pool's
    // threads alone, but for a forked child, which has none when it begins anew; the number keeps
    // one that was held up from claiming in the wrong batch.
    alignas(CacheLine) std::atomic<std::uint64_t> m_claims{0};

    // How many calls have ever been completed, round and round.
    alignas(CacheLine) std::atomic<std::uint32_t> m_completed{0};

    // Seldom written.
    alignas(CacheLine) std::atomic<std::uint32_t> m_wakeUps{0};
    std::atomic<std::uint32_t> m_asleep{0};
    std::atomic<int> m_spinning{0};
    std::atomic<bool> m_callerSleeps{false};
    std::atomic<std::uint32_t> m_callerWaitsFor{0};
    std::atomic<bool> m_stopped{false};

    // Of the thread that hands over alone. It keeps its own count of what it wrote to the first
    // slot, as reading there would cost it another move of the line.
    alignas(CacheLine) std::uint32_t m_batches = 0;
    std::uint32_t m_handedOver = 0;
    std::unique_ptr<Slot[]> m_many;
    std::uint32_t m_capacity = FewSlots;
    // The caller needs a processor, too.
    const int m_mostSpinning = usableProcessors() - 1;
    const std::size_t m_minimum;
    const std::size_t m_maximum;
    std::vector<pthread_t> m_threads;
    unsigned int m_forks = forks.load(std::memory_order_relaxed);
};

Pool::Pool(int minimum, int maximum)
    : m_minimum(static_cast<std::size_t>(minimum)), m_maximum(static_cast<std::size_t>(maximum))
{
    watchForks();
    startThreads(m_minimum);
}

Pool::~Pool()
{
    if (m_forks != forks.load(std::memory_order_relaxed))
        return;
    m_stopped = true;
    m_wakeUps.fetch_add(1);
    wake(m_wakeUps, INT_MAX);
    for (const pthread_t thread : m_threads)
        ::pthread_join(thread, nullptr);
}

template <class Ranges>
void Pool::run(const LoopBody& body, std::uint32_t count, const Ranges& range)
{
    if (m_forks != forks.load(std::memory_order_relaxed))
        adoptAfterFork();
    if (m_threads.empty())
        startThreads(m_minimum);
    if (m_threads.empty()) {
        callHere(std::vector<LoopBody>(count, body), range);
        return;
    }
    makeRoom(count);
    std::uint32_t ready = 0;
    try {
        for (; ready < count; ++ready) {
            std::construct_at(&slot(ready).body, body);
            slot(ready).range = range(static_cast<int>(ready));
        }
    } catch (...) {
        while (ready > 0)
            std::destroy_at(&slot(--ready).body);
        throw;
    }
    publish(count);
    waitFor(count);
}

// For a system that has not a single thread to give. Nothing of the hand-over is touched, so that
// a body may start a loop here, too. noexcept: an exception ends the program as on every thread.
template <class Ranges>
void Pool::callHere(std::vector<LoopBody> bodies, const Ranges& range) noexcept
{
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        const LoopBody body = std::move(bodies[i]);
        const Range part = range(static_cast<int>(i));
        body(part.begin, part.end);
    }
}

void Pool::makeRoom(std::uint32_t count)
{
    if (count <= m_capacity)
        return;
    m_many = std::make_unique<Slot[]>(count - FewSlots);
    m_capacity = count;
}

void Pool::publish(std::uint32_t count)
{
    m_handedOver += count;
    m_few.front().ticket.store(toWord(++m_batches, count), std::memory_order_release);
}

void Pool::waitFor(std::uint32_t count)
{
    const std::uint32_t target = m_handedOver;
    const auto done = [this, target] {
        return m_completed.load(std::memory_order_acquire) == target;
    };
    const bool awake = m_spinning.load(std::memory_order_relaxed) > 0;
    if (awake && spin(PatienceTime, done))
        return;
    callThreads(count);
    if (m_mostSpinning > 0 && spin(SpinTime, done))
        return;
    m_callerWaitsFor = target;
    m_callerSleeps = true;
    for (std::uint32_t completed = m_completed; completed != target; completed = m_completed)
        sleepWhile(m_completed, completed);
    m_callerSleeps = false;
}

// A batch of `count` is there: all the threads that it can use are to work on it.
void Pool::callThreads(std::uint32_t count)
{
    // A change, though of nothing: either a thread that is about to sleep sees the ticket, or it is
    // counted here.
    const std::uint32_t asleep = m_asleep.fetch_add(0);
    if (!hasWork())
        return;
    startThreads(std::min<std::size_t>(count, m_maximum));
    if (asleep > 0) {
        m_wakeUps.fetch_add(1);
        wake(m_wakeUps, std::min(count, asleep));
    }
}

// Of the caller only, as m_threads is. Brings the pool to this number of threads, if it has fewer.
void Pool::startThreads(std::size_t number)
{
    if (m_threads.size() >= number)
        return;
    m_threads.reserve(number);
    const AsynchronousSignalsBlocked blocked;
    pthread_t thread{};
    while (m_threads.size() < number && ::pthread_create(&thread, nullptr, runThread, this) == 0)
        m_threads.push_back(thread);
}

// A forked child has the pool but none of its threads, and what they were doing at that moment is
// lost: every word is set as if all batches so far had been completed.
void Pool::adoptAfterFork()
{
    m_forks = forks.load(std::memory_order_relaxed);
    m_threads.clear();
    m_claims = toWord(++m_batches, 0);
    m_few.front().ticket = m_claims.load();
    m_handedOver = m_completed;
    m_asleep = 0;
    m_spinning = 0;
    m_callerSleeps = false;
    startThreads(m_minimum);
}

void* Pool::runThread(void* pool) noexcept
{
    static_cast<Pool*>(pool)->workUntilStopped();
    return nullptr;
}

void Pool::workUntilStopped()
{
    const auto called = [this] { return hasWork() || m_stopped.load(std::memory_order_relaxed); };
    while (!m_stopped) {
        runClaimed();
        // A thread that may spin keeps the right to while there is enough to do.
        if (m_spinning.fetch_add(1) < m_mostSpinning)
            while (spin(SpinTime, called) && !m_stopped)
                runClaimed();
        m_spinning.fetch_sub(1);
        sleepUntilCalled();
    }
}

// Claims and makes calls until none is left. The claims are read before the ticket: read after it
// they could be those of a batch that the ticket does not know yet.
void Pool::runClaimed()
{
    std::uint32_t completed = 0;
    while (!m_stopped.load(std::memory_order_relaxed)) {
        std::uint64_t claims = m_claims.load(std::memory_order_acquire);
        const std::uint64_t ticket = m_few.front().ticket.load(std::memory_order_acquire);
        const std::uint32_t next = nextCall(ticket, claims);
        if (next >= lower(ticket))
            break;
        // The next line is on its way while this call is made.
        _mm_prefetch(reinterpret_cast<const char*>(&m_few.back()), _MM_HINT_T0);
        if (!m_claims.compare_exchange_strong(claims, toWord(upper(ticket), next + 1)))
            continue;
        slot(next).call();
        ++completed;
    }
    if (completed > 0)
        complete(completed);
}

void Pool::Slot::call()
{
    body(range.begin, range.end);
    std::destroy_at(&body);
}

void Pool::complete(std::uint32_t number)
{
    const std::uint32_t completed = m_completed.fetch_add(number) + number;
    if (m_callerSleeps && completed == m_callerWaitsFor)
        wake(m_completed, 1);
}

// Either this thread sees the new ticket, or the one that hands over counts it as asleep.
void Pool::sleepUntilCalled()
{
    const std::uint32_t wakeUps = m_wakeUps;
    m_asleep.fetch_add(1);
    if (!hasWork() && !m_stopped)
        sleepWhile(m_wakeUps, wakeUps);
    m_asleep.fetch_sub(1);
}

Pool* createPool(int minimum, int maximum)
{
    return new Pool(minimum, maximum);
}

void destroyPool(Pool* pool)
{
    delete pool;
}

Work* createWork(Pool*, WorkCallback callback, void* context)
{
    return new Work{callback, context};
}

void closeWork(Work* work)
{
    delete work;
}

WorkHandle workHandle(const Work* work)
{
    return reinterpret_cast<WorkHandle>(const_cast<Work*>(work));
}

namespace {

// More than fit into one batch are several.
constexpr std::size_t MostCalls = INT_MAX;

void callWork(Work* work)
{
    if (work->callback != nullptr)
        work->callback(nullptr, work->context, workHandle(work));
}

}

void runWorks(Pool* pool, Work* const* works, std::size_t count)
{
    while (count > 0) {
        const std::size_t part = std::min(count, MostCalls);
        pool->run([works](int i, int) { callWork(works[i]); }, static_cast<std::uint32_t>(part),
                  [](int i) {
                      return Range{i, 0};
                  });
        works += part;
        count -= part;
    }
}

void runLoop(Pool* pool, const LoopBody& body, int count, const LoopRanges& ranges)
{
    pool->run(body, static_cast<std::uint32_t>(count), ranges);
}

}
