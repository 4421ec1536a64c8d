#pragma once

#include <string>
#include <utility>
#include <vector>

namespace MdToolsTest {

struct ChildResult {
    bool started = false;
    // The exit code, whole on both platforms; 128 + n after death by signal n.
    long exitCode = -1;
    // What the child wrote to its standard output and its standard error, in text mode's bytes but
    // with "\n" as line end on both platforms.
    std::string output;
    std::string errors;
};

using Variables = std::vector<std::pair<std::string, std::string>>;

// Runs a program to its end. `program` is its path in the system's form; a Windows program is named
// without ".exe". Each argument reaches the program as it is. `variables` are set in the child
// only.
ChildResult runChild(const std::string& program, const std::vector<std::string>& arguments,
                     const Variables& variables = {});

// The path of the running test program itself, for tests that start themselves as a child.
std::string ownProgram();

// The path of another program of this build (a tool, an example), which stands beside the test.
std::string builtProgram(const std::string& name);
// The same for a library, by its target's name.
std::string builtLibrary(const std::string& target);

// Between the directories of the search path.
extern const char PathSeparator;

// As runChild(), but returns at once; the destructor ends the child if it still runs.
class Child {
public:
    Child(const std::string& program, const std::vector<std::string>& arguments,
          const Variables& variables = {});
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    bool started() const;
    unsigned long processId() const;
    // Ends the child at once, as nothing can be caught or cleaned up by it.
    void kill();
    // Waits for the end and gives what runChild() would have.
    ChildResult wait();

private:
    struct State;
    State* m_state;
};

}
