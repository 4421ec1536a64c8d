#pragma once

#include "platform/registry_store.h"
#include "tools/registration_file.h"

#include <mdtools/registry.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Keys and values as the store has them; the library's classes show five types of values only.
namespace Tools::Registration {

// Not valid if there is no such key, or none can be made.
RegistryKey openKey(const KeyPath& path, bool create);

// With all below it. False if it is not there, or cannot be removed.
bool removeKey(const KeyPath& path);

struct RawValue final : Platform::ValueReceiver {
    void receive(std::uint32_t newKind, std::string_view newData) override
    {
        kind = newKind;
        data = newData;
    }

    std::uint32_t kind = 0;
    std::string data;
};

// All at once: an index counts what is there at the call, and shifts with every change.
std::vector<std::string> subkeyNames(const RegistryKey& key);

using VisitValue = std::function<void(const std::string& name, const RawValue& value)>;
void visitValues(const RegistryKey& key, const VisitValue& visit);

// The path of the key and of all below it, parents first and otherwise by name, on an explicit
// stack, so that depth does no harm. `visit` returns false to leave out what is below a key.
using VisitKey = std::function<bool(const KeyPath& path, const RegistryKey& key)>;
void visitTree(const KeyPath& top, const VisitKey& visit);

}
