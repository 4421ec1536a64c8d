#include <mdtools/debug_output.h>

#include "platform/debug_receiver.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

// A program of the family in small, on the shared library. It does what its argument says.

namespace {

// Traces when nearly everything of the program has gone.
struct LastWords {
    bool wanted = false;
    ~LastWords()
    {
        if (wanted)
            Tools::debugPrintf("last words\n");
    }
} s_lastWords;

int sendLines(int count)
{
    for (int i = 0; i < count; ++i)
        Tools::debugPrintf("first of %d\nsecond of %d\nrest of %d", i, i, i);
    return Tools::DebugReceiver::get()->checkWindow() ? 0 : 3;
}

int exitWhileTracing()
{
    Tools::debugPrintf("begin\n");
    s_lastWords.wanted = true;
    std::thread([] {
        for (;;)
            Tools::debugPrintf("still tracing\n");
    }).detach();
    return 0;
}

// A receiver that dies while a sender waits for it.
int receiveAndDie()
{
    Tools::Platform::DebugListener listener;
    if (listener.start() != Tools::Platform::DebugListener::Start::Done)
        return 3;
    listener.run([](std::uint32_t, const char*, std::size_t) { std::_Exit(0); },
                 std::chrono::minutes(1));
    return 3;
}

}

int main(int count, char** arguments)
{
    const std::string what = count > 1 ? arguments[1] : "";
    if (what == "send-lines")
        return sendLines(count > 2 ? std::atoi(arguments[2]) : 1);
    if (what == "exit-while-tracing")
        return exitWhileTracing();
    if (what == "receive-and-die")
        return receiveAndDie();
    std::fputs("debug_client: unknown task\n", stderr);
    return 2;
}
