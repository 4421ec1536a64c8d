#include "support/memory.h"
#include "support/module.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace MdToolsTest;

// What text needs of the code page goes with the library.
TEST(Unloading, freesTheTablesOfText)
{
    std::size_t before = 0;
    constexpr int Rounds = 100;
    for (int i = 0; i < Rounds; ++i) {
        void* const module = loadModule(libraryPath());
        ASSERT_NE(module, nullptr) << "round " << i;
        using Function = std::string (*)(const std::string&);
        const auto toLower = reinterpret_cast<Function>(findFunction(
            module, "_ZN5Tools7toLowerERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"));
        ASSERT_NE(toLower, nullptr);
        EXPECT_EQ(toLower("\xC4"
                          "A"),
                  "\xE4"
                  "a");
        freeModule(module);
        ASSERT_FALSE(isModuleLoaded(libraryPath()));
        // What the system itself keeps of the first rounds does not count.
        if (i == 10)
            before = memoryInUse();
    }
    EXPECT_LT(memoryInUse(), before + std::size_t{Rounds} * 4096);
}

}
