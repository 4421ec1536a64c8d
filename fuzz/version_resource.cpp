#include "versions/module_strings.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

// Any bytes as a module's file: no offset in it may lead out of it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const int file = ::memfd_create("module", MFD_CLOEXEC);
    if (file < 0 || ::write(file, data, size) != static_cast<ssize_t>(size))
        std::abort();
    const std::string name = "/proc/self/fd/" + std::to_string(file);
    for (const auto& string : Tools::readModuleStrings(name)) {
        if (string.name.size() > size)
            std::abort();
    }
    ::close(file);
    return 0;
}
