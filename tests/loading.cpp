#include "support/child_process.h"
#include "support/module.h"
#include "support/process_state.h"

#include <gtest/gtest.h>

namespace {

using namespace MdToolsTest;

// Loading and freeing again and again runs nothing that stays: no thread, no second copy.
TEST(Loading, aThousandTimes)
{
    const int threads = countThreads();
    for (int i = 0; i < 1000; ++i) {
        void* module = loadModule(libraryPath());
        ASSERT_NE(module, nullptr) << "round " << i;
        const auto print = reinterpret_cast<void (*)(const char*, ...)>(
            findFunction(module, "_Z13MdDebugPrintfPKcz"));
        ASSERT_NE(print, nullptr);
        print("round %d\n", i);
        freeModule(module);
    }
    EXPECT_EQ(countThreads(), threads);
    EXPECT_FALSE(isModuleLoaded(libraryPath()));
}

// The end of a program waits for nothing: neither for a thread that traces nor for the pool.
TEST(Loading, endsWhileThreadsGoOn)
{
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(runChild(builtProgram("test_tracing_program"), {}).exitCode, 7) << "run " << i;
}

}
