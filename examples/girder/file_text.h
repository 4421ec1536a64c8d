#pragma once

#include <string>

namespace Girder {

// All bytes of a file. False if it cannot be read to its end.
bool readFile(const std::string& file, std::string& text);

// Replaces or makes the file. False if not all of the text reached it.
bool writeFile(const std::string& file, const std::string& text);
// The same with the platform's line ends, for what other programs print or send.
bool writeTextFile(const std::string& file, const std::string& text);

}
