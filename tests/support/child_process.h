#pragma once

#include "support/programs.h"
#include "support/system_process.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace MdToolsTest {

struct ChildResult {
    // The exit code, whole on both platforms; 128 + n after death by signal n, -1 if the program
    // could not be started.
    long exitCode = -1;
    // What the child wrote to its standard output and its standard error, in text mode's bytes but
    // with "\n" as line end on both platforms.
    std::string output;
    std::string errors;
};

// Runs a program to its end. `program` is its path in the system's form; a Windows program is named
// without ".exe". Each argument reaches the program as it is. `variables` are set in the child
// only.
ChildResult runChild(const std::string& program, const std::vector<std::string>& arguments,
                     const Variables& variables = {});

// As runChild(), but returns at once; the destructor ends the child if it still runs.
class Child {
public:
    Child(const std::string& program, const std::vector<std::string>& arguments,
          const Variables& variables = {});
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // False if it never started, and as soon as it is dead.
    bool isRunning() const { return m_process.isRunning(); }
    unsigned long processId() const { return m_process.id(); }
    // Ends the child at once; it can neither catch this nor clean up.
    void kill() { m_process.kill(); }
    // Waits until the condition holds; fails when the time is over or, at once, when the child is
    // dead.
    ::testing::AssertionResult waitUntil(const std::function<bool()>& condition) const;
    // Waits for the end and gives what runChild() would have. A child that does not end within
    // three minutes is a failure of the test and is killed.
    ChildResult wait();

private:
    std::string m_program;
    std::string m_output;
    std::string m_errors;
    SystemProcess m_process;
};

}
