// A program for tests that start programs. It writes what reached it into the file that the
// variable MDTOOLS_RECORD names (a line a fact), complete once the file is there. Arguments that it
// obeys:
//   --exit=CODE  --until=FILE (wait for it)  --stdin (record what can be read)  --variable=NAME
//   --silent (no record)  --descriptors (record which ones are open, where the system lists them)
// The variable MDTOOLS_EXIT is an exit code, too, for programs that set the arguments themselves.

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <string>
#include <thread>

namespace {

bool takeOption(const std::string& argument, const std::string& name, std::string& value)
{
    const std::string start = "--" + name + "=";
    if (argument.compare(0, start.size(), start) != 0)
        return false;
    value = argument.substr(start.size());
    return true;
}

const char* variable(const std::string& name)
{
    const char* value = std::getenv(name.c_str());
    return value != nullptr ? value : "";
}

// For a minute at most, so that a test that fails leaves no process.
void waitForFile(const std::string& name)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!std::filesystem::exists(name) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

// The directory's own is left out.
std::string openDescriptors()
{
    std::set<std::string> names;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", ignored)) {
        if (std::filesystem::is_symlink(entry.path(), ignored) &&
            std::filesystem::read_symlink(entry.path(), ignored).string().find("/fd") ==
                std::string::npos)
            names.insert(entry.path().filename().string());
    }
    std::string text;
    for (const std::string& name : names)
        text += "descriptor: " + name + "\n";
    return text;
}

}

int main(int argc, char** argv)
{
    int exitCode = std::atoi(variable("MDTOOLS_EXIT"));
    std::string file = variable("MDTOOLS_RECORD");
    std::string record = "directory: " + std::filesystem::current_path().filename().string() + "\n";
    for (int i = 1; i < argc; ++i) {
        std::string value;
        const std::string argument = argv[i];
        record += "argument: " + argument + "\n";
        if (takeOption(argument, "exit", value))
            exitCode = std::stoi(value);
        else if (takeOption(argument, "until", value))
            waitForFile(value);
        else if (takeOption(argument, "variable", value))
            record += "variable: " + value + "=" + variable(value) + "\n";
        else if (argument == "--descriptors")
            record += openDescriptors();
        else if (argument == "--silent")
            file.clear();
        else if (argument == "--stdin")
            record += "input: " + std::string(std::istreambuf_iterator<char>(std::cin), {}) + "\n";
    }
    if (file.empty())
        return exitCode;
    {
        std::ofstream stream(file + ".part", std::ios::binary);
        stream << record;
    }
    std::filesystem::rename(file + ".part", file);
    return exitCode;
}
