#include <mdtools/debug_output.h>
#include <mdtools/logger.h>

#include "platform/debug_receiver.h"
#include "trace/debug_sender.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

#ifdef MDTOOLS_WITH_SPDLOG
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#endif
#ifdef MDTOOLS_WITH_ZMQ
#include <zmq.h>
#endif

namespace {

// The directory in which a receiver of this run alone listens.
const std::string& runDirectory()
{
    static const std::string directory = [] {
        std::string text =
            (std::filesystem::temp_directory_path() / "mdtools-bench-XXXXXX").string();
        if (!::mkdtemp(text.data()))
            std::abort();
        ::setenv("XDG_RUNTIME_DIR", text.c_str(), 1);
        return text;
    }();
    return directory;
}

struct RunDirectory {
    RunDirectory() { runDirectory(); }
    ~RunDirectory() { std::filesystem::remove_all(runDirectory()); }
} s_runDirectory;

void emptyFunction(const char*, int) {}
void (*volatile s_emptyFunction)(const char*, int) = emptyFunction;
void (*volatile s_debugPrintf)(const char*, ...) = Tools::debugPrintf;

void disconnectedCall(benchmark::State& state)
{
    Tools::DebugSender::restart();
    int i = 0;
    for (auto step : state) {
        s_debugPrintf("step %d\n", ++i);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(disconnectedCall)->Name("debug_disconnected/mdtools");

void emptyCall(benchmark::State& state)
{
    int i = 0;
    for (auto step : state) {
        s_emptyFunction("step %d\n", ++i);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(emptyCall)->Name("debug_disconnected/empty_function");

const std::string& piece()
{
    static const std::string text = std::string(79, '.') + "\n";
    return text;
}

// The receivers run on a thread, as their peers do; what is measured is one piece and its answer.
void connectedCall(benchmark::State& state)
{
    Tools::Platform::DebugListener listener;
    if (listener.start() != Tools::Platform::DebugListener::Start::Done) {
        state.SkipWithError("cannot listen");
        return;
    }
    std::size_t bytes = 0;
    std::thread receiver([&] {
        listener.run([&](std::uint32_t, const char*, std::size_t length) { bytes += length; },
                     std::chrono::milliseconds(-1));
    });
    Tools::DebugSender::restart();
    for (auto step : state)
        Tools::debugPrintf("%s", piece().c_str());
    Tools::DebugSender::end();
    listener.stop();
    receiver.join();
    if (bytes < static_cast<std::size_t>(state.iterations()) * piece().size())
        state.SkipWithError("pieces were lost");
}
BENCHMARK(connectedCall)->Name("debug_connected/mdtools")->UseRealTime();

#ifdef MDTOOLS_WITH_ZMQ
void zmqCall(benchmark::State& state)
{
    void* context = ::zmq_ctx_new();
    const std::string address = "ipc://" + runDirectory() + "/zmq";
    void* server = ::zmq_socket(context, ZMQ_REP);
    ::zmq_bind(server, address.c_str());
    std::thread receiver([&] {
        char text[4096];
        while (::zmq_recv(server, text, sizeof(text), 0) > 0)
            ::zmq_send(server, text, 1, 0);
    });
    // A context of its own: the client is another process in earnest.
    void* clientContext = ::zmq_ctx_new();
    void* client = ::zmq_socket(clientContext, ZMQ_REQ);
    ::zmq_connect(client, address.c_str());
    char answer = 0;
    for (auto step : state) {
        ::zmq_send(client, piece().data(), piece().size(), 0);
        ::zmq_recv(client, &answer, 1, 0);
    }
    ::zmq_send(client, "", 0, 0);
    receiver.join();
    ::zmq_close(client);
    ::zmq_close(server);
    ::zmq_ctx_term(clientContext);
    ::zmq_ctx_term(context);
}
BENCHMARK(zmqCall)->Name("debug_connected/zeromq")->UseRealTime();
#endif

// A line of 80 characters with its end, on its way to the disk when the call returns.
std::string logLine()
{
    return std::string(80, 'x');
}

std::string logPath(const char* name)
{
    return runDirectory() + "/" + name;
}

void loggerLine(benchmark::State& state)
{
    Tools::FileLogger logger(logPath("mdtools.log"));
    logger.initialize();
    const std::string line = logLine();
    for (auto step : state)
        logger.writeLine(line);
    std::filesystem::remove(logPath("mdtools.log"));
}
BENCHMARK(loggerLine)->Name("log_line/mdtools");

void bareWrite(benchmark::State& state)
{
    const std::string path = logPath("write.log");
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    const std::string line = logLine() + "\n";
    for (auto step : state)
        benchmark::DoNotOptimize(::write(file, line.data(), line.size()));
    ::close(file);
    std::filesystem::remove(path);
}
BENCHMARK(bareWrite)->Name("log_line/write");

#ifdef MDTOOLS_WITH_SPDLOG
void spdlogLine(benchmark::State& state)
{
    const auto logger = spdlog::basic_logger_st("bench", logPath("spdlog.log"));
    logger->set_pattern("%v");
    logger->flush_on(spdlog::level::info);
    const std::string line = logLine();
    for (auto step : state)
        logger->info(line);
    spdlog::drop("bench");
    std::filesystem::remove(logPath("spdlog.log"));
}
BENCHMARK(spdlogLine)->Name("log_line/spdlog");
#endif

}
