#include "store/database.h"

#include "store/database_files.h"

#include <mdtools/strings.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Store {

namespace {

// Distinguishes a settings database from any other one.
constexpr std::int64_t ApplicationId = 0x4D645265;
constexpr std::int64_t FormatVersion = 1;

// Settings are small: small pages are written and checked faster.
constexpr std::int64_t PageSize = 1024;

constexpr const char* Schema =
    "CREATE TABLE key(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL,"
    " name BLOB NOT NULL, shown BLOB NOT NULL, UNIQUE(parent, name));"
    "CREATE TABLE value(key INTEGER NOT NULL, name BLOB NOT NULL, shown BLOB NOT NULL,"
    " type INTEGER NOT NULL, data BLOB NOT NULL, PRIMARY KEY(key, name)) WITHOUT ROWID;"
    "INSERT INTO key VALUES(1, 0, x'', x'');"
    // Each database counts its keys from somewhere else.
    "UPDATE sqlite_sequence SET seq = (random() & 0xFFFFFFFF) << 20 WHERE name = 'key';";

// A value can only be stored in a key that was not removed meanwhile.
constexpr const char* InsertText =
    "INSERT INTO value SELECT ?1, ?2, ?5, ?3, ?4 WHERE EXISTS(SELECT 1 FROM key WHERE id = ?1)"
    " ON CONFLICT(key, name) DO UPDATE SET type = ?3, data = ?4";

constexpr const char* RemoveValuesText =
    "WITH RECURSIVE below(id) AS"
    " (SELECT ?1 UNION SELECT key.id FROM key JOIN below ON key.parent = below.id)"
    " DELETE FROM value WHERE key IN below";
constexpr const char* RemoveKeysText =
    "WITH RECURSIVE below(id) AS"
    " (SELECT ?1 UNION SELECT key.id FROM key JOIN below ON key.parent = below.id)"
    " DELETE FROM key WHERE id IN below";

bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// As the code page has it, which lowers exactly the letters that the registry of a Windows with
// this page holds for equal.
std::string fold(std::string_view name)
{
    if (!isAscii(name))
        return toLower(std::string(name));
    std::string folded(name);
    for (char& c : folded)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    return folded;
}

// -1 on failure.
std::int64_t readNumber(sqlite3* connection, const char* text)
{
    sqlite3_stmt* statement = nullptr;
    std::int64_t number = -1;
    if (sqlite3_prepare_v2(connection, text, -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW)
        number = sqlite3_column_int64(statement, 0);
    sqlite3_finalize(statement);
    return number;
}

bool execute(sqlite3* connection, const std::string& text)
{
    return sqlite3_exec(connection, text.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

// Somebody else is in the way, for a moment in all likelihood. A reader that found the log between
// two states again and again gives it up as a breach of protocol.
bool isTransient(int result)
{
    const int kind = result & 0xFF;
    return kind == SQLITE_BUSY || kind == SQLITE_PROTOCOL;
}

bool setNumber(sqlite3* connection, const std::string& pragma, std::int64_t number)
{
    return execute(connection, "PRAGMA " + pragma + " = " + std::to_string(number));
}

}

// One use of a prepared statement: parameters in their order, then rows.
class Database::Query {
    // In the order of the enumeration.
    static constexpr const char* Texts[StatementCount] = {
        "PRAGMA data_version",
        "SELECT id FROM key WHERE parent = ?1 AND name = ?2",
        "SELECT 1 FROM key WHERE id = ?1",
        "INSERT INTO key(parent, name, shown) VALUES(?1, ?2, ?3)",
        "SELECT shown FROM key WHERE parent = ?1 ORDER BY name",
        "SELECT type, data FROM value WHERE key = ?1 AND name = ?2",
        "UPDATE value SET type = ?3, data = ?4 WHERE key = ?1 AND name = ?2",
        InsertText,
        "DELETE FROM value WHERE key = ?1 AND name = ?2",
        "SELECT shown FROM value WHERE key = ?1 ORDER BY name",
        RemoveValuesText,
        RemoveKeysText,
        "BEGIN IMMEDIATE",
        "COMMIT",
        "ROLLBACK",
    };

public:
    Query(Database& database, Statement statement) : m_database(database)
    {
        sqlite3_stmt*& prepared = database.m_statements[statement];
        if (prepared == nullptr && database.m_connection != nullptr)
            m_preparation = sqlite3_prepare_v3(database.m_connection, Texts[statement], -1,
                                               SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
        m_statement = prepared;
    }
    ~Query() { sqlite3_reset(m_statement); }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    Query& with(std::int64_t number)
    {
        sqlite3_bind_int64(m_statement, ++m_bound, number);
        return *this;
    }

    // The bytes must stay as long as this object.
    Query& with(std::string_view bytes)
    {
        const char* data = bytes.data() != nullptr ? bytes.data() : "";
        sqlite3_bind_blob64(m_statement, ++m_bound, data, bytes.size(), SQLITE_STATIC);
        return *this;
    }

    // Goes to the next row; false after the last one and on failure.
    bool next()
    {
        m_result = m_statement != nullptr ? sqlite3_step(m_statement) : m_preparation;
        m_database.m_isBusy = m_database.m_isBusy || isTransient(m_result);
        return m_result == SQLITE_ROW;
    }

    // All rows were seen. Runs the statement if that has not happened.
    bool finish()
    {
        if (m_result == SQLITE_OK)
            next();
        return m_result == SQLITE_DONE;
    }

    bool failed() const { return m_result != SQLITE_ROW && m_result != SQLITE_DONE; }

    std::int64_t number(int column) const { return sqlite3_column_int64(m_statement, column); }

    std::string bytes(int column) const
    {
        const void* data = sqlite3_column_blob(m_statement, column);
        const int size = sqlite3_column_bytes(m_statement, column);
        if (data == nullptr)
            return std::string();
        return std::string(static_cast<const char*>(data), static_cast<std::size_t>(size));
    }

private:
    Database& m_database;
    sqlite3_stmt* m_statement = nullptr;
    // SQLite reads the schema with the first statement, which may fail as any reading does.
    int m_preparation = SQLITE_ERROR;
    int m_bound = 0;
    int m_result = SQLITE_OK;
};

Database::Database(Location location) : m_location(std::move(location)) {}

Database::~Database()
{
    close();
}

Database::State Database::open()
{
    // The map of a log's index that somebody cut short must not be touched any more.
    if (m_connection != nullptr && !isIndexWhole(m_connection))
        close();
    if (m_connection != nullptr)
        return State::Open;
    struct stat info {};
    if (m_location.directory.empty())
        return State::Unusable;
    if (::stat(databaseFile().c_str(), &info) != 0)
        return errno == ENOENT || errno == ENOTDIR ? State::Missing : State::Unusable;
    m_file = fileId(databaseFile());
    if (!S_ISREG(info.st_mode) || !m_counter.open(databaseFile(), ChangeCounter::Missing::Make) ||
        !openFile()) {
        close();
        return State::Unusable;
    }
    ++m_opening;
    return State::Open;
}

Database::State Database::openForChange()
{
    const State state = open();
    // The disk may have room for the index by now, too.
    const bool isRefused =
        state == State::Open &&
        (sqlite3_db_readonly(m_connection, "main") == 1 || !isIndexShared(m_connection));
    if (!isRefused || ::faccessat(AT_FDCWD, databaseFile().c_str(), R_OK | W_OK, AT_EACCESS) != 0)
        return state;
    close();
    return open();
}

bool Database::openFile()
{
    const char* files = databaseFiles();
    if (files == nullptr)
        return false;
    const int result = sqlite3_open_v2(databaseFile().c_str(), &m_connection,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, files);
    if (result != SQLITE_OK)
        return false;
    sqlite3_db_config(m_connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(m_connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    // Others may be about to open the database, and some may only read: the log stays for them.
    sqlite3_db_config(m_connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    sqlite3_commit_hook(m_connection, beforeCommit, this);
    // What was committed survives the process, and a write-ahead log needs no more than that to
    // stay sound when the power fails, too.
    const bool isOurs =
        execute(m_connection, "PRAGMA synchronous = NORMAL; PRAGMA temp_store = MEMORY") &&
        readNumber(m_connection, "PRAGMA application_id") == ApplicationId &&
        readNumber(m_connection, "PRAGMA user_version") == FormatVersion;
    m_isBusy = m_isBusy || isTransient(sqlite3_errcode(m_connection));
    return isOurs;
}

bool Database::openOrMake()
{
    State state = openForChange();
    if (state == State::Missing && make())
        state = openForChange();
    return state == State::Open;
}

// The database is complete when it gets its name: it is there as a whole or not at all, whoever
// else makes it at the same time or is killed on the way.
bool Database::make() const
{
    // The two bytes that say that a database has a write-ahead log.
    constexpr std::size_t LogMark = 18;
    sqlite3* connection = nullptr;
    sqlite3_int64 size = 0;
    unsigned char* bytes = nullptr;
    if (sqlite3_open(":memory:", &connection) == SQLITE_OK &&
        setNumber(connection, "page_size", PageSize) && execute(connection, Schema) &&
        setNumber(connection, "application_id", ApplicationId) &&
        setNumber(connection, "user_version", FormatVersion))
        bytes = sqlite3_serialize(connection, "main", &size, 0);
    bool isThere = false;
    if (bytes != nullptr) {
        bytes[LogMark] = bytes[LogMark + 1] = 2;
        isThere = makeStoreDirectory(m_location.directory, m_location.directoryMode) &&
                  (makeStoreFile(databaseFile(), m_location.fileMode, bytes,
                                 static_cast<std::size_t>(size)) ||
                   errno == EEXIST);
    }
    sqlite3_free(bytes);
    sqlite3_close(connection);
    return isThere;
}

void Database::close()
{
    // A batch cannot be carried over to another opening.
    m_isBatchLost = m_isBatchLost || (m_isBatch && m_connection != nullptr &&
                                      sqlite3_get_autocommit(m_connection) == 0);
    for (sqlite3_stmt*& statement : m_statements)
        sqlite3_finalize(std::exchange(statement, nullptr));
    sqlite3_close(std::exchange(m_connection, nullptr));
    m_hasLog = false;
}

bool Database::isExchanged() const
{
    return m_connection != nullptr && !(fileId(databaseFile()) == m_file);
}

std::int64_t Database::dataVersion()
{
    Query query(*this, DataVersion);
    return query.next() ? query.number(0) : -1;
}

bool Database::findKey(KeyId parent, std::string_view name, KeyId& key)
{
    const std::string folded = fold(name);
    Query query(*this, FindKey);
    key = query.with(parent).with(folded).next() ? query.number(0) : NoKey;
    return !query.failed();
}

bool Database::readValue(KeyId key, std::string_view name, StoredValue& value)
{
    const std::string folded = fold(name);
    Query query(*this, ReadValue);
    value.exists = query.with(key).with(folded).next();
    if (value.exists) {
        value.kind = static_cast<std::uint32_t>(query.number(0));
        value.data = query.bytes(1);
    }
    return !query.failed();
}

bool Database::listSubkeys(KeyId key, std::vector<std::string>& names)
{
    return list(ListKeys, key, names);
}

bool Database::listValues(KeyId key, std::vector<std::string>& names)
{
    return list(ListValues, key, names);
}

bool Database::list(Statement statement, KeyId key, std::vector<std::string>& names)
{
    if (!keyExists(key))
        return false;
    Query query(*this, statement);
    query.with(key);
    while (query.next())
        names.push_back(query.bytes(0));
    return !query.failed();
}

bool Database::keyExists(KeyId key)
{
    Query query(*this, KeyExists);
    return query.with(key).next();
}

bool Database::createKeys(KeyId from, Platform::KeyNames names, KeyId& key)
{
    if (!begin())
        return false;
    key = keyExists(from) ? from : NoKey;
    for (const std::string_view name : names)
        key = key != NoKey ? findOrInsert(key, name) : NoKey;
    return commit(key != NoKey);
}

// Within a change. Another spelling of a name that is there finds that key, and keeps its spelling.
KeyId Database::findOrInsert(KeyId parent, std::string_view name)
{
    KeyId key = NoKey;
    if (!findKey(parent, name, key))
        return NoKey;
    if (key != NoKey)
        return key;
    const std::string folded = fold(name);
    Query query(*this, InsertKey);
    const bool isInserted = query.with(parent).with(folded).with(name).finish();
    return isInserted ? sqlite3_last_insert_rowid(m_connection) : NoKey;
}

bool Database::writeValue(KeyId key, std::string_view name, std::uint32_t kind,
                          std::string_view data)
{
    if (m_isBatch && !begin())
        return false;
    const std::string folded = fold(name);
    const auto write = [&](Statement statement) {
        Query query(*this, statement);
        query.with(key).with(folded).with(std::int64_t{kind}).with(data);
        if (statement == InsertValue)
            query.with(name);
        return query.finish() && sqlite3_changes(m_connection) > 0;
    };
    // Most writes replace a value.
    return write(UpdateValue) || write(InsertValue);
}

bool Database::removeValue(KeyId key, std::string_view name)
{
    if (m_isBatch && !begin())
        return false;
    const std::string folded = fold(name);
    Query query(*this, RemoveValue);
    return query.with(key).with(folded).finish() && sqlite3_changes(m_connection) > 0;
}

// One recursive query a table; the keys go last, as they lead to the values.
bool Database::removeTree(KeyId key)
{
    if (!begin())
        return false;
    const bool isRemoved = Query(*this, RemoveValuesBelow).with(key).finish() &&
                           Query(*this, RemoveKeysBelow).with(key).finish();
    return commit(isRemoved);
}

bool Database::run(Statement statement)
{
    return Query(*this, statement).finish();
}

// A batch begins with its first change, and locks nobody out before.
bool Database::begin()
{
    return (m_isBatch && sqlite3_get_autocommit(m_connection) == 0) || run(Begin);
}

// Ends a change: as a whole, or as if it had never begun. Within a batch that is up to the batch.
bool Database::commit(bool isComplete)
{
    if (m_isBatch)
        return isComplete;
    if (isComplete && run(Commit))
        return true;
    run(Rollback);
    return false;
}

bool Database::endBatch(bool isComplete)
{
    m_isBatch = false;
    const bool isLost = std::exchange(m_isBatchLost, false);
    const bool isBegun = m_connection != nullptr && sqlite3_get_autocommit(m_connection) == 0;
    return (!isBegun || commit(isComplete && !isLost)) && !isLost;
}

// The database is locked for writing here, and nothing of the change can be seen yet. Not zero
// gives the change up.
int Database::beforeCommit(void* database)
{
    auto* self = static_cast<Database*>(database);
    // Another process may have found room for a counter meanwhile.
    if (self->m_counter.number() == nullptr &&
        !self->m_counter.open(self->databaseFile(), ChangeCounter::Missing::Leave))
        return 1;
    if (!self->m_counter.canMark())
        return 1;
    self->m_isChanged = true;
    self->m_numberBefore = self->m_counter.begin();
    return 0;
}

Database::Change Database::finishChange()
{
    if (std::exchange(m_isChanged, false)) {
        keepLog();
        // Who made a counter since the commit may have read what was there before.
        if (m_counter.number() == nullptr &&
            m_counter.open(databaseFile(), ChangeCounter::Missing::Leave))
            m_counter.begin();
    }
    Change change;
    change.before = std::exchange(m_numberBefore, ChangeCounter::Unknown);
    change.after = m_counter.end();
    return change;
}

// A database that came without a write-ahead log gets one as soon as nobody else has it open.
void Database::keepLog()
{
    if (std::exchange(m_hasLog, true))
        return;
    const std::uint64_t before = m_numberBefore;
    execute(m_connection, "PRAGMA journal_mode = WAL");
    m_isChanged = false;
    m_numberBefore = before;
}

}
