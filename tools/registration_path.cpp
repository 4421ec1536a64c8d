#include "tools/registration_file.h"

#include "platform/registry_store.h"
#include "text/characters.h"

#include <mdtools/registry.h>
#include <mdtools/strings.h>

namespace Tools::Registration {

namespace {

struct Root {
    Registry::Hive hive;
    const char* name;
    const char* shortName;
};

// The first name is the one that is written.
constexpr Root Roots[] = {
    {Registry::LocalMachine, "HKEY_LOCAL_MACHINE", "HKLM"},
    {Registry::CurrentUser, "HKEY_CURRENT_USER", "HKCU"},
    {Registry::ClassesRoot, "HKEY_CLASSES_ROOT", "HKCR"},
};

constexpr std::size_t MaximumPath = 4096;

bool readRoot(const std::string& name, KeyPath& path)
{
    for (const Root& root : Roots) {
        if (Strieq(name, root.name) || Strieq(name, root.shortName)) {
            path.hive = root.hive;
            return true;
        }
    }
    return false;
}

}

std::string KeyPath::text() const
{
    std::string text;
    for (const Root& root : Roots)
        if (root.hive == hive)
            text = root.name;
    for (const std::string& name : names)
        text += "\\" + name;
    return text;
}

bool readKeyPath(std::string_view text, std::string_view separators, KeyPath& path)
{
    std::size_t end = Characters::findAny(text, separators);
    if (!readRoot(std::string(text.substr(0, end)), path))
        return false;
    path.names.clear();
    if (end == std::string_view::npos)
        return true;
    // The store's own limits, which the library's paths are held to as well.
    text.remove_prefix(end + 1);
    if (Characters::count(std::string(text).c_str()) > MaximumPath)
        return false;
    while (!text.empty()) {
        end = Characters::findAny(text, separators);
        const std::string name(text.substr(0, end));
        if (Characters::count(name.c_str()) > Platform::MaximumKeyName)
            return false;
        // Doubled and final separators are passed over.
        if (!name.empty())
            path.names.push_back(name);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return true;
}

}
