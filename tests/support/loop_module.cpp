// A shared library that uses the library under test and goes again.
#include <mdtools/threads.h>

#include <atomic>
#include <cstdlib>

extern "C" void runLoops()
{
    std::atomic<int> sum{0};
    for (int i = 0; i < 100; ++i)
        Tools::ThreadUtility::forEach(
            1000, [&sum](int begin, int end) { sum += end - begin; }, false);
    if (sum != 100'000)
        std::abort();
}
