#pragma once

namespace MdToolsTest {

// A write to a file that is open for appending goes to the end in one step, as both systems
// promise. Wine finds the end first and writes there afterwards, so that programs overwrite each
// other's lines.
bool appendsInOneStep();

// Asks a process to end as Ctrl-C does. Nothing happens on Windows, where that takes a console.
void interrupt(unsigned long processId);

}
