#include "platform/process.h"

#include "platform/filesystem.h"
#include "platform/posix/environment.h"
#include "platform/posix/file_access.h"
#include "platform/posix/native_path.h"
#include "platform/posix/program.h"
#include "platform/posix/reaper.h"
#include "platform/posix/retry.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

// Early versions of this header do not say that its functions are C.
extern "C" {
#include <sys/pidfd.h>
}

namespace Tools::Platform {

namespace {

using Clock = std::chrono::steady_clock;

// What a process handle points to. Only this child is ever waited for, so that other children of
// the program keep their exit status for whoever started them.
struct ChildProcess {
    pid_t id = -1;
    // Readable once the process has ended; none where the kernel has no such descriptors.
    FileDescriptor descriptor;
    std::mutex mutex;
    bool ended = false;
    std::uint32_t exitCode = 0;
};

std::uint32_t toExitCode(int status)
{
    constexpr int SignalBase = 128;
    const int code = WIFSIGNALED(status) ? SignalBase + WTERMSIG(status) : WEXITSTATUS(status);
    return static_cast<std::uint32_t>(code);
}

// Takes the exit status, once, if there is one. A child whose status is gone (the program ignores
// its children's ends) counts as ended with 0.
bool takeExitCode(ChildProcess& child)
{
    const std::lock_guard<std::mutex> lock(child.mutex);
    if (child.ended)
        return true;
    int status = 0;
    const pid_t result = retryInterrupted([&] { return ::waitpid(child.id, &status, WNOHANG); });
    if (result == 0)
        return false;
    child.ended = true;
    child.exitCode = result > 0 ? toExitCode(status) : 0;
    return true;
}

// Milliseconds that are left; below 0 without a limit.
int timeLeft(Clock::time_point end, int milliseconds)
{
    if (milliseconds < 0)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    return static_cast<int>(std::max<std::int64_t>(left, 0));
}

// Returns when the child may have ended, or after the time.
void sleepForEnd(const ChildProcess& child, int milliseconds)
{
    if (!child.descriptor.valid()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return;
    }
    pollfd entry = {child.descriptor.get(), POLLIN, 0};
    ::poll(&entry, 1, milliseconds);
}

// The paths of a child that starts elsewhere must not be taken from there.
std::string absolute(const std::string& path)
{
    if (path.empty() || path.front() == '/')
        return path;
    std::string directory(256, '\0');
    while (::getcwd(directory.data(), directory.size()) == nullptr) {
        if (errno != ERANGE)
            return path;
        directory.resize(2 * directory.size());
    }
    directory.resize(directory.find('\0'));
    return directory + "/" + path;
}

// What is done in the child before the program starts.
class FileActions {
public:
    FileActions() { ::posix_spawn_file_actions_init(&m_actions); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    void readFrom(int descriptor)
    {
        ::posix_spawn_file_actions_adddup2(&m_actions, descriptor, STDIN_FILENO);
    }
    void startIn(const std::string& directory)
    {
        ::posix_spawn_file_actions_addchdir_np(&m_actions, directory.c_str());
    }
    const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions = {};
};

// The child takes signals, though the calling thread may be one of the library's, which take none.
class Attributes {
public:
    Attributes()
    {
        sigset_t none;
        ::sigemptyset(&none);
        ::posix_spawnattr_init(&m_attributes);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK);
    }
    ~Attributes() { ::posix_spawnattr_destroy(&m_attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes = {};
};

// -1 with a cause if it fails.
pid_t spawn(const Command& command, const FileActions& actions, int& cause)
{
    const Attributes attributes;
    std::vector<char*> arguments;
    for (const std::string& argument : command.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    // A copy: another thread may change a variable while the child is being made.
    const std::vector<char*> environment = copyEnvironment();
    pid_t id = -1;
    cause = ::posix_spawn(&id, command.program.c_str(), actions.get(), attributes.get(),
                          arguments.data(), environment.data());
    return cause == 0 ? id : -1;
}

// The pidfd names this very child, even if its number should be used again after its end.
ProcessHandle start(const Command& command, const FileActions& actions, int& cause)
{
    const pid_t id = spawn(command, actions, cause);
    if (id <= 0)
        return nullptr;
    auto* child = new ChildProcess;
    child->id = id;
    child->descriptor = FileDescriptor(::pidfd_open(id, 0));
    return child;
}

// A handle is the pointer itself; it is the caller's until closeProcess().
ChildProcess& fromHandle(ProcessHandle process)
{
    return *static_cast<ChildProcess*>(process);
}

}

ProcessHandle startProcess(const StartOptions& options)
{
    Command command = options.parse(options.commandLine, findProgram);
    if (command.program.empty())
        return nullptr;
    FileActions actions;
    FileDescriptor input;
    if (!options.inputFile.empty()) {
        // Without O_NONBLOCK a pipe that nobody writes to would hold up the program.
        input = NativePath(options.inputFile).open(O_RDONLY | O_NONBLOCK);
        // The child shares the lock: its input is not written to while it reads.
        if (!input.valid() || isDirectory(options.inputFile) ||
            !lockFile(input.get(), FileLock::Shared))
            return nullptr;
        ::fcntl(input.get(), F_SETFL, 0);
        actions.readFrom(input.get());
    }
    std::string directory = options.currentDirectory;
    toSlashes(directory);
    if (!directory.empty() && directory != ".") {
        // The child changes the directory before it starts the program.
        command.program = absolute(command.program);
        actions.startIn(directory);
    }
    int cause = 0;
    return start(command, actions, cause);
}

ProcessHandle startCommand(const Command& command, int& cause)
{
    cause = ENOENT;
    return command.program.empty() ? nullptr : start(command, FileActions(), cause);
}

bool waitForProcess(ProcessHandle process, int milliseconds)
{
    ChildProcess& child = fromHandle(process);
    const Clock::time_point end =
        Clock::now() + std::chrono::milliseconds(std::max(milliseconds, 0));
    while (!takeExitCode(child)) {
        const int left = timeLeft(end, milliseconds);
        if (left == 0)
            return false;
        sleepForEnd(child, left);
    }
    return true;
}

std::uint32_t getExitCode(ProcessHandle process)
{
    ChildProcess& child = fromHandle(process);
    const std::lock_guard<std::mutex> lock(child.mutex);
    return child.exitCode;
}

void closeProcess(ProcessHandle process)
{
    ChildProcess& child = fromHandle(process);
    if (!takeExitCode(child))
        reapLater(child.id, std::move(child.descriptor));
    delete &child;
}

}
