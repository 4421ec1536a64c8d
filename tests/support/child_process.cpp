#include "support/child_process.h"

#include "support/files.h"
#include "support/waiting.h"

#include <atomic>
#include <filesystem>

namespace MdToolsTest {

namespace {

constexpr std::chrono::minutes Patience{3};

// A file, not a pipe, takes the output: a grandchild that lives on cannot hold it up.
std::string newOutputFile()
{
    static std::atomic<int> count = 0;
    return workPath("child-output-" + std::to_string(count.fetch_add(1)));
}

std::string takeFile(const std::string& name)
{
    const std::string text = readText(name);
    std::error_code ignored;
    std::filesystem::remove(name, ignored);
    return text;
}

}

ChildResult runChild(const std::string& program, const std::vector<std::string>& arguments,
                     const Variables& variables)
{
    return Child(program, arguments, variables).wait();
}

Child::Child(const std::string& program, const std::vector<std::string>& arguments,
             const Variables& variables)
    : m_program(program),
      m_output(newOutputFile()),
      m_errors(newOutputFile()),
      m_process({program, arguments, variables, m_output, m_errors})
{}

Child::~Child()
{
    if (m_process.valid()) {
        kill();
        wait();
    }
}

::testing::AssertionResult Child::waitUntil(const std::function<bool()>& condition) const
{
    bool isDead = false;
    const bool ended = MdToolsTest::waitUntil([&] {
        // Asked first: what came true just before the child's end counts.
        isDead = !isRunning();
        return condition() || isDead;
    });
    if (!ended)
        return ::testing::AssertionFailure() << "not in time";
    if (isDead && !condition())
        return ::testing::AssertionFailure() << m_program << " has ended";
    return ::testing::AssertionSuccess();
}

ChildResult Child::wait()
{
    ChildResult result;
    if (m_process.valid()) {
        std::optional<long> code = m_process.waitFor(Patience);
        if (!code) {
            ADD_FAILURE() << m_program << " did not end";
            kill();
            code = m_process.waitFor(Patience);
        }
        result.exitCode = code.value_or(-1);
    }
    result.output = takeFile(m_output);
    result.errors = takeFile(m_errors);
    return result;
}

}
