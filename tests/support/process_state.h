#pragma once

namespace MdToolsTest {

// What this process has just now: threads; open handles or descriptors; children, ended ones that
// nobody has waited for included.
int countThreads();
int countHandles();
int countChildren();

// Asks a process to end as Ctrl-C does. Nothing happens on Windows, where that takes a console.
void interrupt(unsigned long processId);

}
