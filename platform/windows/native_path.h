#pragma once

#include <cstddef>
#include <string>

namespace Tools::Platform {

// A path as the narrow calls take it: with backslashes.
std::string nativePath(const std::string& path);

// The index of the first backslash at or after `from`, which begins a character, and of the last
// one; std::string::npos if there is none. The second byte of a double-byte character is none.
std::size_t findBackslash(const std::string& path, std::size_t from);
std::size_t findLastBackslash(const std::string& path);

}
