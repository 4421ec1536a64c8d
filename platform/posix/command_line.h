#pragma once

#include <mdtools/platform_types.h>

#include <string>
#include <vector>

// Command lines as Windows takes them, on a system that wants a program and a list of arguments.
namespace Tools::Platform {

struct Command {
    // The program's file, found; empty if there is none.
    std::string program;
    // Its name as the command line has it, then the arguments.
    std::vector<std::string> arguments;
};

// Splits off the program: the text between quotes, or else the shortest part up to a blank (or the
// end) that names a program, first as given, then on the search path. Blanks in front belong to the
// name.
Command parseCommandLine(const std::string& line);

// Splits at blanks and tabs outside of quotes. Backslashes stand for themselves but before a quote:
// there each two make one, and an odd one takes the quote for a character. Two quotes inside of
// quoted text make one. The second byte of a double-byte character is no backslash.
std::vector<std::string> splitArguments(const std::string& text);

// The file of a program: `name` itself if that is an executable file, else, where it has no slash,
// the first on the search path. Empty if there is none.
std::string findProgram(const std::string& name);

// As startProcess(), in the caller's directory and with its standard input. Null if there is no
// program or it cannot be started.
ProcessHandle startCommand(const Command& command);

}
