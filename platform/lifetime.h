#pragma once

// lifetime.h - the moments at which the library has to let go of what it shares with others.
namespace Tools::Platform {

// `handler` is called once, when the library is unloaded, or at the end of the process after the
// destructors of the program's static objects. The last one registered is called first.
void onLibraryEnd(void (*handler)());

// At the end of a process the system may have stopped its other threads, wherever they were, before
// the handlers are called.
bool otherThreadsWereStopped();

// `handler` is called in each child that is forked and goes on in the same program. Only what is
// allowed in a signal handler is allowed in it.
void onForkedChild(void (*handler)());

}
