#pragma once

#include <mdtools/platform_types.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// What the registry classes ask of the system: the registry on Windows, a database for each hive
// elsewhere. Null is "no key" everywhere; nothing below it can be opened, read or written. All
// calls may come from several threads at once.
namespace Tools::Platform {

// The stored types' numbers, as Windows has them on every platform. A store may hold others.
namespace ValueKind {
constexpr std::uint32_t Text = 1;
constexpr std::uint32_t ExpandText = 2;
constexpr std::uint32_t Binary = 3;
constexpr std::uint32_t Word = 4;
constexpr std::uint32_t MultiText = 7;
}

// The longest names, in characters.
constexpr std::size_t MaximumKeyName = 255;
constexpr std::size_t MaximumValueName = 16383;

// The names of keys from the top down, none of them empty, longer than allowed, or with a NUL.
using KeyNames = std::span<const std::string_view>;

// Opens a key for reading, below a hive or another key; without names that one itself, once more.
// With `create` missing keys are made. Null on failure. Each handle is to be closed once.
KeyHandle openKey(int hive, KeyNames names, bool create);
KeyHandle openKey(KeyHandle parent, KeyNames names, bool create);
void closeKey(KeyHandle key);

// Receives a value as it is stored. The data is there for the call only, which must not use the
// store.
class ValueReceiver {
public:
    virtual void receive(std::uint32_t kind, std::string_view data) = 0;

protected:
    ~ValueReceiver() = default;
};

// False, and nothing is received, if there is no such value. Names of values end at their first
// NUL.
bool readValue(KeyHandle key, const std::string& name, ValueReceiver& receiver);

// Both open the key once more, for writing. A value takes the place of an old one in one step.
bool writeValue(KeyHandle key, const std::string& name, std::uint32_t kind, const void* data,
                std::size_t size);
bool removeValue(KeyHandle key, const std::string& name);

// Removes a key below `parent` with all that it holds.
bool removeTree(KeyHandle parent, KeyNames names);

// Changes of the whole process that belong together, from its making to commit(): where the system
// has transactions all changes of a hive are made or none, whoever is killed or refused, and other
// programs wait with theirs meanwhile. One at a time.
class ChangeBatch {
public:
    ChangeBatch();
    // Cancels what was not committed.
    ~ChangeBatch();
    ChangeBatch(const ChangeBatch&) = delete;
    ChangeBatch& operator=(const ChangeBatch&) = delete;

    // False if the changes of a hive could not be made; those of others may have been.
    bool commit();
    // False if the system has no transactions: all changes so far were made.
    bool cancel();
};

// -1 if the key cannot be read, because it was deleted for instance.
int countSubkeys(KeyHandle key);
int countValues(KeyHandle key);

// False after the last one.
bool subkeyName(KeyHandle key, int index, std::string& name);
bool valueName(KeyHandle key, int index, std::string& name);

}
