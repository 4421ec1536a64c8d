#pragma once

#include "platform/registry_store.h"
#include "store/change_counter.h"
#include "store/store_file.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

struct sqlite3;
struct sqlite3_stmt;

namespace Tools::Store {

using KeyId = std::int64_t;
constexpr KeyId NoKey = 0;
constexpr KeyId RootKey = 1;

struct StoredValue {
    bool exists = false;
    std::uint32_t kind = 0;
    std::string data;
};

// The keys and values of one hive in a SQLite database. A key is a row, found by the number of its
// parent and its name without case. Numbers are never used again, not even by a database that
// replaces this one: that of a deleted key names nothing for ever. A write-ahead log lets
// everyone read what was committed last, whoever is writing and whoever was killed. For one thread
// at a time.
class Database {
public:
    // Where the files of a hive lie, and their rights.
    struct Location {
        // Empty if there is no folder for the database.
        std::string directory;
        std::string name;
        mode_t directoryMode;
        mode_t fileMode;
    };
    enum class State { Missing, Unusable, Open };
    // The change counter around the last change.
    struct Change {
        std::uint64_t before = ChangeCounter::Unknown;
        std::uint64_t after = ChangeCounter::Unknown;
    };

    explicit Database(Location location);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    // Opens the database unless it is open. Whatever is not a database of this kind is left alone.
    State open();
    // The same for a change: what could only be opened for reading is opened once more if it may be
    // written by now.
    State openForChange();
    bool openOrMake();
    void close();
    // A call failed because another program holds the database; it may succeed soon. Who waits how
    // long for that is up to registry_store.cpp.
    bool isBusy() const { return m_isBusy; }
    void clearBusy() { m_isBusy = false; }
    // Moves on with each opening.
    std::uint64_t opening() const { return m_opening; }
    // Another file, or none, has the open one's name by now.
    bool isExchanged() const;

    const std::uint64_t* counter() const { return m_counter.number(); }
    std::uint64_t changeNumber() const { return m_counter.value(); }
    // SQLite's own number for what others have changed since the opening; -1 on failure. Takes some
    // system calls.
    std::int64_t dataVersion();

    // False on failure; what is missing is NoKey and a value that does not exist.
    bool findKey(KeyId parent, std::string_view name, KeyId& key);
    bool readValue(KeyId key, std::string_view name, StoredValue& value);
    // By name without case. False also if there is no such key.
    bool listSubkeys(KeyId key, std::vector<std::string>& names);
    bool listValues(KeyId key, std::vector<std::string>& names);
    bool keyExists(KeyId key);

    // Each is one change: all of it or nothing.
    bool createKeys(KeyId from, Platform::KeyNames names, KeyId& key);
    bool writeValue(KeyId key, std::string_view name, std::uint32_t kind, std::string_view data);
    bool removeValue(KeyId key, std::string_view name);
    bool removeTree(KeyId key);
    // To be called after each change, also after one that failed.
    Change finishChange();

    // From now on changes wait for endBatch(), which makes all of them or none.
    void beginBatch() { m_isBatch = true; }
    bool endBatch(bool isComplete);

private:
    enum Statement {
        DataVersion,
        FindKey,
        KeyExists,
        InsertKey,
        ListKeys,
        ReadValue,
        UpdateValue,
        InsertValue,
        RemoveValue,
        ListValues,
        RemoveValuesBelow,
        RemoveKeysBelow,
        Begin,
        Commit,
        Rollback,
        StatementCount
    };
    class Query;

    std::string databaseFile() const
    {
        return m_location.directory + "/" + m_location.name + ".db";
    }
    bool openFile();
    bool make() const;
    bool run(Statement statement);
    bool begin();
    bool commit(bool isComplete);
    void keepLog();
    bool list(Statement statement, KeyId key, std::vector<std::string>& names);
    KeyId findOrInsert(KeyId parent, std::string_view name);
    static int beforeCommit(void* database);

    Location m_location;
    sqlite3* m_connection = nullptr;
    std::uint64_t m_opening = 0;
    std::array<sqlite3_stmt*, StatementCount> m_statements{};
    FileId m_file;
    ChangeCounter m_counter;
    bool m_isBusy = false;
    bool m_isChanged = false;
    bool m_isBatch = false;
    bool m_isBatchLost = false;
    bool m_hasLog = false;
    std::uint64_t m_numberBefore = ChangeCounter::Unknown;
};

}
