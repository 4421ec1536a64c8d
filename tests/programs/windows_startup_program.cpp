// Writes down what it has been started with, into the file that its argument names.
#include <cstdio>

#include <windows.h>

int main(int argc, char** argv)
{
    std::FILE* const file = argc == 2 ? std::fopen(argv[1], "w") : nullptr;
    if (file == nullptr)
        return 2;
    STARTUPINFOA info{};
    ::GetStartupInfoA(&info);
    if ((info.dwFlags & STARTF_USESHOWWINDOW) != 0)
        std::fprintf(file, "title %s\nshow %d\n", info.lpTitle, info.wShowWindow);
    if ((info.dwFlags & STARTF_USESIZE) != 0)
        std::fprintf(file, "size %lu %lu\n", info.dwXSize, info.dwYSize);
    const bool isNormal = ::GetPriorityClass(::GetCurrentProcess()) == NORMAL_PRIORITY_CLASS;
    std::fprintf(file, "priority %s\n", isNormal ? "normal" : "other");
    // Nobody shares the console of a program that is to have no window.
    DWORD process = 0;
    std::fprintf(file, "own console %d\n", ::GetConsoleProcessList(&process, 1) == 1 ? 1 : 0);
    std::fclose(file);
    return 0;
}
