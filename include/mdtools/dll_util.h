#pragma once

#include <mdtools/export.h>

#include <string>

namespace Tools {

// Loads libraries while the program runs. A library once loaded stays for the rest of the process.
// May be called from any thread.
class MDTOOLS_API DllUtil {
public:
    static DllUtil* get();

    // The function that the library exports under this very name. The library is searched as the
    // system does; on Linux "name" also finds "libname.so". Null if either is missing, which is
    // reported on the debug channel.
    int (*getFunction(const std::string& library, const std::string& function))();

    // The same for an entry point that takes an argument count and vector (see ArgumentKeeper).
    int (*getArgcArgvFunction(const std::string& library, const std::string& function))(int,
                                                                                        char**);

private:
    DllUtil() = default;
};

}
