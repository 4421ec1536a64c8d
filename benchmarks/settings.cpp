// Settings beside GLib's key files in memory, and beside SQLite itself with one prepared statement.
#include <mdtools/application_registry.h>
#include <mdtools/registry.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef WITH_GLIB
#include <glib.h>
#endif

namespace {

using namespace Tools;

constexpr int Count = 20;
constexpr int WritesOfRound = 500;

// The directory of all stores, gone when the program ends.
struct Directory {
    Directory()
    {
        std::string name = (std::filesystem::temp_directory_path() / "mdtools-XXXXXX").string();
        path = ::mkdtemp(name.data());
        ::setenv("MDTOOLS_REGISTRY_DIR", path.c_str(), 1);
    }
    ~Directory() { std::filesystem::remove_all(path); }

    std::string path;
};

const std::string& directory()
{
    static const Directory made;
    return made.path;
}

std::string textName(int i)
{
    return "Name" + std::to_string(i);
}

std::string wordName(int i)
{
    return "Int" + std::to_string(i);
}

RegistryValue makeWord(const std::string& name)
{
    RegistryValue value;
    value.setName(name).setType(RegistryValue::DWord);
    return value;
}

RegistryKey openKey()
{
    directory();
    RegistryKey key =
        Registry::find(Registry::CurrentUser, "SOFTWARE\\MERODA\\Bench\\Settings", true);
    RegistryValue text;
    text.setType(RegistryValue::String).setData("some value here");
    for (int i = 0; i < Count; ++i)
        key.add(text.setName(textName(i))).add(makeWord(wordName(i)).setData(i * 1000));
    return key;
}

void readTextMdtools(benchmark::State& state)
{
    const RegistryKey key = openKey();
    for (auto _ : state)
        benchmark::DoNotOptimize(key["Name7"].getString());
}

void readWordMdtools(benchmark::State& state)
{
    const RegistryKey key = openKey();
    for (auto _ : state)
        benchmark::DoNotOptimize(key["Int7"].getDWord());
}

void readRegistrarMdtools(benchmark::State& state)
{
    openKey();
    const Registrar registrar("Bench\\Settings", Registry::CurrentUser);
    for (auto _ : state)
        benchmark::DoNotOptimize(registrar.readInt("Int7", RegistryValue::DWord));
}

BENCHMARK(readTextMdtools)->Name("settings_read_text/mdtools");
BENCHMARK(readWordMdtools)->Name("settings_read_word/mdtools");
BENCHMARK(readRegistrarMdtools)->Name("settings_read_registrar/mdtools");

// The plainest table for settings; write-ahead log, safe from a kill.
class Database {
public:
    explicit Database(const char* query)
    {
        sqlite3_open((directory() + "/peer.db").c_str(), &m_connection);
        sqlite3_busy_timeout(m_connection, 60000);
        run("PRAGMA journal_mode = WAL");
        run("PRAGMA synchronous = NORMAL");
        run("CREATE TABLE IF NOT EXISTS setting(name TEXT PRIMARY KEY, type INTEGER, data BLOB)");
        sqlite3_prepare_v2(m_connection, query, -1, &m_statement, nullptr);
    }
    ~Database()
    {
        sqlite3_finalize(m_statement);
        sqlite3_close(m_connection);
    }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void run(const char* text) { sqlite3_exec(m_connection, text, nullptr, nullptr, nullptr); }

    sqlite3_stmt* operator()() const { return m_statement; }

private:
    sqlite3* m_connection = nullptr;
    sqlite3_stmt* m_statement = nullptr;
};

class Writer : public Database {
public:
    Writer()
        : Database("INSERT INTO setting VALUES(?1, ?2, ?3) "
                   "ON CONFLICT(name) DO UPDATE SET type = ?2, data = ?3")
    {}

    void write(const std::string& name, int type, const void* data, int size)
    {
        sqlite3_stmt* statement = (*this)();
        sqlite3_bind_text(statement, 1, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
        sqlite3_bind_int(statement, 2, type);
        sqlite3_bind_blob(statement, 3, data, size, SQLITE_STATIC);
        if (sqlite3_step(statement) != SQLITE_DONE)
            std::abort();
        sqlite3_reset(statement);
    }
};

void readSqlite(benchmark::State& state)
{
    {
        Writer writer;
        for (int i = 0; i < Count; ++i)
            writer.write(textName(i), 1, "some value here", 16);
    }
    const Database reader("SELECT type, data FROM setting WHERE name = ?1");
    for (auto _ : state) {
        sqlite3_bind_text(reader(), 1, "Name7", 5, SQLITE_STATIC);
        sqlite3_step(reader());
        const void* data = sqlite3_column_blob(reader(), 1);
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(reader(), 1));
        benchmark::DoNotOptimize(std::string(static_cast<const char*>(data), size));
        sqlite3_reset(reader());
    }
}

BENCHMARK(readSqlite)->Name("settings_read_text/sqlite");

#ifdef WITH_GLIB

GKeyFile* makeKeyFile()
{
    GKeyFile* file = g_key_file_new();
    for (int i = 0; i < Count; ++i) {
        g_key_file_set_string(file, "Settings", textName(i).c_str(), "some value here");
        g_key_file_set_integer(file, "Settings", wordName(i).c_str(), i * 1000);
    }
    return file;
}

void readTextGlib(benchmark::State& state)
{
    GKeyFile* file = makeKeyFile();
    for (auto _ : state) {
        gchar* text = g_key_file_get_string(file, "Settings", "Name7", nullptr);
        benchmark::DoNotOptimize(text);
        g_free(text);
    }
    g_key_file_free(file);
}

void readWordGlib(benchmark::State& state)
{
    GKeyFile* file = makeKeyFile();
    for (auto _ : state)
        benchmark::DoNotOptimize(g_key_file_get_integer(file, "Settings", "Int7", nullptr));
    g_key_file_free(file);
}

BENCHMARK(readTextGlib)->Name("settings_read_text/gkeyfile");
BENCHMARK(readWordGlib)->Name("settings_read_word/gkeyfile");

#endif

// Stores one setting after the other, with a new value each time.
using Write = std::function<void(int number)>;

Write mdtoolsWriter()
{
    return [key = openKey(), value = makeWord("")](int number) mutable {
        value.setName(wordName(number % Count)).setData(number);
        key.add(value);
    };
}

Write sqliteWriter()
{
    return [writer = std::make_shared<Writer>()](int number) {
        writer->write(wordName(number % Count), 4, &number, sizeof number);
    };
}

void writeAlone(benchmark::State& state, Write (*makeWriter)())
{
    const Write write = makeWriter();
    int number = 0;
    for (auto _ : state)
        write(++number);
}

BENCHMARK_CAPTURE(writeAlone, mdtools, mdtoolsWriter)->Name("settings_write/mdtools");
BENCHMARK_CAPTURE(writeAlone, sqlite, sqliteWriter)->Name("settings_write/sqlite");

// A process that makes a round of writes for each byte that it gets, and answers each with one.
class WritingProcess {
public:
    explicit WritingProcess(Write (*makeWriter)())
    {
        if (::pipe(m_orders.data()) != 0 || ::pipe(m_answers.data()) != 0)
            std::abort();
        m_process = ::fork();
        if (m_process == 0) {
            ::close(m_orders[1]);
            obey(makeWriter());
        }
        ::close(m_orders[0]);
    }

    ~WritingProcess()
    {
        ::close(m_orders[1]);
        ::waitpid(m_process, nullptr, 0);
        ::close(m_answers[0]);
        ::close(m_answers[1]);
    }

    void order()
    {
        if (::write(m_orders[1], "", 1) != 1)
            std::abort();
    }

    void wait()
    {
        char answer = 0;
        if (::read(m_answers[0], &answer, 1) != 1)
            std::abort();
    }

private:
    [[noreturn]] void obey(const Write& write)
    {
        char order = 0;
        int number = 0;
        while (::read(m_orders[0], &order, 1) == 1) {
            for (int i = 0; i < WritesOfRound; ++i)
                write(++number);
            if (::write(m_answers[1], "", 1) != 1)
                break;
        }
        ::_exit(0);
    }

    std::array<int, 2> m_orders{};
    std::array<int, 2> m_answers{};
    pid_t m_process = 0;
};

void writeTogether(benchmark::State& state, Write (*makeWriter)())
{
    directory();
    // The later ones must not hold the earlier ones' pipes open: they end in reverse order.
    std::vector<std::unique_ptr<WritingProcess>> processes;
    for (int i = 0; i < 4; ++i)
        processes.push_back(std::make_unique<WritingProcess>(makeWriter));
    for (auto _ : state) {
        for (const auto& process : processes)
            process->order();
        for (const auto& process : processes)
            process->wait();
    }
    while (!processes.empty())
        processes.pop_back();
}

BENCHMARK_CAPTURE(writeTogether, mdtools, mdtoolsWriter)
    ->Name("settings_write_4_processes/mdtools")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writeTogether, sqlite, sqliteWriter)
    ->Name("settings_write_4_processes/sqlite")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}
