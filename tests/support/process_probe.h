#pragma once

namespace MdToolsTest {

// Runs `function` in a child that is forked and goes on in this program, and gives its result,
// which is not negative. Less than 0 where processes do not fork.
long runForked(int (*function)());

// A write to a file that is open for appending goes to the end in one step, as both systems
// promise. Wine finds the end first and writes there afterwards, so that programs overwrite each
// other's lines.
bool appendsInOneStep();

// Asks a process to end as Ctrl-C does. Nothing happens on Windows, where that takes a console.
void interrupt(unsigned long processId);

// A thread that waits for the answer to a trace handles messages to its windows meanwhile.
bool handlesMessagesWhileTracing();

// How many handles or descriptors this process holds just now.
int countHandles();

}
