#include "platform/environment.h"

#include <cstdlib>
#include <mutex>

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

}
