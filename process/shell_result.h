#pragma once

#include <mdtools/shell.h>

#include <string>

namespace Tools {

// What the shell's result number for `file` means.
struct ShellResult {
    Shell::ErrorCode code;
    std::string message;
};

ShellResult describeShellResult(int number, const std::string& file);

}
