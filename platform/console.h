#pragma once

#include <cstddef>

// console.h - what a console program of this project asks of the system; no part of the library.
namespace Tools::Platform {

// Writes the very bytes to the standard output, past any buffer. False if nobody takes them: the
// reader is gone or, on Linux, does not read when the program is to end.
bool writeStandardOutput(const char* text, std::size_t size);

// The standard error output is seen by somebody, not written to a file or another program.
bool isTerminal();

// `handler` is called when the user or the system asks the program to end: Ctrl-C, the end of the
// session; on Linux also a time that endAfter() has set. It may run at any moment, on any thread,
// and do only what a signal handler may.
void onEndRequest(void (*handler)());

// The program is to end after that time, even if it hangs in writeStandardOutput() then.
void endAfter(unsigned int seconds);

}
