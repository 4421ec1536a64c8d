#include "support/child_process.h"

#include "support/test_environment.h"

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace MdToolsTest {

namespace {

// A file, not a pipe, takes the output: a grandchild that lives on cannot hold it up.
std::string newOutputFile()
{
    static std::atomic<int> count = 0;
    return (std::filesystem::path(workDirectory()) /
            ("child-output-" + std::to_string(count.fetch_add(1))))
        .string();
}

std::string takeFile(const std::string& name)
{
    std::string text;
    {
        std::ifstream file(name);
        std::ostringstream content;
        content << file.rdbuf();
        text = content.str();
    }
    std::error_code ignored;
    std::filesystem::remove(name, ignored);
    return text;
}

}

#ifdef _WIN32
const char PathSeparator = ';';
#else
const char PathSeparator = ':';
#endif

namespace {

std::string besideOwnProgram(const std::string& file)
{
    return (std::filesystem::path(ownProgram()).parent_path() / file).string();
}

}

std::string builtProgram(const std::string& name)
{
#ifdef _WIN32
    return besideOwnProgram(name + ".exe");
#else
    return besideOwnProgram(name);
#endif
}

std::string builtLibrary(const std::string& target)
{
#ifdef _WIN32
    return besideOwnProgram("lib" + target + ".dll");
#else
    return besideOwnProgram("lib" + target + ".so");
#endif
}

ChildResult runChild(const std::string& program, const std::vector<std::string>& arguments,
                     const Variables& variables)
{
    return Child(program, arguments, variables).wait();
}

#ifdef _WIN32

struct Child::State {
    HANDLE process = nullptr;
    DWORD processId = 0;
    std::string output = newOutputFile();
    std::string errors = newOutputFile();
};

namespace {

// Quoted so that the argument rules of Windows programs give back the very text.
std::string quoted(const std::string& argument)
{
    std::string text = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument) {
        if (c == '\\') {
            ++backslashes;
            continue;
        }
        text.append(c == '"' ? 2 * backslashes + 1 : backslashes, '\\');
        backslashes = 0;
        text += c;
    }
    return text.append(2 * backslashes, '\\') + "\"";
}

HANDLE openInheritable(const std::string& name, DWORD access, DWORD disposition)
{
    SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return ::CreateFileA(name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &attributes,
                         disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// The variables of this process, changed by `variables`, in the form of an environment block.
std::string environmentBlock(const Variables& variables)
{
    std::string block;
    char* own = ::GetEnvironmentStringsA();
    for (const char* entry = own; *entry != '\0';
         entry += std::char_traits<char>::length(entry) + 1) {
        const std::string text = entry;
        const std::string name = text.substr(0, text.find('=', 1));
        bool replaced = false;
        for (const auto& variable : variables)
            replaced = replaced || ::lstrcmpiA(variable.first.c_str(), name.c_str()) == 0;
        if (!replaced)
            block.append(text).push_back('\0');
    }
    ::FreeEnvironmentStringsA(own);
    for (const auto& variable : variables)
        block.append(variable.first + "=" + variable.second).push_back('\0');
    block.push_back('\0');
    return block;
}

}

std::string ownProgram()
{
    char name[MAX_PATH] = {};
    ::GetModuleFileNameA(nullptr, name, MAX_PATH);
    return name;
}

Child::Child(const std::string& program, const std::vector<std::string>& arguments,
             const Variables& variables)
    : m_state(new State)
{
    std::string commandLine = quoted(program);
    for (const std::string& argument : arguments)
        commandLine += " " + quoted(argument);
    std::string environment = environmentBlock(variables);

    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = openInheritable("NUL", GENERIC_READ, OPEN_EXISTING);
    startup.hStdOutput = openInheritable(m_state->output, GENERIC_WRITE, CREATE_ALWAYS);
    startup.hStdError = openInheritable(m_state->errors, GENERIC_WRITE, CREATE_ALWAYS);
    PROCESS_INFORMATION information{};
    if (::CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, environment.data(),
                         nullptr, &startup, &information)) {
        m_state->process = information.hProcess;
        m_state->processId = information.dwProcessId;
        ::CloseHandle(information.hThread);
    }
    ::CloseHandle(startup.hStdInput);
    ::CloseHandle(startup.hStdOutput);
    ::CloseHandle(startup.hStdError);
}

void Child::kill()
{
    if (m_state->process)
        ::TerminateProcess(m_state->process, 128 + 9);
}

ChildResult Child::wait()
{
    ChildResult result;
    result.started = started();
    if (m_state->process) {
        DWORD code = 0;
        ::WaitForSingleObject(m_state->process, INFINITE);
        ::GetExitCodeProcess(m_state->process, &code);
        ::CloseHandle(m_state->process);
        m_state->process = nullptr;
        result.exitCode = static_cast<long>(code);
    }
    result.output = takeFile(m_state->output);
    result.errors = takeFile(m_state->errors);
    return result;
}

bool Child::started() const
{
    return m_state->process != nullptr;
}

unsigned long Child::processId() const
{
    return m_state->processId;
}

#else

struct Child::State {
    pid_t process = -1;
    std::string output = newOutputFile();
    std::string errors = newOutputFile();
};

namespace {

void redirect(int target, const char* name, int flags)
{
    const int file = ::open(name, flags, 0600);
    if (file < 0)
        ::_exit(126);
    ::dup2(file, target);
    ::close(file);
}

}

std::string ownProgram()
{
    return std::filesystem::read_symlink("/proc/self/exe").string();
}

Child::Child(const std::string& program, const std::vector<std::string>& arguments,
             const Variables& variables)
    : m_state(new State)
{
    std::vector<char*> argumentVector{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        argumentVector.push_back(const_cast<char*>(argument.c_str()));
    argumentVector.push_back(nullptr);

    if (::access(program.c_str(), X_OK) != 0)
        return;
    m_state->process = ::fork();
    if (m_state->process != 0)
        return;
    for (const auto& variable : variables)
        ::setenv(variable.first.c_str(), variable.second.c_str(), 1);
    redirect(0, "/dev/null", O_RDONLY);
    redirect(1, m_state->output.c_str(), O_WRONLY | O_CREAT | O_TRUNC);
    redirect(2, m_state->errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC);
    ::execv(program.c_str(), argumentVector.data());
    ::_exit(127);
}

void Child::kill()
{
    if (m_state->process > 0)
        ::kill(m_state->process, SIGKILL);
}

ChildResult Child::wait()
{
    ChildResult result;
    result.started = started();
    if (m_state->process > 0) {
        int status = 0;
        ::waitpid(m_state->process, &status, 0);
        m_state->process = -1;
        result.exitCode = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
    result.output = takeFile(m_state->output);
    result.errors = takeFile(m_state->errors);
    return result;
}

bool Child::started() const
{
    return m_state->process > 0;
}

unsigned long Child::processId() const
{
    return static_cast<unsigned long>(m_state->process);
}

#endif

Child::~Child()
{
    if (started()) {
        kill();
        wait();
    }
    delete m_state;
}

}
