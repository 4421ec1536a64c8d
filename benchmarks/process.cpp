// Starting a small program and waiting for its end, beside the bare system call and Boost.Process.

#include <mdtools/process.h>

#include <benchmark/benchmark.h>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#ifdef WITH_BOOST_PROCESS
#include <boost/process/child.hpp>
#endif

namespace {

constexpr char Program[] = "/bin/true";

// A parent with that many megabytes in use: what copies the parent's page tables gets slower.
class LargeParent {
public:
    explicit LargeParent(const benchmark::State& state)
        : m_memory(static_cast<std::size_t>(state.range(0)) << 20, 'x')
    {}

private:
    std::vector<char> m_memory;
};

void runMdtools(benchmark::State& state)
{
    const LargeParent parent(state);
    Tools::Process process;
    process.setCommandLine(Program);
    process.enableWait(true);
    for (auto _ : state) {
        if (!process.run() || process.returnCode() != 0)
            state.SkipWithError("the program did not run");
    }
}

void runPosixSpawn(benchmark::State& state)
{
    const LargeParent parent(state);
    for (auto _ : state) {
        char* arguments[] = {const_cast<char*>(Program), nullptr};
        pid_t id = -1;
        int status = 1;
        if (::posix_spawn(&id, Program, nullptr, nullptr, arguments, environ) != 0 ||
            ::waitpid(id, &status, 0) != id || status != 0)
            state.SkipWithError("the program did not run");
    }
}

BENCHMARK(runMdtools)->Name("process_run/mdtools")->Arg(1)->Arg(1000)->UseRealTime();
BENCHMARK(runPosixSpawn)->Name("process_run/posix_spawn")->Arg(1)->Arg(1000)->UseRealTime();

#ifdef WITH_BOOST_PROCESS
void runBoost(benchmark::State& state)
{
    const LargeParent parent(state);
    for (auto _ : state) {
        boost::process::child child(Program);
        child.wait();
        if (child.exit_code() != 0)
            state.SkipWithError("the program did not run");
    }
}

BENCHMARK(runBoost)->Name("process_run/boost_process")->Arg(1)->Arg(1000)->UseRealTime();
#endif

}
