#include "support/system_process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

// The header forgets that it may be read by C++.
extern "C" {
#include <sys/pidfd.h>
}

namespace MdToolsTest {

namespace {

void redirect(int target, const char* name, int flags)
{
    const int file = ::open(name, flags, 0600);
    if (file < 0)
        ::_exit(126);
    ::dup2(file, target);
    ::close(file);
}

// The descriptor of a process becomes readable with its end.
bool hasEnded(std::intptr_t descriptor, std::chrono::milliseconds time)
{
    struct pollfd process = {static_cast<int>(descriptor), POLLIN, 0};
    int ready = 0;
    do
        ready = ::poll(&process, 1, static_cast<int>(time.count()));
    while (ready < 0 && errno == EINTR);
    return ready == 1;
}

}

// The child of a process with threads may call little before exec. setenv() is not among that, but
// works, as no test changes the environment meanwhile.
SystemProcess::SystemProcess(const Start& start)
{
    std::vector<char*> arguments{const_cast<char*>(start.program.c_str())};
    for (const std::string& argument : start.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);

    // So that a missing program is one that did not start, as on Windows.
    if (::access(start.program.c_str(), X_OK) != 0)
        return;
    const pid_t process = ::fork();
    if (process > 0) {
        m_id = static_cast<unsigned long>(process);
        m_handle = ::pidfd_open(process, 0);
    }
    if (process != 0)
        return;
    for (const auto& variable : start.variables)
        ::setenv(variable.first.c_str(), variable.second.c_str(), 1);
    redirect(STDIN_FILENO, "/dev/null", O_RDONLY);
    redirect(STDOUT_FILENO, start.output.c_str(), O_WRONLY | O_CREAT | O_TRUNC);
    redirect(STDERR_FILENO, start.errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC);
    ::execv(start.program.c_str(), arguments.data());
    ::_exit(127);
}

SystemProcess::~SystemProcess()
{
    if (valid())
        ::close(static_cast<int>(m_handle));
}

bool SystemProcess::isRunning() const
{
    return valid() && !hasEnded(m_handle, std::chrono::milliseconds(0));
}

void SystemProcess::kill()
{
    if (valid())
        ::pidfd_send_signal(static_cast<int>(m_handle), SIGKILL, nullptr, 0);
}

std::optional<long> SystemProcess::waitFor(std::chrono::milliseconds time)
{
    if (!hasEnded(m_handle, time))
        return std::nullopt;
    int status = 0;
    ::waitpid(static_cast<pid_t>(m_id), &status, 0);
    ::close(static_cast<int>(m_handle));
    m_handle = None;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}
