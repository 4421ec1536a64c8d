#include "tools/stored_keys.h"

#include <utility>

namespace Tools::Registration {

namespace {

using Name = bool (*)(KeyHandle key, int index, std::string& name);

std::vector<std::string> allNames(const RegistryKey& key, Name nameAt)
{
    std::vector<std::string> names;
    std::string name;
    for (int i = 0; nameAt(key.handle(), i, name); ++i)
        names.push_back(name);
    return names;
}

// Views of the names, for as long as the path stays as it is.
std::vector<std::string_view> namesOf(const KeyPath& path)
{
    return {path.names.begin(), path.names.end()};
}

}

RegistryKey openKey(const KeyPath& path, bool create)
{
    return RegistryKey(Platform::openKey(path.hive, namesOf(path), create));
}

bool removeKey(const KeyPath& path)
{
    const RegistryKey root = openKey(KeyPath{path.hive, {}}, false);
    return Platform::removeTree(root.handle(), namesOf(path));
}

std::vector<std::string> subkeyNames(const RegistryKey& key)
{
    return allNames(key, Platform::subkeyName);
}

void visitValues(const RegistryKey& key, const VisitValue& visit)
{
    for (const std::string& name : allNames(key, Platform::valueName)) {
        RawValue value;
        // Another program may just have removed it.
        if (Platform::readValue(key.handle(), name, value))
            visit(name, value);
    }
}

// The names are pushed from the last one, to come out in their order.
void visitTree(const KeyPath& top, const VisitKey& visit)
{
    std::vector<KeyPath> waiting = {top};
    while (!waiting.empty()) {
        const KeyPath path = std::move(waiting.back());
        waiting.pop_back();
        const RegistryKey key = openKey(path, false);
        if (!visit(path, key))
            continue;
        const std::vector<std::string> names = subkeyNames(key);
        for (auto name = names.rbegin(); name != names.rend(); ++name) {
            waiting.push_back(path);
            waiting.back().names.push_back(*name);
        }
    }
}

}
