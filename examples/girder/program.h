#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace Girder {

// Exit codes of the program.
enum class Outcome : int { Done = 0, Failed = 1, WrongUsage = 2, Interrupted = 130 };

// Where the program reads commands from, and where results and faults go.
struct Console {
    std::istream& in;
    std::ostream& out;
    std::ostream& errors;
    // Somebody watches `errors`: progress may be shown there.
    bool isTerminal = false;
};

// The program without its process; arguments without the program's name.
Outcome run(const std::vector<std::string>& arguments, Console console);

}
