#include <mdtools/shell.h>

#include "platform/shell.h"
#include "process/command_line.h"
#include "process/shell_result.h"

#include <mdtext/mdtext.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace Tools {

namespace {

constexpr int LastFailure = 32;
constexpr unsigned SuccessText = 7053;
constexpr unsigned UnknownText = 7054;

struct Row {
    Shell::ErrorCode code;
    unsigned text;
};

constexpr Row Failures[] = {
    {Shell::OutOfResources, 7037},
    {Shell::FileNotFound, 7041},
    {Shell::PathNotFound, 7042},
    {Shell::AccessDenied, 7043},
    {Shell::NotEnoughMemory, 7044},
    {Shell::BadFormat, 7045},
    {Shell::SharingViolation, 7046},
    {Shell::AssociationIncomplete, 7047},
    {Shell::TimedOut, 7048},
    {Shell::Failed, 7049},
    {Shell::Busy, 7050},
    {Shell::NoAssociation, 7051},
    {Shell::LibraryNotFound, 7052},
};

// Every number above the failures is a success; a failure without a row is unknown.
Row toRow(int result)
{
    if (result > LastFailure)
        return {Shell::Success, SuccessText};
    const auto* found =
        std::find_if(std::begin(Failures), std::end(Failures),
                     [result](const Row& row) { return static_cast<int>(row.code) == result; });
    return found != std::end(Failures) ? *found : Row{Shell::Unknown, UnknownText};
}

}

ShellResult describeShellResult(int number, const std::string& file)
{
    const Row row = toRow(number);
    // Two of the texts end where the file's name belongs.
    std::string message = MdText::LoadGui(row.text);
    if (row.code == Shell::FileNotFound)
        message += file;
    else if (row.code == Shell::AccessDenied)
        message += file + ".";
    return {row.code, message};
}

Shell::Shell() = default;
Shell::Shell(const Shell& other) = default;
Shell& Shell::operator=(const Shell& other) = default;
Shell::~Shell() = default;

Shell::ErrorCode Shell::execute(const std::string& file, const std::string& parameters)
{
    ShellResult result = describeShellResult(
        Platform::shellExecute(file, parameters, CommandLine::splitArguments), file);
    m_message = std::move(result.message);
    return result.code;
}

Shell::ErrorCode Shell::execute(const std::string& file)
{
    return execute(file, std::string());
}

std::string Shell::getErrorMessage() const
{
    return m_message;
}

}
