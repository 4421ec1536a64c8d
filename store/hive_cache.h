#pragma once

#include "store/database.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Tools::Store {

// One hive: its database, and a read-through cache of it that knows what is missing, too. What was
// read is served again as long as the change counter shows the number that it was read at; when the
// counter says nothing, SQLite is asked whether another process has changed anything. For one
// thread at a time.
class HiveCache {
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const
        {
            return std::hash<std::string_view>()(text);
        }
    };
    template <class Entry>
    using ByName = std::unordered_map<std::string, Entry, TextHash, std::equal_to<>>;
    using Names = std::optional<std::vector<std::string>>;

    // What is known of a key. Each spelling that was asked for has an entry, also of what does
    // not exist.
    struct KnownKey {
        bool exists = false;
        ByName<StoredValue> values;
        ByName<KeyId> subkeys;
        Names valueNames;
        Names subkeyNames;
    };

public:
    // A key's number, and the way to what is known of it.
    struct Key {
        KeyId id = NoKey;
        KnownKey* known = nullptr;
        std::uint64_t epoch = 0;
    };

    explicit HiveCache(Database::Location location);

    // The key at the end of the names, or NoKey. While there is no database there is just the root;
    // below one that cannot be used there is nothing.
    KeyId find(KeyId from, Platform::KeyNames names);
    KeyId findOrCreate(KeyId from, Platform::KeyNames names);

    // True if another file has the old one's name by now: what was read is of no more use. Looks
    // only now and then, which is often enough.
    bool checkFiles();

    // A call failed because another program holds the database; it may succeed soon.
    bool isBusy() const { return m_database.isBusy(); }
    void clearBusy() { m_database.clearBusy(); }

    // The change counter, and its number for which everything that was read is right.
    const std::uint64_t* counter() const { return m_database.counter(); }
    std::uint64_t changeNumber() const { return m_changeNumber; }

    // Null if it could not be looked up.
    const StoredValue* value(Key& key, std::string_view name);
    bool writeValue(Key& key, std::string_view name, std::uint32_t kind, std::string_view data);
    bool removeValue(Key& key, std::string_view name);
    bool removeTree(KeyId key);

    // Null if there is no such key.
    const std::vector<std::string>* valueNames(Key& key);
    const std::vector<std::string>* subkeyNames(Key& key);

    void beginBatch() { m_database.beginBatch(); }
    bool endBatch(bool isComplete);

    // The next call opens the database again.
    void close();

private:
    using List = bool (Database::*)(KeyId key, std::vector<std::string>& names);

    bool refresh();
    bool refreshSlowly();
    bool isEmptyRoot(KeyId key);
    bool openFor(KeyId key);
    void clear();
    void reserve(std::size_t size);
    void adopt(Database::Change change);
    void forgetValues(Key& key);
    KnownKey& known(Key& key);
    KeyId subkey(KeyId parent, std::string_view name);
    bool exists(KeyId key);
    const StoredValue* readValue(Key& key, std::string_view name);
    const std::vector<std::string>* names(Key& key, Names KnownKey::*kind, List list);

    Database m_database;
    std::unordered_map<KeyId, KnownKey> m_keys;
    std::size_t m_size = 0;
    std::vector<std::string> m_noNames;
    // Moves on when entries of m_keys go.
    std::uint64_t m_epoch = 1;
    // The numbers for which m_keys is right.
    std::uint64_t m_changeNumber = ChangeCounter::Unknown;
    std::uint64_t m_opening = 0;
    std::int64_t m_dataVersion = -1;
    std::int64_t m_nextCheck = 0;
};

}
