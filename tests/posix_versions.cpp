// What only this platform has: programs that may be removed while they run.
#include "support/child_process.h"
#include "support/files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

TEST(VersionInfo, ofAProgramWhoseFileIsGone)
{
    const std::string copy = MdToolsTest::workPath("versioned");
    std::filesystem::copy_file(MdToolsTest::builtProgram("test_versioned_program"), copy);
    EXPECT_EQ(MdToolsTest::runChild(copy, {}).output, "Vanishing\n");
    EXPECT_FALSE(std::filesystem::exists(copy));
}

}
