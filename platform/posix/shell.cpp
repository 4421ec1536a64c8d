#include "platform/shell.h"

#include "platform/posix/native_path.h"
#include "platform/posix/program.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

// The shell's result numbers on Windows.
constexpr int FileNotFound = 2;
constexpr int PathNotFound = 3;
constexpr int AccessDenied = 5;
constexpr int BadFormat = 11;
constexpr int Failed = 29;
constexpr int NoAssociation = 31;
constexpr int Success = 33;

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// "https://…" or "mailto:…"; a single letter before the colon is a drive.
bool isUrl(const std::string& text)
{
    const std::size_t colon = text.find(':');
    return colon != std::string::npos && colon > 1 && isLetter(text.front()) &&
           std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(colon), [](char c) {
               return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
           });
}

// By the rights that the process has just now, which need not be those of the user who started it.
bool isAllowed(const std::string& path, int access)
{
    return ::faccessat(AT_FDCWD, path.c_str(), access, AT_EACCESS) == 0;
}

// Why a file cannot be reached.
int missingCode(const std::string& path)
{
    if (errno == EACCES)
        return AccessDenied;
    const std::size_t slash = path.rfind('/');
    struct stat status = {};
    if (slash == std::string::npos || slash == 0)
        return FileNotFound;
    const bool parentExists =
        ::stat(path.substr(0, slash).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    return parentExists ? FileNotFound : PathNotFound;
}

// What xdg-open reports within a moment; one that goes on has found something to open the file
// with.
int openWithDesktop(const std::string& file)
{
    constexpr int Moment = 2000;
    int cause = 0;
    // A name that begins with "-" must not be taken for an option.
    const std::string argument = file.front() == '-' ? "./" + file : file;
    const ProcessHandle process =
        startCommand({findOwnTool("xdg-open"), {"xdg-open", argument}}, cause);
    if (process == nullptr)
        return NoAssociation;
    const std::uint32_t code = waitForProcess(process, Moment) ? getExitCode(process) : 0;
    closeProcess(process);
    // xdg-open(1): 2 no such file, 3 no tool for it, 4 the tool failed.
    switch (code) {
    case 0:
        return Success;
    case 2:
        return FileNotFound;
    case 3:
        return NoAssociation;
    default:
        return Failed;
    }
}

// Disks of other systems give each file the right to be executed: what the system does not know as
// a program is a document.
int startFile(const std::string& program, std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), program);
    int cause = 0;
    const ProcessHandle process = startCommand({program, std::move(arguments)}, cause);
    if (process == nullptr)
        return cause == ENOEXEC ? openWithDesktop(program) : BadFormat;
    closeProcess(process);
    return Success;
}

}

int shellExecute(const std::string& file, const std::string& parameters, ArgumentSplitter split)
{
    if (isUrl(file))
        return openWithDesktop(file);
    std::string path = file;
    toSlashes(path);
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        const int code = missingCode(path);
        const std::string program = findProgram(path);
        return program.empty() ? code : startFile(program, split(parameters));
    }
    if (S_ISREG(status.st_mode) && isAllowed(path, X_OK))
        return startFile(path, split(parameters));
    if (!isAllowed(path, R_OK))
        return AccessDenied;
    return openWithDesktop(path);
}

}
