#include "store/database.h"

#include "store/store_file.h"
#include "text/code_page.h"

#include <mdtools/strings.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Store {

namespace {

// Tells a settings database from any other one.
constexpr std::int64_t ApplicationId = 0x4D645265;
constexpr std::int64_t FormatVersion = 1;

// Everyone waits for everyone; only one that was stopped for good makes the others give up.
constexpr std::chrono::seconds Patience{60};
constexpr std::chrono::microseconds Pause{500};

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

// SQLite's own handler looks less and less often, and may miss for a long time the short moments in
// which a busy writer lets others in.
int waitForOthers(void*, int count)
{
    if (count >= Patience / Pause)
        return 0;
    std::this_thread::sleep_for(Pause);
    return 1;
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
    Query(Database& database, Statement statement)
    {
        sqlite3_stmt*& prepared = database.m_statements[statement];
        if (prepared == nullptr && database.m_connection != nullptr)
            sqlite3_prepare_v3(database.m_connection, Texts[statement], -1,
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

    // Goes to the next row; false behind the last one and on failure.
    bool next()
    {
        m_result = m_statement != nullptr ? sqlite3_step(m_statement) : SQLITE_ERROR;
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
    sqlite3_stmt* m_statement = nullptr;
    int m_bound = 0;
    int m_result = SQLITE_OK;
};

Database::Database(Place place) : m_place(std::move(place)) {}

Database::~Database()
{
    close();
}

Database::FileId::FileId(const std::string& path)
{
    struct stat info {};
    if (path.empty() || ::stat(path.c_str(), &info) != 0)
        return;
    device = info.st_dev;
    inode = info.st_ino;
}

Database::State Database::open()
{
    if (m_connection != nullptr)
        return State::Open;
    struct stat info {};
    if (m_place.directory.empty())
        return State::Unusable;
    if (::stat(databaseFile().c_str(), &info) != 0)
        return errno == ENOENT || errno == ENOTDIR ? State::Missing : State::Unusable;
    if (!S_ISREG(info.st_mode) || !openFile()) {
        close();
        return State::Unusable;
    }
    ++m_opening;
    m_counter.open(counterFile(), m_place.fileMode);
    m_databaseId = FileId(databaseFile());
    m_counterId = FileId(counterFile());
    return State::Open;
}

bool Database::openFile()
{
    // A file that may not be written is opened for reading only.
    if (sqlite3_open_v2(databaseFile().c_str(), &m_connection,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK)
        return false;
    sqlite3_busy_handler(m_connection, waitForOthers, nullptr);
    sqlite3_db_config(m_connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(m_connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    // What was committed survives the process. A write-ahead log needs no more than that to stay
    // sound when the power fails, too; a rollback journal needs SQLite's full care.
    if (m_place.hasWriteAheadLog && !execute(m_connection, "PRAGMA synchronous = NORMAL"))
        return false;
    sqlite3_commit_hook(m_connection, beforeCommit, this);
    return readNumber(m_connection, "PRAGMA application_id") == ApplicationId &&
           readNumber(m_connection, "PRAGMA user_version") == FormatVersion;
}

bool Database::openOrMake()
{
    State state = open();
    if (state == State::Missing && make())
        state = open();
    return state == State::Open;
}

// The database is filled under another name: under its own it is there completely or not at all,
// whoever else makes it at the same time or is killed on the way.
bool Database::make()
{
    if (!makeStoreDirectory(m_place.directory, m_place.directoryMode))
        return false;
    const std::string beside = makeStoreFileBeside(databaseFile(), m_place.fileMode);
    if (beside.empty())
        return false;
    const bool isThere =
        fill(beside) && (::link(beside.c_str(), databaseFile().c_str()) == 0 || errno == EEXIST);
    ::unlink(beside.c_str());
    return isThere;
}

bool Database::fill(const std::string& path) const
{
    sqlite3* connection = nullptr;
    const bool isFilled =
        sqlite3_open_v2(path.c_str(), &connection, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX,
                        nullptr) == SQLITE_OK &&
        setNumber(connection, "page_size", PageSize) && execute(connection, "BEGIN") &&
        execute(connection, Schema) && setNumber(connection, "application_id", ApplicationId) &&
        setNumber(connection, "user_version", FormatVersion) && execute(connection, "COMMIT") &&
        (!m_place.hasWriteAheadLog || execute(connection, "PRAGMA journal_mode = WAL"));
    return sqlite3_close(connection) == SQLITE_OK && isFilled;
}

void Database::close()
{
    for (sqlite3_stmt*& statement : m_statements)
        sqlite3_finalize(std::exchange(statement, nullptr));
    if (m_connection == nullptr)
        return;
    // Others may be about to open the database: its log stays for them.
    sqlite3_db_config(m_connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    sqlite3_close(std::exchange(m_connection, nullptr));
}

bool Database::isExchanged() const
{
    return m_connection != nullptr &&
           !(FileId(databaseFile()) == m_databaseId && FileId(counterFile()) == m_counterId);
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
    if (!run(Begin))
        return false;
    key = keyExists(from) ? from : NoKey;
    for (const std::string_view name : names)
        key = key != NoKey ? findOrInsert(key, name) : NoKey;
    return commit(key != NoKey);
}

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
    const std::string folded = fold(name);
    Query query(*this, RemoveValue);
    return query.with(key).with(folded).finish() && sqlite3_changes(m_connection) > 0;
}

bool Database::removeTree(KeyId key)
{
    if (!run(Begin))
        return false;
    const bool isRemoved = Query(*this, RemoveValuesBelow).with(key).finish() &&
                           Query(*this, RemoveKeysBelow).with(key).finish();
    return commit(isRemoved);
}

bool Database::run(Statement statement)
{
    return Query(*this, statement).finish();
}

bool Database::commit(bool isComplete)
{
    if (isComplete && run(Commit))
        return true;
    run(Rollback);
    return false;
}

// The database is locked for writing here, and nothing of the change can be seen yet.
int Database::beforeCommit(void* database)
{
    auto* self = static_cast<Database*>(database);
    self->m_numberBefore = self->m_counter.begin();
    return 0;
}

Database::Change Database::finishChange()
{
    Change change;
    change.before = std::exchange(m_numberBefore, ChangeCounter::Unknown);
    change.after = m_counter.end();
    return change;
}

}
