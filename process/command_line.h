#pragma once

#include "platform/process.h"

#include <string>
#include <vector>

// Command lines as Windows takes them, for a system that wants a program and a list of arguments.
namespace Tools::CommandLine {

// Splits off the program: the text between quotes, or else the shortest part up to a blank (or the
// end) that names a program, as `findProgram` says. Blanks in front belong to the name.
Platform::Command parse(const std::string& line, Platform::ProgramFinder findProgram);

// Splits at blanks and tabs outside of quotes. Backslashes stand for themselves but before a quote:
// there each two make one, and an odd one takes the quote for a character. Two quotes inside of
// quoted text make one. The second byte of a double-byte character is no backslash.
std::vector<std::string> splitArguments(const std::string& text);

}
