#pragma once

#include <mdtools/export.h>

namespace Tools {

// Facts and services of the machine. All functions may be called from any thread.
class MDTOOLS_API System {
public:
    // The number of processor cores of the machine; two hardware threads of one core count once. It
    // is determined by the first call, which reports what it finds on the debug channel. Where the
    // system has no answer, the count is 1 (it has no such service), 2 (no memory) or 3 (it
    // failed), and the next call tries again.
    static int getCpuCoreCount();

    // From now on getCpuCoreCount() answers what `function` returns; null gives the machine's own
    // count again.
    static void attachCpuCoreCountFunction(int (*function)());

    // Suspends the calling thread for at least this time; zero or less only lets others run.
    static void sleep(int milliseconds);
};

}
