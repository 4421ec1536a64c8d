#include "command_line.h"

#include <algorithm>

namespace Girder {

CommandLine::CommandLine(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& known)
{
    for (std::size_t i = 0; i < arguments.size() && problem.empty(); ++i) {
        const std::string& argument = arguments[i];
        if (!argument.starts_with("--"))
            operands.push_back(argument);
        else if (std::find(known.begin(), known.end(), argument) == known.end())
            problem = "there is no option \"" + argument + "\" here";
        else if (i + 1 == arguments.size() || arguments[i + 1].empty())
            problem = "\"" + argument + "\" needs a value";
        else
            options[argument] = arguments[++i];
    }
}

std::string CommandLine::option(const std::string& name) const
{
    const auto found = options.find(name);
    return found == options.end() ? "" : found->second;
}

}
