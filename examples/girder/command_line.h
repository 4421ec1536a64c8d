#pragma once

#include <map>
#include <string>
#include <vector>

namespace Girder {

// The arguments of one command, taken apart.
struct CommandLine {
    std::vector<std::string> operands;
    std::map<std::string, std::string> options; // by name, with "--"
    std::string problem;                        // what is wrong with them; empty: nothing

    // Every option in `known` takes a value.
    CommandLine(const std::vector<std::string>& arguments, const std::vector<std::string>& known);

    // Empty if the option was not given.
    std::string option(const std::string& name) const;
};

}
