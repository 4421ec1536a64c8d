#include <mdtools/mdtools.h>

int main()
{
    const Tools::VersionInfo own(static_cast<Tools::ModuleHandle>(nullptr), "040704b0");
    return own.getProductName() == "Consumer" ? 0 : 1;
}
