// What only this platform has: the data that a program is started with.
#include <mdtools/process.h>

#include "support/child_process.h"
#include "support/files.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include <windows.h>

namespace {

using Tools::Process;

// What the started program finds, as it records it.
TEST(Process, startUpData)
{
    struct Case {
        const char* name;
        std::function<void(Process&)> prepare;
        const char* record;
    };
    const Case cases[] = {
        {"defaults", [](Process&) {}, "title MERODA\nshow 5\npriority normal\nown console 0\n"},
        {"title", [](Process& p) { p.setWindowTitle("Hall 7"); },
         "title Hall 7\nshow 5\npriority normal\nown console 0\n"},
        {"size", [](Process& p) { p.setWindowSize(640, 480); },
         "title MERODA\nshow 5\nsize 640 480\npriority normal\nown console 0\n"},
        {"half a size", [](Process& p) { p.setWindowSize(640, 0); },
         "title MERODA\nshow 5\npriority normal\nown console 0\n"},
        {"no show", [](Process& p) { p.enableShow(false); }, "priority normal\nown console 0\n"},
        {"no window", [](Process& p) { p.enableHideWindow(true); },
         "title MERODA\nshow 5\npriority normal\nown console 1\n"},
    };
    // Whatever the caller's own priority is.
    ::SetPriorityClass(::GetCurrentProcess(), BELOW_NORMAL_PRIORITY_CLASS);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string record = MdToolsTest::workPath("startup");
        Process process;
        process.setCommandLine("\"" + MdToolsTest::builtProgram("test_startup_program") + "\" \"" +
                               record + "\"");
        process.enableWait(true);
        c.prepare(process);
        EXPECT_TRUE(process.run());
        EXPECT_EQ(process.returnCode(), 0U);
        EXPECT_EQ(MdToolsTest::readText(record), c.record);
    }
    ::SetPriorityClass(::GetCurrentProcess(), NORMAL_PRIORITY_CLASS);
}

}
