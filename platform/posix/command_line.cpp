#include "platform/posix/command_line.h"

#include "platform/environment.h"
#include "platform/posix/native_path.h"

#include <algorithm>
#include <climits>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool isExecutableFile(const std::string& name)
{
    struct stat status = {};
    return ::stat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(name.c_str(), X_OK) == 0;
}

std::string findOnPath(const std::string& name)
{
    std::string path;
    if (!readVariable("PATH", path))
        path = "/usr/bin:/bin";
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find(':', start), path.size());
        std::string candidate = path.substr(start, end - start);
        candidate += candidate.empty() ? name : "/" + name;
        if (isExecutableFile(candidate))
            return candidate;
        start = end + 1;
    }
    return {};
}

// For a command line that begins with a quote; the next one, or the end, ends the program.
Command parseQuoted(const std::string& line)
{
    std::size_t end = std::min(line.find('"', 1), line.size());
    std::string name = line.substr(1, end - 1);
    toSlashes(name);
    Command command;
    command.program = findProgram(name);
    // What follows without a blank is no argument, but the rest of the name that the program sees.
    for (bool quoted = true; end < line.size() && (quoted || !isBlank(line[end])); ++end) {
        if (line[end] == '"')
            quoted = !quoted;
        else
            name += line[end];
    }
    command.arguments = splitArguments(line.substr(end));
    command.arguments.insert(command.arguments.begin(), name);
    return command;
}

}

std::string findProgram(const std::string& name)
{
    if (name.empty())
        return {};
    if (isExecutableFile(name))
        return name;
    return name.find('/') == std::string::npos ? findOnPath(name) : std::string();
}

Command parseCommandLine(const std::string& line)
{
    if (line.empty())
        return {};
    if (line.front() == '"')
        return parseQuoted(line);
    // No path is longer, however many blanks the line has.
    for (std::size_t end = 0; end < std::min<std::size_t>(line.size(), PATH_MAX);) {
        end = std::min(line.find_first_of(" \t", end + 1), line.size());
        std::string name = line.substr(0, end);
        toSlashes(name);
        Command command;
        command.program = findProgram(name);
        if (command.program.empty())
            continue;
        command.arguments = splitArguments(line.substr(end));
        command.arguments.insert(command.arguments.begin(), name);
        return command;
    }
    return {};
}

std::vector<std::string> splitArguments(const std::string& text)
{
    std::vector<std::string> arguments;
    std::string argument;
    bool quoted = false;
    bool inArgument = false;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t backslashes = std::min(text.find_first_not_of('\\', i), text.size()) - i;
        i += backslashes;
        const bool atQuote = i < text.size() && text[i] == '"';
        argument.append(atQuote ? backslashes / 2 : backslashes, '\\');
        inArgument = inArgument || backslashes > 0;
        if (i >= text.size())
            break;
        const char c = text[i++];
        if (atQuote && backslashes % 2 == 0) {
            inArgument = true;
            if (quoted && i < text.size() && text[i] == '"')
                argument += text[i++];
            else
                quoted = !quoted;
        } else if (isBlank(c) && !quoted) {
            if (inArgument)
                arguments.push_back(argument);
            argument.clear();
            inArgument = false;
        } else {
            argument += c;
            if (isLeadByte(c) && i < text.size())
                argument += text[i++];
            inArgument = true;
        }
    }
    if (inArgument)
        arguments.push_back(argument);
    return arguments;
}

}
