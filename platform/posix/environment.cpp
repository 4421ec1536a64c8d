#include "platform/environment.h"

#include "platform/posix/environment.h"

#include <cstdlib>
#include <mutex>
#include <unistd.h>

namespace Tools::Platform {

namespace {

std::mutex& guard()
{
    static auto* mutex = new std::mutex;
    return *mutex;
}

}

bool readVariable(const std::string& name, std::string& value)
{
    const std::lock_guard lock(guard());
    const char* text = std::getenv(name.c_str());
    value = text != nullptr ? text : "";
    return text != nullptr;
}

bool setVariable(const std::string& name, const std::string& value)
{
    const std::lock_guard lock(guard());
    return ::setenv(name.c_str(), value.c_str(), 1) == 0;
}

std::vector<char*> copyEnvironment()
{
    const std::lock_guard lock(guard());
    std::vector<char*> variables;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
        variables.push_back(*variable);
    variables.push_back(nullptr);
    return variables;
}

}
