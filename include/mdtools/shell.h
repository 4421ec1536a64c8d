#pragma once

#include <mdtools/export.h>

#include <string>

namespace Tools {

// Opens a document or starts a program as a double click on the desktop does. On Linux an
// executable file is started with the parameters; everything else, a document that happens to have
// the right to be executed included, goes to the desktop's "xdg-open", which is looked for in those
// directories of the search path that are named in full. An object belongs to one thread at a time.
class MDTOOLS_API Shell {
public:
    // The shell's own result numbers, and two of the library: 100 for success, -1 for a result that
    // is none of these.
    enum ErrorCode : int {
        Unknown = -1,
        OutOfResources = 0,
        FileNotFound = 2,
        PathNotFound = 3,
        AccessDenied = 5,
        NotEnoughMemory = 8,
        BadFormat = 11,
        SharingViolation = 26,
        AssociationIncomplete = 27,
        TimedOut = 28,
        Failed = 29,
        Busy = 30,
        NoAssociation = 31,
        LibraryNotFound = 32,
        Success = 100
    };

    Shell();
    Shell(const Shell& other);
    Shell& operator=(const Shell& other);
    virtual ~Shell();

    // Does not wait for a program's end. For a document on Linux it waits up to two seconds for
    // "xdg-open" to report that it cannot be opened; one that takes longer counts as a success.
    // Parameters reach a program only, split as on a command line.
    ErrorCode execute(const std::string& file, const std::string& parameters);
    ErrorCode execute(const std::string& file);

    // What the last execute() had to say, success included, for the user to read; empty before.
    std::string getErrorMessage() const;

private:
    std::string m_message;
};

}
