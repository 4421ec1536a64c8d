// What programs' starting and loading has to say: the shell's texts, and traces.
#include <mdtools/dll_util.h>

#include "process/shell_result.h"
#include "support/debug_output_test.h"
#include "support/programs.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using namespace Tools;
using namespace MdToolsTest;
using ::testing::ElementsAre;

TEST(Shell, hasAMessageForEveryResult)
{
    struct Case {
        int number;
        Shell::ErrorCode code;
        const char* message;
    };
    static const Case cases[] = {
        {0, Shell::OutOfResources, "The system is out of memory or resources."},
        {2, Shell::FileNotFound, "File not found: a.txt"},
        {3, Shell::PathNotFound, "Path not found."},
        {5, Shell::AccessDenied, "Access denied: a.txt."},
        {8, Shell::NotEnoughMemory, "Not enough memory."},
        {11, Shell::BadFormat, "Invalid program file."},
        {26, Shell::SharingViolation, "Sharing violation."},
        {27, Shell::AssociationIncomplete, "The file association is incomplete."},
        {28, Shell::TimedOut, "The request timed out."},
        {29, Shell::Failed, "The request failed."},
        {30, Shell::Busy, "The system is busy with other requests."},
        {31, Shell::NoAssociation, "No program is associated with this file type."},
        {32, Shell::LibraryNotFound, "A required library was not found."},
        {33, Shell::Success, "Success."},
        {42, Shell::Success, "Success."},
        {1, Shell::Unknown, "Unknown error."},
        {-1, Shell::Unknown, "Unknown error."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.number);
        const ShellResult result = describeShellResult(c.number, "a.txt");
        EXPECT_EQ(result.code, c.code);
        EXPECT_EQ(result.message, c.message);
    }
}

class DllMessages : public DebugOutput {};

TEST_F(DllMessages, sayWhatIsMissing)
{
    const TestReceiver receiver;
    EXPECT_EQ(DllUtil::get()->getFunction("mdtools-no-such-library", "answer"), nullptr);
    EXPECT_EQ(DllUtil::get()->getFunction(builtLibrary("test_plugin"), "missing"), nullptr);
    EXPECT_NE(DllUtil::get()->getFunction(builtLibrary("test_plugin"), "answer"), nullptr);
    EXPECT_THAT(texts(receiver), ElementsAre("Could not load Dll \"mdtools-no-such-library\"\n",
                                             "Could not get address of function \"missing\"\n"));
}

}
