#pragma once

#include "platform/process.h"

#include <string>

// program.h - programs as a program and a list of arguments.
namespace Tools::Platform {

// The file of a program: `name` itself if that is an executable file, else, where it has no slash,
// the first on the search path. Empty if there is none.
std::string findProgram(const std::string& name);

// The file of a program that the library starts by itself: in the directories of the search path
// that are named in full, never in whatever directory is the current one.
std::string findOwnTool(const std::string& name);

// As startProcess(), in the caller's directory and with its standard input. Null if there is no
// program or it cannot be started; `cause` is the errno of that.
ProcessHandle startCommand(const Command& command, int& cause);

}
