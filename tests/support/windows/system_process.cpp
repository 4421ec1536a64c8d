#include "support/system_process.h"

#include <windows.h>

namespace MdToolsTest {

namespace {

HANDLE toHandle(std::intptr_t number)
{
    return reinterpret_cast<HANDLE>(number);
}

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

SystemProcess::SystemProcess(const Start& start)
{
    std::string commandLine = quoted(start.program);
    for (const std::string& argument : start.arguments)
        commandLine += " " + quoted(argument);
    std::string environment = environmentBlock(start.variables);

    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = openInheritable("NUL", GENERIC_READ, OPEN_EXISTING);
    startup.hStdOutput = openInheritable(start.output, GENERIC_WRITE, CREATE_ALWAYS);
    startup.hStdError = openInheritable(start.errors, GENERIC_WRITE, CREATE_ALWAYS);
    PROCESS_INFORMATION information{};
    if (::CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, environment.data(),
                         nullptr, &startup, &information)) {
        m_handle = reinterpret_cast<std::intptr_t>(information.hProcess);
        m_id = information.dwProcessId;
        ::CloseHandle(information.hThread);
    }
    ::CloseHandle(startup.hStdInput);
    ::CloseHandle(startup.hStdOutput);
    ::CloseHandle(startup.hStdError);
}

SystemProcess::~SystemProcess()
{
    if (valid())
        ::CloseHandle(toHandle(m_handle));
}

bool SystemProcess::isRunning() const
{
    return valid() && ::WaitForSingleObject(toHandle(m_handle), 0) == WAIT_TIMEOUT;
}

void SystemProcess::kill()
{
    if (valid())
        ::TerminateProcess(toHandle(m_handle), 128 + 9);
}

std::optional<long> SystemProcess::waitFor(std::chrono::milliseconds time)
{
    if (::WaitForSingleObject(toHandle(m_handle), static_cast<DWORD>(time.count())) !=
        WAIT_OBJECT_0)
        return std::nullopt;
    DWORD code = 0;
    ::GetExitCodeProcess(toHandle(m_handle), &code);
    ::CloseHandle(toHandle(m_handle));
    m_handle = None;
    return static_cast<long>(code);
}

}
