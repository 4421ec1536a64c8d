#include <mdtools/system.h>
#include <mdtools/threads.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <latch>
#include <thread>
#include <vector>

#include <emmintrin.h>

#if MDTOOLS_HAS_TBB
#include <tbb/parallel_for.h>
#endif
#if MDTOOLS_HAS_ASIO
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#endif

namespace {

using Tools::System;
using Tools::ThreadUtility;

void forEachMdtools(benchmark::State& state)
{
    const int cores = System::getCpuCoreCount();
    for (auto _ : state)
        ThreadUtility::forEach(
            cores, [](int begin, int) { benchmark::DoNotOptimize(begin); }, false);
}
BENCHMARK(forEachMdtools)->Name("forEach/mdtools")->UseRealTime();

// The least that handing work to another thread can cost: a word there and a word back.
void forEachRoundTrip(benchmark::State& state)
{
    struct alignas(64) Word {
        std::atomic<unsigned int> value{0};
    } question, answer;
    constexpr unsigned int End = 0;
    std::thread thread([&] {
        unsigned int seen = 0;
        do {
            while (question.value.load(std::memory_order_acquire) == seen)
                _mm_pause();
            seen = question.value.load(std::memory_order_acquire);
            answer.value.store(seen, std::memory_order_release);
        } while (seen != End);
    });
    unsigned int number = End;
    for (auto _ : state) {
        question.value.store(++number, std::memory_order_release);
        while (answer.value.load(std::memory_order_acquire) != number)
            _mm_pause();
    }
    question.value.store(End, std::memory_order_release);
    thread.join();
}
BENCHMARK(forEachRoundTrip)->Name("forEach/roundTrip")->UseRealTime();

#if MDTOOLS_HAS_TBB
void forEachTbb(benchmark::State& state)
{
    const int cores = System::getCpuCoreCount();
    for (auto _ : state)
        tbb::parallel_for(0, cores, [](int i) { benchmark::DoNotOptimize(i); });
}
BENCHMARK(forEachTbb)->Name("forEach/tbb")->UseRealTime();
#endif

#if MDTOOLS_HAS_ASIO
void forEachAsio(benchmark::State& state)
{
    const int cores = System::getCpuCoreCount();
    boost::asio::thread_pool pool(static_cast<std::size_t>(cores));
    for (auto _ : state) {
        std::latch latch(cores);
        for (int i = 0; i < cores; ++i)
            boost::asio::post(pool, [&latch] { latch.count_down(); });
        latch.wait();
    }
}
BENCHMARK(forEachAsio)->Name("forEach/asio")->UseRealTime();
#endif

constexpr int SineCount = 10'000'000;

double sumOfSines(int begin, int end)
{
    double sum = 0;
    for (int i = begin; i < end; ++i)
        sum += std::sin(i * 1e-3);
    return sum;
}

void sineMdtools(benchmark::State& state)
{
    const auto body = [](int begin, int end) { benchmark::DoNotOptimize(sumOfSines(begin, end)); };
    for (auto _ : state)
        ThreadUtility::forEach(SineCount, body, false);
}
BENCHMARK(sineMdtools)->Name("sine/mdtools")->UseRealTime()->Unit(benchmark::kMillisecond);

// The time of the plain loop over everything, divided by the cores.
void sinePlainLoop(benchmark::State& state)
{
    using Clock = std::chrono::steady_clock;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        benchmark::DoNotOptimize(sumOfSines(0, SineCount));
        const std::chrono::duration<double> time = Clock::now() - start;
        state.SetIterationTime(time.count() / System::getCpuCoreCount());
    }
}
BENCHMARK(sinePlainLoop)
    ->Name("sine/plainLoopByCores")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}
