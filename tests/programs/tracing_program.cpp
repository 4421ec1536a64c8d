// A program that has used the library and ends while threads of its own and of the library go on.

#include <mdtools/debug_output.h>
#include <mdtools/logger.h>
#include <mdtools/registry.h>
#include <mdtools/threads.h>

#include <atomic>
#include <chrono>
#include <thread>

int main()
{
    static std::atomic<int> lines = 0;
    std::thread([] {
        for (;;) {
            Tools::debugPrintf("line %d\n", ++lines);
            Tools::debugPrintfLabel("label", "line %d\n", lines.load());
        }
    }).detach();
    Tools::ThreadUtility::forEach(
        1000, [](int, int) {}, false);
    Tools::Registry::find(Tools::Registry::CurrentUser, "Software\\MERODA", false);
    Tools::LoggerManager::get().writeLine("nobody listens");
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (lines < 1000 && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return lines < 1000 ? 1 : 7;
}
