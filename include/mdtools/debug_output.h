#pragma once

#include <mdtools/export.h>

#include <cstdarg>
#include <string>

// Tracing to a receiver program on the same desktop (mdtools-receiver is one). A process looks for
// the receiver once, at its first trace; without one every call costs a single test, and a receiver
// started later is not noticed. With one, a message is formatted as printf does it, cut into its
// lines, and each line is handed over before the call returns: what was traced before a crash has
// been seen by the receiver.
//
// A line, or the rest of a message that does not end in a line feed, may have 4,095 bytes; of a
// longer one the first 4,095 bytes are sent, and the message ends there. A message that has more
// than 65,535 characters once it is formatted, or that cannot be formatted, is not sent at all. A
// null format sends nothing. Nothing is reported to the caller; a receiver that hangs holds up the
// calling thread, one that ends does not. When the receiver ends, what was not handed over is lost,
// and so is all that the process traces from then on, also when another receiver is started.
//
// Every function here may be called from several threads at once, and by destructors of static
// objects; each message arrives whole. A message sent while its own thread is still sending
// another one (a window procedure called meanwhile) follows after that one.

namespace Tools {

MDTOOLS_API void debugPrintf(const char* format, ...);
MDTOOLS_API void debugVPrintf(const char* format, va_list args);

// Sent only if `label` is null or one of the labels that the user has switched on; letter case does
// not matter. The labels are the texts of the registry value "DebugLabels" (a multi-string) in
// "Software\MERODA\Settings" of the current user or, if there are none, of the local machine. They
// are read once, when the first label is looked up.
MDTOOLS_API void debugPrintfLabel(const char* label, const char* format, ...);
MDTOOLS_API void debugVPrintfLabel(const char* label, const char* format, va_list args);

// The sender's end: the process's connection to the receiver, on which the functions above send.
class MDTOOLS_API DebugReceiver {
public:
    // Connects at the first use; never null.
    static DebugReceiver* get();

    void printf(const char* format, ...) const;
    void vprintf(const char* format, va_list args) const;
    void printfLabel(const char* label, const char* format, ...) const;
    // Unlike its siblings it sends whatever the label is; callers that have checked the label
    // themselves rely on that.
    void vprintfLabel(const char* label, const char* format, va_list args) const;

    // True for a null label and for one that is switched on, with or without a receiver.
    bool checkLabel(const char* label) const;
    // True if a receiver was running when the process looked for it.
    bool checkWindow() const;

    DebugReceiver(const DebugReceiver&) = delete;
    DebugReceiver& operator=(const DebugReceiver&) = delete;

private:
    DebugReceiver() = default;
    ~DebugReceiver() = default;
};

// What a receiver program shows beside a message: the local date and time as " 03.07.2026
// 09:05:12". The blank in front is part of the text.
class MDTOOLS_API DebugReceiverHelper {
public:
    static std::string getDateAndTime();
    static std::string getDateAndTimeA();
    static std::wstring getDateAndTimeW();
};

}

// The same for callers that do not use the namespace.
MDTOOLS_API void MdDebugPrintf(const char* format, ...);
MDTOOLS_API void MdDebugPrintfLabel(const char* label, const char* format, ...);
MDTOOLS_API void MdDebugVPrintf(const char* format, va_list args);
MDTOOLS_API void MdDebugVPrintfLabel(const char* label, const char* format, va_list args);
