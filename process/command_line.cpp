#include "process/command_line.h"

#include "files/separators.h"
#include "text/code_page.h"

#include <algorithm>

namespace Tools::CommandLine {

using Platform::Command;
using Platform::ProgramFinder;

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

// For a command line that begins with a quote; the next one, or the end, ends the program.
Command parseQuoted(const std::string& line, ProgramFinder findProgram)
{
    std::size_t end = std::min(line.find('"', 1), line.size());
    std::string name = line.substr(1, end - 1);
    Separators::toSlashes(name);
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

Command parse(const std::string& line, ProgramFinder findProgram)
{
    if (line.empty())
        return {};
    if (line.front() == '"')
        return parseQuoted(line, findProgram);
    // No path is longer, however many blanks the line has.
    constexpr std::size_t LongestPath = 4096;
    for (std::size_t end = 0; end < std::min(line.size(), LongestPath);) {
        end = std::min(line.find_first_of(" \t", end + 1), line.size());
        std::string name = line.substr(0, end);
        Separators::toSlashes(name);
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

// A state machine over the characters: in or out of quotes, in an argument or between two. A run of
// backslashes is read at once, as the character after it decides what it means.
std::vector<std::string> splitArguments(const std::string& text)
{
    const CodePage::ByteFlags& isLead = CodePage::get().leadBytes();
    std::vector<std::string> arguments;
    std::string argument;
    bool quoted = false;
    bool inArgument = false;
    for (std::size_t i = 0; i < text.size();) {
        // 2n backslashes before a quote are n and the quote counts; 2n + 1 are n and a plain quote.
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
            if (isLead[static_cast<unsigned char>(c)] && i < text.size())
                argument += text[i++];
            inArgument = true;
        }
    }
    if (inArgument)
        arguments.push_back(argument);
    return arguments;
}

}
