#pragma once

#include <string>
#include <vector>

namespace Tools {

// One string of a module's version information; `language` is its key of eight hexadecimal digits,
// the text is in the code page.
struct ModuleString {
    std::string language;
    std::string name;
    std::string text;
};

// All version strings of a Windows module (its version resource) or of a stamped ELF module, in the
// file's order. Empty for every other file, and for one whose offsets lead nowhere. Our own reader
// on Windows too: the system's does not survive every damaged file.
std::vector<ModuleString> readModuleStrings(const std::string& file);

}
