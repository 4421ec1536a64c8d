#pragma once

#include <string>

// Separators in path texts. A backslash may be the second byte of a double-byte character, which is
// no separator; a slash never is.
namespace Tools::Separators {

void toSlashes(std::string& text);
void toBackslashes(std::string& text);

// Whether the text's last character is a slash of either kind.
bool endsWithOne(const std::string& text);
// Takes separators away from the end, but not those of a root.
void removeFinal(std::string& text);

// The system's path of `name` in `directory`, which may be empty.
std::string join(const std::string& directory, const std::string& name);

}
