#pragma once

#include <mdtools/export.h>
#include <mdtools/platform_types.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Tools {

// Starts another program. Set what differs from the defaults, then run() as often as wanted.
//
// The program is the first part of the command line: the text between quotes, or the shortest part
// up to a blank that names a program, first as given, then on the search path; a path with blanks
// is better quoted by the caller. Linux finds it and splits the arguments by the same rules as
// Windows, and takes "\" in the program's path for "/".
//
// An object belongs to one thread at a time; the static functions may be called from any. Overrides
// of the environment are made in the calling process itself, so two threads that run programs with
// overrides at the same time find each other's in their children. Nothing that the library has open
// is handed to a child.
class MDTOOLS_API Process {
public:
    Process();
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // Program and arguments, up to the first NUL; empty at first. Nothing is quoted or escaped by
    // the library.
    void setCommandLine(const std::string& commandLine);
    // Where the program starts; "." at first.
    void setCurrentDirectory(const std::string& directory);
    // Title ("MERODA" at first) and size in pixels of the program's console window. A size takes
    // effect only where neither number is 0. Without meaning on Linux, as are the two flags below.
    void setWindowTitle(const std::string& title);
    void setWindowSize(int width, int height);

    // The program finds `value` in the environment variable `name`. When run() is over, a variable
    // that had a value before has it again; one that had none keeps the new value, also in the
    // calling process: programs hand settings on to later children this way.
    void setEnvironment(const std::string& name, const std::string& value);

    // Show the window (true at first); give a console program no window (false at first).
    void enableShow(bool show);
    void enableHideWindow(bool hide);
    // Let run() wait for the program's end (false at first). Window messages that other threads
    // send to the calling thread's windows are handled meanwhile, about once a second; a handler
    // may change this object and run it again.
    void enableWait(bool wait);

    // True if the program was started. Variables are restored in either case.
    bool run();
    // The exit code of the last run that was waited for; 0 before. On Linux 128 + n after death by
    // signal n.
    std::uint32_t returnCode() const;

    // Starts a program in the caller's directory and environment, with the content of `inputFile`
    // as its standard input unless that is empty. Null if the file cannot be read or the program
    // not started; else a handle that the caller owns and frees with close().
    static ProcessHandle start(const std::string& commandLine, bool show,
                               const std::string& inputFile);
    // True if the process has ended within the time; again and again for an ended one. Below 1
    // there is no limit. False for null.
    static bool waitFor(ProcessHandle process, int milliseconds);
    // Frees the handle; the program goes on. Null is ignored.
    static void close(ProcessHandle process);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}
