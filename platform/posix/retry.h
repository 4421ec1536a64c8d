#pragma once

#include <cerrno>

namespace Tools::Platform {

// The result of a system call, made again for as long as a signal interrupts it.
template <class Call>
auto retryInterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

}
