#pragma once

#include <mdtools/platform_types.h>

#include <cstdint>
#include <string>
#include <vector>

// Child processes.
namespace Tools::Platform {

enum class ShowWindow { AsProgramLikes, Show, Default, Hide };

// A command line in pieces.
struct Command {
    // The program's file, found; empty if there is none.
    std::string program;
    // Its name as the command line has it, then the arguments.
    std::vector<std::string> arguments;
};

// The file of the program with this name; empty if there is none.
using ProgramFinder = std::string (*)(const std::string& name);

// Takes a command line to pieces, for systems that do not do that themselves.
using CommandParser = Command (*)(const std::string& line, ProgramFinder findProgram);

struct StartOptions {
    // Program and arguments.
    std::string commandLine;
    CommandParser parse = nullptr;
    // Empty: the caller's own.
    std::string currentDirectory;
    // The file that the child reads as its standard input; empty: the caller's own.
    std::string inputFile;
    // What the window shows, only with ShowWindow::Show; empty is a title, too.
    std::string title;
    // 0 by 0 leaves it to the system.
    int width = 0;
    int height = 0;
    ShowWindow show = ShowWindow::AsProgramLikes;
    bool noConsoleWindow = false;
    // Normal priority whatever the caller's is.
    bool normalPriority = false;
};

// Null if the input file cannot be read or the program cannot be started.
ProcessHandle startProcess(const StartOptions& options);

// True once the process has ended; below 0 waits without limit.
bool waitForProcess(ProcessHandle process, int milliseconds);

// Of a process that has ended.
std::uint32_t getExitCode(ProcessHandle process);

// The process itself goes on; nothing of it remains when it ends.
void closeProcess(ProcessHandle process);

}
