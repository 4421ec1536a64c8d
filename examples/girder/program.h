#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace Girder {

// Exit codes of the program.
enum class Outcome : int { Done = 0, Failed = 1, WrongUsage = 2 };

// The program without its process: arguments without the program's name, results to `out`, what
// went wrong to `errors`.
Outcome run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& errors);

}
