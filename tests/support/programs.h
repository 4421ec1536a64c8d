#pragma once

#include <string>

namespace MdToolsTest {

// The path of the running test program itself, for tests that start themselves as a child.
std::string ownProgram();

// The path of another program of this build (a tool, an example), which lies beside the test.
std::string builtProgram(const std::string& name);
// The same for a library, by its target's name.
std::string builtLibrary(const std::string& target);
// The same for the library under test.
std::string libraryPath();

// Between the directories of the search path.
extern const char PathSeparator;

}
