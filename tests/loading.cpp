#include "support/child_process.h"
#include "support/module.h"
#include "support/process_state.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace MdToolsTest;

// Loading and freeing again and again runs nothing that stays: no thread, no second copy.
TEST(Loading, aThousandTimes)
{
    const int threads = countThreads();
    for (int i = 0; i < 1000; ++i) {
        void* module = loadModule(libraryPath());
        ASSERT_NE(module, nullptr) << "round " << i;
        ASSERT_NE(findFunction(module, "_Z13MdDebugPrintfPKcz"), nullptr);
        freeModule(module);
    }
    EXPECT_EQ(countThreads(), threads);
    EXPECT_FALSE(isModuleLoaded(libraryPath()));
}

}
