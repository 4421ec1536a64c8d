#pragma once

#include <mdtools/export.h>

#include <string>

// Well-known directories. What the system itself tells comes in the system's own form.
namespace Tools {

// The family's directory among the current user's application data, made if it is missing. Without
// a final separator; empty if the system has no such place.
MDTOOLS_API std::string getUserDirectory();

// The system's directory of temporary files, with a final separator.
MDTOOLS_API std::string getTempPath();

// Makes an empty file with a new name in getTempPath() and returns its path; the caller removes it.
// Empty if that failed.
MDTOOLS_API std::string getTempFilePath();

// The name the user logged in with; empty if the system knows none.
MDTOOLS_API std::string getUserName();

}
