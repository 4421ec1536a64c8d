// A stamped program that takes itself away and then asks who it is.
#include <mdtools/version_info.h>

#include <cstdio>

int main(int, char** arguments)
{
    std::remove(arguments[0]);
    const Tools::VersionInfo info(static_cast<Tools::ModuleHandle>(nullptr), "040704b0");
    std::puts(info.getProductName().c_str());
    return 0;
}
