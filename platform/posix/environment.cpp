#include "platform/environment.h"

#include "platform/posix/environment.h"

#include <cstdlib>
#include <mutex>
#include <pthread.h>
#include <type_traits>
#include <unistd.h>

namespace Tools::Platform {

namespace {

// Neither made nor destroyed when the library comes and goes.
constinit std::mutex s_guard;
static_assert(std::is_trivially_destructible_v<std::mutex>);

// For the functions below. A process forks only while nobody holds it, for in the child that holder
// would be gone.
class Locker {
public:
    Locker()
    {
        static const int error = ::pthread_atfork([] { s_guard.lock(); }, [] { s_guard.unlock(); },
                                                  [] { s_guard.unlock(); });
        static_cast<void>(error);
        s_guard.lock();
    }
    ~Locker() { s_guard.unlock(); }
    Locker(const Locker&) = delete;
    Locker& operator=(const Locker&) = delete;
};

}

bool readVariable(const std::string& name, std::string& value)
{
    const Locker locker;
    const char* text = std::getenv(name.c_str());
    value = text != nullptr ? text : "";
    return text != nullptr;
}

bool setVariable(const std::string& name, const std::string& value)
{
    const Locker locker;
    return ::setenv(name.c_str(), value.c_str(), 1) == 0;
}

std::vector<char*> copyEnvironment()
{
    const Locker locker;
    std::vector<char*> variables;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
        variables.push_back(*variable);
    variables.push_back(nullptr);
    return variables;
}

}
