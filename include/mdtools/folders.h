#pragma once

#include <mdtools/export.h>

#include <cstddef>
#include <string>

// Well-known directories. What the system itself reports comes in the system's own form. All
// functions may be called from any thread; settings and variables are read anew by each call. Texts
// are in the process's code page.
namespace Tools {

// Where the program family is installed, as the machine's settings have it, without a final
// separator; empty if nothing is set. If the directory has a sibling of the same name followed by
// "26", that one is it. With `useGroupKey` only the setting of the company group counts, even if it
// is missing.
MDTOOLS_API std::string getInstallationDirectory(bool useGroupKey);

// The same without the group's setting, into a buffer of `size` bytes. False, with an empty text in
// the buffer, if nothing is set or the buffer is too small; false for null.
MDTOOLS_API bool getInstallationDirectory(char* buffer, std::size_t size);

// Where the machine's settings say the family's data was installed; empty if nothing is set.
MDTOOLS_API std::string getInstalledDataDirectory();

// The family's directory among the current user's application data, made if it is missing. Without
// a final separator; empty if the system has no such directory.
MDTOOLS_API std::string getUserDirectory();

// The earlier rule, for programs that keep to it: the directory that the user's settings name, if
// it exists; else the home directory named by HOMEDRIVE and HOMEPATH; else one of the user's name
// below the installation directory.
MDTOOLS_API std::string getUserDirectoryOld();

// The system's directory of temporary files, with a final separator.
MDTOOLS_API std::string getTempPath();

// Makes an empty file with a new name in getTempPath() and returns its path; the caller removes it.
// Empty if that failed.
MDTOOLS_API std::string getTempFilePath();

// The name the user logged in with; empty if the system knows none.
MDTOOLS_API std::string getUserName();

}
