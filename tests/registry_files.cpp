// What only the stores on Linux have: files, their rights, and what can happen to them.
#include "registry_files_test.h"
#include "support/files.h"
#include "support/posix/change_counters.h"
#include "support/waiting.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <signal.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace Tools;
using namespace MdToolsTest;

TEST_F(RegistryFiles, rights)
{
    for (const mode_t mask : {0, 077}) {
        const mode_t old = ::umask(mask);
        run({"write", User, "K", "v", "x"});
        run({"write", Machine, "K", "v", "x"});
        ::umask(old);
        EXPECT_EQ(modeOf(m_directory / "user.db"), 0600);
        EXPECT_EQ(modeOf(m_directory / "user.db-wal"), 0600);
        EXPECT_EQ(modeOf(m_directory / "user.db-shm"), 0600);
        EXPECT_EQ(modeOf(m_directory / "machine.db"), 0644);
        EXPECT_EQ(modeOf(m_directory / "machine.db-wal"), 0644);
        EXPECT_EQ(modeOf(m_directory / "machine.db-shm"), 0644);
        for (const fs::directory_entry& entry : fs::directory_iterator(m_directory))
            fs::remove(entry);
    }
}

TEST_F(RegistryFiles, places)
{
    const fs::path configuration = m_directory / "new" / "config";
    runChild(builtProgram("settings_child"), {"write", User, "K", "v", "x"},
             {{"MDTOOLS_REGISTRY_DIR", ""}, {"XDG_CONFIG_HOME", configuration.string()}});
    EXPECT_TRUE(fs::exists(configuration / "Meroda" / "user.db"));
    EXPECT_EQ(modeOf(configuration / "Meroda"), 0700);

    runChild(builtProgram("settings_child"), {"write", User, "K", "v", "x"},
             {{"MDTOOLS_REGISTRY_DIR", ""},
              {"XDG_CONFIG_HOME", ""},
              {"HOME", (m_directory / "home").string()}});
    EXPECT_TRUE(fs::exists(m_directory / "home" / ".config" / "Meroda" / "user.db"));
}

// Reading makes no file.
TEST_F(RegistryFiles, readingLeavesNoTrace)
{
    EXPECT_EQ(run({"read", User, "", ""}), "invalid\n");
    EXPECT_EQ(run({"read", Machine, "K", "v"}), "invalid\n");
    EXPECT_TRUE(fs::is_empty(m_directory));
}

TEST_F(RegistryFiles, damagedStoreIsLeftAlone)
{
    run({"words", User, "K", "v", "3000"});
    const fs::path database = m_directory / "user.db";
    sqlite3* connection = nullptr;
    sqlite3_open(database.c_str(), &connection);
    sqlite3_exec(connection, "PRAGMA journal_mode = DELETE", nullptr, nullptr, nullptr);
    sqlite3_close(connection);
    const std::string good = readFile(database);
    ASSERT_GT(good.size(), 20000u);

    std::string noise = good;
    for (std::size_t i = 1024; i < noise.size(); ++i)
        noise[i] = static_cast<char>(i * 2654435761u >> 13);
    const fs::path other = m_directory / "other";
    sqlite3_open(other.c_str(), &connection);
    sqlite3_exec(connection, "CREATE TABLE key(id); CREATE TABLE value(key)", nullptr, nullptr,
                 nullptr);
    sqlite3_close(connection);

    // Right but for its mark, or of a later version.
    const auto marked = [&](const char* mark) {
        writeFile(other, good);
        sqlite3_open(other.c_str(), &connection);
        sqlite3_exec(connection, mark, nullptr, nullptr, nullptr);
        sqlite3_close(connection);
        return readFile(other);
    };
    const std::string foreign = readFile(other);
    const std::string damages[] = {
        "",
        "x",
        std::string(100000, 'x'),
        noise,
        good.substr(0, 100),
        good.substr(0, 2000),
        foreign,
        marked("PRAGMA application_id = 1"),
        marked("PRAGMA user_version = 1000"),
    };
    for (const std::string& damage : damages) {
        SCOPED_TRACE(damage.size());
        writeFile(database, damage);
        EXPECT_EQ(run({"read", User, "K", "v7"}), "invalid\n");
        EXPECT_EQ(run({"write", User, "K", "new", "text"}), "");
        EXPECT_EQ(readFile(database), damage);
    }
    fs::remove(database);
    fs::create_directory(database);
    EXPECT_EQ(run({"read", User, "", ""}), "invalid\n");
    EXPECT_EQ(runChild(builtProgram("settings_child"), {"write", User, "K", "v", "x"}, variables())
                  .exitCode,
              1);
    fs::remove(database);
    writeFile(database, good);
    EXPECT_EQ(run({"read", User, "K", "v7"}), "7\n");
}

TEST_F(RegistryFiles, killedWriterOfTheMachine)
{
    for (int round = 0; round < 3; ++round) {
        Child child(builtProgram("settings_child"), {"count", Machine, "K", "v"}, variables());
        ASSERT_TRUE(child.waitUntil([&] {
            return std::atoi(run({"read", Machine, "K", "v"}).c_str()) >= 3 + round;
        }));
        child.kill();
        std::string lines = child.wait().output;
        lines.erase(lines.find_last_of('\n'));
        const int reported = std::atoi(lines.c_str() + lines.find_last_of('\n') + 1);
        const int stored = std::atoi(run({"read", Machine, "K", "v"}).c_str());
        EXPECT_GE(stored, reported);
        EXPECT_LE(stored, reported + 1);
        run({"write", Machine, "K", "v", "0"});
        EXPECT_EQ(run({"read", Machine, "K", "v"}), "0\n");
    }
}

// Others may be stopped or killed in the middle of a change, of any user: all read what was
// committed last at once, also those who may change nothing.
TEST_F(RegistryFiles, stoppedWriterOfTheMachine)
{
    RegistryKey key = Registry::find(Registry::LocalMachine, "Stopped", true);
    fs::permissions(workDirectory(), fs::perms(0755));
    fs::permissions(ownStore(), fs::perms(0755));
    const auto readAsAnother = [] {
        int status = -1;
        const pid_t reader = ::fork();
        if (reader == 0) {
            if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
                ::_exit(1);
            const RegistryKey seen = Registry::find(Registry::LocalMachine, "Stopped", false);
            ::_exit(seen["v"].getDWord() > 0 ? 0 : 1);
        }
        ::waitpid(reader, &status, 0);
        return status == 0;
    };
    for (int round = 0; round < 10; ++round) {
        SCOPED_TRACE(round);
        key.add(makeValue("v", RegistryValue::DWord).setData(0));
        Child child(builtProgram("settings_child"), {"count", Machine, "Stopped", "v"});
        ASSERT_TRUE(waitUntil([&] { return key["v"].getDWord() >= 2; })) << "nothing is written";
        ::kill(static_cast<pid_t>(child.processId()), SIGSTOP);
        EXPECT_TRUE(readAsAnother());
        child.kill();
        child.wait();
        EXPECT_TRUE(readAsAnother());
    }
}

// Whoever reads or copies the files of a store in use takes nothing of its safety away.
TEST_F(RegistryFiles, backupsOfAStoreInUse)
{
    std::vector<std::unique_ptr<Child>> children;
    for (const char* name : {"a", "b", "c"})
        children.push_back(std::make_unique<Child>(
            builtProgram("settings_child"),
            std::vector<std::string>{"backup", User, "K", name, m_directory.string()},
            variables()));
    for (const std::unique_ptr<Child>& child : children)
        EXPECT_EQ(child->wait().exitCode, 0);
    for (const char* name : {"a", "b", "c"})
        EXPECT_EQ(run({"read", User, "K", name}), "99\n");

    sqlite3* connection = nullptr;
    sqlite3_stmt* check = nullptr;
    sqlite3_open((m_directory / "user.db").c_str(), &connection);
    sqlite3_prepare_v2(connection, "PRAGMA integrity_check", -1, &check, nullptr);
    ASSERT_EQ(sqlite3_step(check), SQLITE_ROW);
    EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(check, 0)), "ok");
    sqlite3_finalize(check);
    sqlite3_close(connection);
}

// An import is all of the file or nothing: the hive before the one that refuses is as it was, with
// what was there before, and an interrupted export leaves the old file.
TEST_F(RegistryFiles, importsAllOrNothing)
{
    const std::string file = (m_directory / "file.reg").string();
    const auto tool = [this](const std::vector<std::string>& arguments) {
        return runChild(builtProgram("mdtools-registry"), arguments, variables());
    };
    writeFile(file, "REGEDIT4\n[HKEY_CURRENT_USER\\Old]\n\"a\"=\"1\"\n\"b\"=\"2\"\n"
                    "[HKEY_CURRENT_USER\\Old\\Empty]\n");
    ASSERT_EQ(tool({"import", file}).exitCode, 0);
    ASSERT_EQ(tool({"export", "HKCU\\Old", file, "--regedit4"}).exitCode, 0);
    const std::string before = readFile(file);

    const std::string changes = (m_directory / "changes.reg").string();
    writeFile(changes, "REGEDIT4\n[HKEY_CURRENT_USER\\Old]\n\"a\"=\"3\"\n\"b\"=-\n\"c\"=\"4\"\n"
                       "[HKEY_CURRENT_USER\\New\\Deep]\n[-HKEY_CURRENT_USER\\Old\\Empty]\n"
                       "[HKEY_LOCAL_MACHINE\\M]\n");
    fs::create_directory(m_directory / "machine.db");
    const ChildResult refused = tool({"import", changes});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.errors.find("line 8"), std::string::npos) << refused.errors;
    ASSERT_EQ(tool({"export", "HKCU\\Old", file, "--regedit4"}).exitCode, 0);
    EXPECT_EQ(readFile(file), before);
    EXPECT_EQ(tool({"list", "HKCU\\New"}).exitCode, 1);

    // The name aside is taken, so that the new file cannot be written.
    fs::create_directory(file + ".new");
    EXPECT_EQ(tool({"export", "HKCU", file, "--regedit4"}).exitCode, 1);
    EXPECT_EQ(readFile(file), before);
    fs::remove(file + ".new");
    {
        const HeldFile held(file);
        EXPECT_EQ(tool({"export", "HKCU", file, "--regedit4"}).exitCode, 1);
    }
    EXPECT_EQ(readFile(file), before);
    EXPECT_FALSE(fs::exists(file + ".new"));
}

// Files cut short, as while a backup is copied over them, links in their place.
TEST_F(RegistryFiles, filesThatOthersChange)
{
    writeText("v", "1");
    for (const std::uintmax_t size : {0, 4096, 20000}) {
        SCOPED_TRACE(size);
        fs::resize_file(ownStore() / "user.db-shm", size);
        writeText("w", std::to_string(size));
        EXPECT_EQ(m_key["v"].getString(), "1");
        EXPECT_EQ(m_key["W"].getString(), std::to_string(size));
    }

    // The index of the log as a killed writer may have left it: without what was committed.
    run({"write", User, "K", "v", "1"});
    const std::string stale = readFile(m_directory / "user.db-shm");
    run({"write", User, "K", "v", "2"});
    writeFile(m_directory / "user.db-shm", stale);
    EXPECT_EQ(run({"read", User, "K", "v"}), "2\n");

    for (const char* name : {"user.db", "user.db-wal", "user.db-shm"}) {
        SCOPED_TRACE(name);
        run({"write", User, "K", "v", "x"});
        fs::rename(m_directory / name, m_directory / "other");
        const std::string before = readFile(m_directory / "other");
        fs::create_symlink(m_directory / "other", m_directory / name);
        run({"write", User, "K", "v", "y"});
        EXPECT_EQ(readFile(m_directory / "other"), before);
        for (const fs::directory_entry& entry : fs::directory_iterator(m_directory))
            fs::remove(entry);
    }
}

TEST_F(RegistryFiles, manyMakeTheStoreAtOnce)
{
    constexpr int Count = 8;
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < Count; ++i)
        children.push_back(
            std::make_unique<Child>(builtProgram("settings_child"),
                                    std::vector<std::string>{"write", i % 2 == 0 ? User : Machine,
                                                             "K\\L", std::to_string(i), "made"},
                                    variables()));
    for (const std::unique_ptr<Child>& child : children)
        EXPECT_EQ(child->wait().exitCode, 0);
    for (int i = 0; i < Count; ++i)
        EXPECT_EQ(run({"read", i % 2 == 0 ? User : Machine, "k\\l", std::to_string(i)}), "made\n");
}

// Whatever number a killed writer or some nonsense left, changes are seen.
TEST_F(RegistryFiles, changeCounter)
{
    writeText("first", "");
    const fs::path counter = counterOf(ownStore() / "user.db");
    ASSERT_EQ(modeOf(counter), 0600);
    const auto setCounter = [&counter](std::uint64_t number) {
        std::fstream file(counter, std::ios::binary | std::ios::in | std::ios::out);
        file.write(reinterpret_cast<const char*>(&number), sizeof number);
    };
    RegistryKey other(m_key, "Other", true);
    const auto checkChanges = [&] {
        for (const std::string text : {"1", "2", "3"}) {
            EXPECT_EQ(m_key["v"].valid(), text != "1");
            runChild(builtProgram("settings_child"), {"write", User, m_path, "v", text});
            // A change of our own in between must not make what was known of "v" new.
            other.add(makeValue("w", RegistryValue::String).setData(text));
            EXPECT_EQ(m_key["v"].getString(), text);
            writeText("w", text);
            EXPECT_EQ(m_key["W"].getString(), text);
        }
        m_key.remove(makeValue("v", RegistryValue::None));
    };
    checkChanges();
    for (const std::uint64_t number : {std::uint64_t{77}, ~std::uint64_t{0}, std::uint64_t{0}}) {
        SCOPED_TRACE(number);
        setCounter(number);
        checkChanges();
    }
    writeText("walk", "");
    setCounter(1001);
    RegistryValue::Iterator walk(m_key);
    int count = 0;
    for (walk.begin(); walk.valid(); ++walk)
        ++count;
    EXPECT_EQ(count, Platform::countValues(m_key.handle()));
}

// The next key opened after a while is one of the new store.
TEST_F(RegistryFiles, exchangedStore)
{
    writeText("v", "old");
    EXPECT_EQ(m_key["v"].getString(), "old");
    Platform::ChangeBatch batch;
    writeText("v", "lost");
    const fs::path kept = m_directory / "kept";
    fs::create_directory(kept);
    for (const char* name : {"user.db", "user.db-wal", "user.db-shm"})
        fs::rename(ownStore() / name, kept / name);

    const auto reads = [this](const std::string& text) {
        return waitUntil([&] {
            return Registry::find(Registry::CurrentUser, m_path, false)["v"].getString() == text;
        });
    };
    ASSERT_TRUE(reads("")) << "the old store is still read";
    EXPECT_FALSE(batch.commit()) << "the batch went with the old store";
    runChild(builtProgram("settings_child"), {"write", User, m_path, "v", "new"});
    ASSERT_TRUE(reads("new")) << "the new store is not read";
    // The old key belonged to the old store.
    EXPECT_FALSE(m_key["v"].valid());
    writeText("v", "lost");
    m_key = Registry::find(Registry::CurrentUser, m_path, false);
    EXPECT_EQ(m_key["v"].getString(), "new");
}

TEST_F(RegistryFiles, fork)
{
    writeText("parent", "1");
    RegistryKey inherited = m_key;
    EXPECT_EQ(inherited["parent"].getString(), "1");
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        for (int i = 0; i < 100; ++i)
            inherited.add(makeValue("c" + std::to_string(i), RegistryValue::DWord).setData(i));
        ::_exit(inherited["parent"].valid() && inherited["c99"].getDWord() == 99 ? 0 : 1);
    }
    for (int i = 0; i < 100; ++i)
        m_key.add(makeValue("p" + std::to_string(i), RegistryValue::DWord).setData(i));
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Platform::countValues(inherited.handle()), 201);
    EXPECT_EQ(m_key["c99"].getDWord(), 99u);
}

// Other users read the machine's store and cannot change it, nor read this user's.
TEST_F(RegistryFiles, otherUsers)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    RegistryKey machine = Registry::find(Registry::LocalMachine, "Other", true);
    machine.add(makeValue("v", RegistryValue::DWord).setData(5));
    fs::permissions(workDirectory(), fs::perms(0755));
    fs::permissions(ownStore(), fs::perms(0755));
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isOther = ::setgid(65534) == 0 && ::setuid(65534) == 0;
        machine.add(makeValue("v", RegistryValue::DWord).setData(6));
        const RegistryKey key = Registry::find(Registry::LocalMachine, "Other", false);
        const bool canRead = key["v"].getDWord() == 5;
        const bool canCreate = Registry::find(Registry::LocalMachine, "New", true).valid();
        const bool canSpy = Registry::find(Registry::CurrentUser, m_path, false).valid();
        ::_exit(isOther && canRead && !canCreate && !canSpy ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(machine["v"].getDWord(), 5u);

    // A store that could only be read is written as soon as that is allowed.
    const pid_t second = ::fork();
    if (second == 0) {
        {
            const OrdinaryUser user;
            machine.add(makeValue("v", RegistryValue::DWord).setData(6));
        }
        const bool isRefused = machine["v"].getDWord() == 5;
        machine.add(makeValue("v", RegistryValue::DWord).setData(7));
        ::_exit(isRefused ? 0 : 1);
    }
    ASSERT_EQ(::waitpid(second, &status, 0), second);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(machine["v"].getDWord(), 7u);
}

// A library that is unloaded closes what it had open. Tables of constants stay by intention; a leak
// checker would find them.
TEST_F(RegistryFiles, unloading)
{
    const ChildResult host = runChild(builtProgram("settings_host"),
                                      {builtProgram("settings_module.so"), libraryPath(), m_path},
                                      {{"ASAN_OPTIONS", "detect_leaks=0"}});
    EXPECT_EQ(host.exitCode, 0) << host.errors;
    EXPECT_EQ(m_key["module"].getDWord(), 5u);
}

// Handles that were closed already do no harm.
TEST_F(RegistryFiles, staleHandles)
{
    const KeyHandle handle = Platform::openKey(m_key.handle(), {}, false);
    Platform::closeKey(handle);
    Platform::closeKey(handle);
    std::vector<RegistryKey> others(3, m_key);
    EXPECT_FALSE(RegistryValue(handle, "v").valid());
    EXPECT_EQ(Platform::openKey(handle, {}, false), nullptr);
    EXPECT_EQ(Platform::countValues(handle), -1);
    for (const RegistryKey& key : others)
        EXPECT_EQ(Platform::countValues(key.handle()), 0);
}

// A second byte may look like a separator or a letter; in names of the limits' sizes it counts as
// no character.
TEST_F(RegistryFiles, doubleByteNames)
{
    const auto run932 = [this](const std::vector<std::string>& arguments) {
        Variables all = variables();
        all.emplace_back("MDTOOLS_CODEPAGE", "932");
        return runChild(builtProgram("settings_child"), arguments, all).output;
    };
    run932({"write", User, "\x83\\\\K", "\x83\x41", "so"});
    EXPECT_EQ(run932({"read", User, "\x83\\/k", "\x83\x41"}), "so\n");
    EXPECT_EQ(run932({"read", User, "\x83\\/k", "\x83\x61"}), "invalid\n");
    EXPECT_EQ(run932({"read", User, "\x83", ""}), "invalid\n");

    std::string name;
    for (int i = 0; i < 255; ++i)
        name += "\x83\x41";
    run932({"write", User, name, "v", "long"});
    EXPECT_EQ(run932({"read", User, name, "v"}), "long\n");
    run932({"write", User, name + "x", "v", "longer"});
    EXPECT_EQ(run932({"read", User, name + "x", "v"}), "invalid\n");
    EXPECT_EQ(run({"read", User, name, "v"}), "invalid\n");
}

TEST_F(RegistryFiles, largeAndManyValues)
{
    // More than is kept of what was read.
    const std::string large(5000000, 'x');
    for (const char* name : {"a", "b", "c", "d", "e"})
        writeText(name, name + large);
    for (const char* name : {"a", "b", "c", "d", "e"})
        EXPECT_EQ(m_key[name].getString(), name + large);
    EXPECT_EQ(Platform::countValues(m_key.handle()), 5);
}

}
