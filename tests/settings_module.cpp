// A plug-in that counts its uses in a setting; the library comes and goes with it.
#include <mdtools/registry.h>

extern "C" MDTOOLS_API bool useSettings(const char* path)
{
    using namespace Tools;
    RegistryKey key = Registry::find(Registry::CurrentUser, path, true);
    RegistryValue value = key["module"];
    const std::uint32_t count = value.getDWord() + 1;
    key.add(value.setType(RegistryValue::DWord).setData(count));
    return key["module"].getDWord() == count;
}
