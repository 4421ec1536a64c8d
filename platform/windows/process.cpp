#include "platform/process.h"

#include "platform/windows/file_handle.h"
#include "platform/windows/native_path.h"

#include <mutex>

#include <windows.h>

namespace Tools::Platform {

namespace {

// The child's standard input, which the child inherits; no file for an empty path.
FileHandle openInput(const std::string& path)
{
    if (path.empty())
        return FileHandle(INVALID_HANDLE_VALUE);
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return FileHandle(::CreateFileA(nativePath(path).c_str(), GENERIC_READ, FILE_SHARE_READ,
                                    &inheritable, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

WORD toShowCommand(ShowWindow show)
{
    switch (show) {
    case ShowWindow::Show:
        return SW_SHOW;
    case ShowWindow::Hide:
        return SW_HIDE;
    default:
        return SW_SHOWDEFAULT;
    }
}

STARTUPINFOA toStartupInfo(const StartOptions& options, std::string& title, const FileHandle& input)
{
    STARTUPINFOA info{};
    info.cb = sizeof(info);
    if (options.show == ShowWindow::Show)
        info.lpTitle = title.data();
    if (options.show != ShowWindow::AsProgramLikes) {
        info.dwFlags |= STARTF_USESHOWWINDOW;
        info.wShowWindow = toShowCommand(options.show);
    }
    if (options.width != 0 && options.height != 0) {
        info.dwFlags |= STARTF_USESIZE;
        info.dwXSize = static_cast<DWORD>(options.width);
        info.dwYSize = static_cast<DWORD>(options.height);
    }
    if (input.valid()) {
        info.dwFlags |= STARTF_USESTDHANDLES;
        info.hStdInput = input.get();
        info.hStdOutput = ::GetStdHandle(STD_OUTPUT_HANDLE);
        info.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    }
    return info;
}

DWORD toCreationFlags(const StartOptions& options)
{
    DWORD flags = options.normalPriority ? NORMAL_PRIORITY_CLASS | CREATE_SEPARATE_WOW_VDM : 0;
    if (options.noConsoleWindow)
        flags |= CREATE_NO_WINDOW;
    return flags;
}

}

ProcessHandle startProcess(const StartOptions& options)
{
    // The system's limit, which Wine does not know: it looks for a program at each blank.
    constexpr std::size_t LongestCommandLine = 32766;
    if (options.commandLine.size() > LongestCommandLine)
        return nullptr;
    // A child inherits whatever can be inherited at that moment: while one thread's input file is
    // open, no other thread starts a child.
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);

    // Closed here as soon as the child has its own.
    const FileHandle input = openInput(options.inputFile);
    if (!options.inputFile.empty() && !input.valid())
        return nullptr;
    std::string commandLine = options.commandLine;
    std::string title = options.title;
    STARTUPINFOA info = toStartupInfo(options, title, input);
    PROCESS_INFORMATION process{};
    const char* directory =
        options.currentDirectory.empty() ? nullptr : options.currentDirectory.c_str();
    if (!::CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE,
                          toCreationFlags(options), nullptr, directory, &info, &process))
        return nullptr;
    // Only the process is waited for.
    ::CloseHandle(process.hThread);
    return process.hProcess;
}

bool waitForProcess(ProcessHandle process, int milliseconds)
{
    const DWORD time = milliseconds < 0 ? INFINITE : static_cast<DWORD>(milliseconds);
    return ::WaitForSingleObject(process, time) == WAIT_OBJECT_0;
}

std::uint32_t getExitCode(ProcessHandle process)
{
    DWORD code = 0;
    ::GetExitCodeProcess(process, &code);
    return code;
}

void closeProcess(ProcessHandle process)
{
    ::CloseHandle(process);
}

}
