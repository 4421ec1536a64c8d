#include <mdtools/process.h>

#include "platform/environment.h"
#include "platform/process.h"
#include "platform/window.h"
#include "process/command_line.h"

#include <algorithm>
#include <map>

namespace Tools {

struct Process::State {
    using Variables = std::map<std::string, std::string>;

    std::string currentDirectory = ".";
    std::string commandLine;
    std::string windowTitle = "MERODA";
    bool show = true;
    bool hideWindow = false;
    bool wait = false;
    int windowWidth = 0;
    int windowHeight = 0;
    std::uint32_t returnCode = 0;
    Variables environment;

    Variables applyEnvironment() const;
    Platform::StartOptions startOptions() const;
};

// The child inherits the environment of the caller, so the overrides are made there for the time of
// the start. What the variables held before belongs to the run, not to the object: while it waits,
// a message may run the same object once more.
Process::State::Variables Process::State::applyEnvironment() const
{
    Variables previous;
    for (const auto& [name, value] : environment) {
        Platform::readVariable(name, previous[name]);
        Platform::setVariable(name, value);
    }
    return previous;
}

namespace {

void restoreEnvironment(const std::map<std::string, std::string>& previous)
{
    for (const auto& [name, value] : previous) {
        // A variable that had no value keeps the new one: later children are to find it.
        if (!value.empty())
            Platform::setVariable(name, value);
    }
}

}

namespace {

Platform::StartOptions startOptionsFor(const std::string& commandLine)
{
    Platform::StartOptions options;
    // A NUL ends it for the system that takes it as a whole, so it does for the other one.
    options.commandLine = commandLine.substr(0, commandLine.find('\0'));
    options.parse = CommandLine::parse;
    return options;
}

}

Platform::StartOptions Process::State::startOptions() const
{
    Platform::StartOptions options = startOptionsFor(commandLine);
    options.currentDirectory = currentDirectory;
    options.noConsoleWindow = hideWindow;
    // Whatever priority the caller runs at, its children are ordinary programs.
    options.normalPriority = true;
    if (show) {
        options.title = windowTitle;
        options.show = Platform::ShowWindow::Show;
    }
    // One number alone would leave the other to chance.
    if (windowWidth != 0 && windowHeight != 0) {
        options.width = windowWidth;
        options.height = windowHeight;
    }
    return options;
}

namespace {

constexpr int WaitSlice = 1000;

// In slices, because a window of this thread must not let other threads wait for the whole time.
void waitForEnd(ProcessHandle process)
{
    while (!Platform::waitForProcess(process, WaitSlice))
        Platform::handleSentMessages();
}

}

Process::Process() : m_state(std::make_unique<State>()) {}

Process::~Process() = default;

void Process::setCommandLine(const std::string& commandLine)
{
    m_state->commandLine = commandLine;
}

void Process::setCurrentDirectory(const std::string& directory)
{
    m_state->currentDirectory = directory;
    std::replace(m_state->currentDirectory.begin(), m_state->currentDirectory.end(), '/', '\\');
}

void Process::setWindowTitle(const std::string& title)
{
    m_state->windowTitle = title;
}

void Process::setWindowSize(int width, int height)
{
    m_state->windowWidth = width;
    m_state->windowHeight = height;
}

void Process::setEnvironment(const std::string& name, const std::string& value)
{
    m_state->environment[name] = value;
}

void Process::enableShow(bool show)
{
    m_state->show = show;
}

void Process::enableHideWindow(bool hide)
{
    m_state->hideWindow = hide;
}

void Process::enableWait(bool wait)
{
    m_state->wait = wait;
}

bool Process::run()
{
    const State::Variables previous = m_state->applyEnvironment();
    const ProcessHandle process = Platform::startProcess(m_state->startOptions());
    if (process != nullptr && m_state->wait) {
        waitForEnd(process);
        m_state->returnCode = Platform::getExitCode(process);
    }
    // Restored in either case, the failed start included.
    close(process);
    restoreEnvironment(previous);
    return process != nullptr;
}

std::uint32_t Process::returnCode() const
{
    return m_state->returnCode;
}

ProcessHandle Process::start(const std::string& commandLine, bool show,
                             const std::string& inputFile)
{
    Platform::StartOptions options = startOptionsFor(commandLine);
    options.inputFile = inputFile;
    options.show = show ? Platform::ShowWindow::Default : Platform::ShowWindow::Hide;
    return Platform::startProcess(options);
}

bool Process::waitFor(ProcessHandle process, int milliseconds)
{
    if (process == nullptr)
        return false;
    return Platform::waitForProcess(process, milliseconds < 1 ? -1 : milliseconds);
}

void Process::close(ProcessHandle process)
{
    if (process != nullptr)
        Platform::closeProcess(process);
}

}
