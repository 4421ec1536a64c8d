#include <mdtools/registry.h>

#include "platform/registry_store.h"
#include "settings/registry_path.h"

namespace Tools {

RegistryKey Registry::find(Hive hive, const std::string& path, bool create)
{
    return find(hive, path.c_str(), create);
}

// The path is judged here, for both platforms alike; the store gets names that it can take.
RegistryKey Registry::find(Hive hive, const char* path, bool create)
{
    const RegistryPath parts(path);
    if (!parts.valid())
        return RegistryKey();
    return RegistryKey(Platform::openKey(hive, parts.names(), create));
}

}
