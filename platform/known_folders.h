#pragma once

#include <string>

// What the system knows about the user and its directories, in the system's own form.
namespace Tools::Platform {

// Where programs keep the user's data, without a final separator; empty if there is none. The first
// makes it on a new account, where it may be missing; the second only says where it is.
std::string applicationDataDirectory();
std::string applicationDataPath();

// Ends with a separator; never empty.
std::string temporaryDirectory();

// Makes an empty file with a name of its own that begins with the first three characters of
// `prefix`, for this user alone, in the directory of temporary files. Its path, empty if that
// failed.
std::string createTemporaryFile(const std::string& prefix);

// Empty if the system knows no name.
std::string userName();

}
