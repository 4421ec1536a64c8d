#pragma once

#include <mdtools/export.h>

#include <string>

namespace Tools {

// A stopwatch for coarse timing, one for the process, switched off at first. It counts the
// milliseconds that pass, on a clock that nobody sets. Not to be called from several threads at
// once.
class MDTOOLS_API Clock {
public:
    // Starts it anew; without that it has been running since the process started.
    static void init();
    static void setActive(bool isActive);

    // While switched on, sends a rule, "TEXT, MILLISECONDS" and a rule again, each on a line of its
    // own, to the debug channel (debug_output.h); does nothing otherwise.
    static void outputDebug(const std::string& text);

private:
    static long ms_start;
    static bool ms_isActive;
};

}
