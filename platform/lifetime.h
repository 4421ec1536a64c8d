#pragma once

// platform/lifetime.h - the end of the library, and of a copy of it in a forked child.
namespace Tools::Platform {

// Who ends it.
enum class LibraryEnd {
    // The library leaves a process that goes on: no memory and no thread of it may stay.
    Unloading,
    // The process ends. Other threads may be in the middle of anything, so what they use stays.
    ProcessEnd,
    // Likewise, and the system has stopped all other threads already, wherever they were. Nothing
    // can be waited for, and what they had locked stays locked.
    ThreadsStopped
};

using EndHandler = void (*)(LibraryEnd);

// `handler` is called once, at the library's end: on Linux after all static objects have been
// destroyed, on Windows after those that were made later than the first handler. The last one
// registered is called first. So a handler does not rely on static objects.
void onLibraryEnd(EndHandler handler);

// Whether it is that end already, or as good as that: asked by those who would wait for a thread.
bool otherThreadsWereStopped();

// `handler` is called in each child that is forked and goes on in the same program. Only what is
// allowed in a signal handler is allowed in it.
void onForkedChild(void (*handler)());

// The system's part of onLibraryEnd(), used by that alone: has `run` called at the library's end.
void watchLibraryEnd(EndHandler run);

}
