#include "platform/registry_store.h"

#include "platform/environment.h"
#include "platform/known_folders.h"
#include "platform/lifetime.h"
#include "platform/report.h"
#include "store/database_files.h"
#include "store/hive_cache.h"
#include "store/recent_values.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <thread>
#include <vector>

#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Store {

namespace {

// The open keys of this process, under generational handles: a number in the guise of a pointer,
// made of an index into the list and of how often that entry was used before. A handle that was
// closed already names nothing and does no harm.
class OpenKeys {
public:
    struct Entry {
        HiveCache* hive = nullptr;
        HiveCache::Key key;
        std::uint32_t use = 1;
    };

    KeyHandle add(HiveCache* hive, KeyId key)
    {
        if (hive == nullptr || key == NoKey)
            return nullptr;
        if (m_free.empty()) {
            m_free.push_back(m_entries.size());
            m_entries.emplace_back();
        }
        const std::size_t index = m_free.back();
        m_free.pop_back();
        Entry& entry = m_entries[index];
        entry.hive = hive;
        entry.key = HiveCache::Key();
        entry.key.id = key;
        return reinterpret_cast<KeyHandle>(std::uintptr_t{entry.use} << 32 | (index + 1));
    }

    Entry* find(KeyHandle handle)
    {
        const auto number = reinterpret_cast<std::uintptr_t>(handle);
        const std::size_t index = (number & 0xFFFFFFFF) - 1;
        if (index >= m_entries.size())
            return nullptr;
        Entry& entry = m_entries[index];
        return entry.hive != nullptr && entry.use == number >> 32 ? &entry : nullptr;
    }

    void remove(KeyHandle handle)
    {
        Entry* entry = find(handle);
        if (entry == nullptr)
            return;
        entry->hive = nullptr;
        ++entry->use;
        m_free.push_back(static_cast<std::size_t>(entry - m_entries.data()));
    }

private:
    std::vector<Entry> m_entries;
    std::vector<std::size_t> m_free;
};

// A relative name means the directory that the program is in at the first use.
std::string directoryOfAll()
{
    std::string path;
    std::error_code error;
    if (Platform::readVariable("MDTOOLS_REGISTRY_DIR", path) && !path.empty())
        path = std::filesystem::absolute(path, error).string();
    return path;
}

// Empty if the user has no folder for it.
std::string userDirectory()
{
    const std::string data = Platform::applicationDataPath();
    return data.empty() ? data : data + "/Meroda";
}

constexpr mode_t OwnerOnly = S_IRUSR | S_IWUSR;
constexpr mode_t ReadableByAll = OwnerOnly | S_IRGRP | S_IROTH;
constexpr mode_t OpenToAll = S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH;

Database::Location userLocation(const std::string& directory, const std::string& name)
{
    return {directory.empty() ? userDirectory() : directory, name, S_IRWXU, OwnerOnly};
}

Database::Location machineLocation(const std::string& directory, const std::string& name)
{
    return {directory.empty() ? "/etc/meroda" : directory, name, OpenToAll, ReadableByAll};
}

// Everything that a process holds of the store, from its first use until the library is unloaded.
class Hives {
public:
    static Hives& get()
    {
        static Hives* store = make();
        return *store;
    }

    HiveCache* hive(int number)
    {
        const bool isKnown = number >= 0 && number < static_cast<int>(m_hives.size());
        return isKnown ? &m_hives[static_cast<std::size_t>(number)] : nullptr;
    }

    void clearBusy()
    {
        for (HiveCache& hive : m_hives)
            hive.clearBusy();
    }

    bool isBusy() const
    {
        return std::any_of(m_hives.begin(), m_hives.end(),
                           [](const HiveCache& hive) { return hive.isBusy(); });
    }

    void beginBatch()
    {
        for (HiveCache& hive : m_hives)
            hive.beginBatch();
    }

    bool endBatch(bool isComplete)
    {
        bool isDone = true;
        for (HiveCache& hive : m_hives)
            isDone = hive.endBatch(isComplete && isDone) && isDone;
        return isDone;
    }

    RecentValues recent;
    std::mutex mutex;
    OpenKeys keys;

private:
    explicit Hives(const std::string& directory)
        : m_hives{HiveCache(machineLocation(directory, "machine")),
                  HiveCache(userLocation(directory, "user")),
                  HiveCache(machineLocation(directory, "classes"))}
    {}

    static Hives* make()
    {
        auto* store = new Hives(directoryOfAll());
        ::pthread_atfork(beforeFork, afterFork, afterFork);
        Platform::onLibraryEnd(release);
        return store;
    }

    // At the end of the process keys may still be in use, and the system closes all by itself.
    static void release(Platform::LibraryEnd end)
    {
        if (end != Platform::LibraryEnd::Unloading)
            return;
        delete &get();
        forgetDatabaseFiles();
    }

    // A database that a child process inherits open would be damaged by the two.
    static void beforeFork()
    {
        Hives& store = get();
        store.mutex.lock();
        for (HiveCache& hive : store.m_hives)
            hive.close();
    }

    static void afterFork() { get().mutex.unlock(); }

    std::array<HiveCache, 3> m_hives;
};

// The store for as long as a call takes.
class LockedStore {
public:
    LockedStore() : m_store(Hives::get()), m_lock(m_store.mutex) { m_store.clearBusy(); }

    bool isBusy() const { return m_store.isBusy(); }
    void beginBatch() { m_store.beginBatch(); }
    bool endBatch(bool isComplete) { return m_store.endBatch(isComplete); }

    HiveCache* hive(int number) { return m_store.hive(number); }
    OpenKeys& keys() { return m_store.keys; }

    KeyHandle open(HiveCache* hive, KeyId from, Platform::KeyNames names, bool create)
    {
        if (hive == nullptr)
            return nullptr;
        // Someone may remove or exchange the files under a running program. Opening a key is a good
        // moment to notice.
        if (hive->checkFiles())
            m_store.recent.clear();
        return keys().add(hive, create ? hive->findOrCreate(from, names) : hive->find(from, names));
    }

    void remember(KeyHandle key, const HiveCache& hive, const std::string& name,
                  const StoredValue& value)
    {
        if (hive.changeNumber() != ChangeCounter::Unknown)
            m_store.recent.store(key, name, value, hive.counter(), hive.changeNumber());
    }

private:
    Hives& m_store;
    std::lock_guard<std::mutex> m_lock;
};

// A reader waits for nobody but one who makes the index of the log anew after a crash.
constexpr std::chrono::seconds ReadPatience{1};
// Commits are short: only a program that was stopped in the middle of one holds the store longer.
constexpr std::chrono::seconds ChangePatience{5};
constexpr std::chrono::microseconds Pause{500};

// Calls until no other program is in the way. Between two tries the process's own threads get on.
template <class Call>
auto untilFree(std::chrono::seconds patience, const Call& call)
{
    std::chrono::steady_clock::time_point begin{};
    for (;;) {
        {
            LockedStore store;
            auto result = call(store);
            if (!store.isBusy())
                return result;
            const auto now = std::chrono::steady_clock::now();
            if (begin == std::chrono::steady_clock::time_point{})
                begin = now;
            if (now - begin >= patience)
                return result;
        }
        std::this_thread::sleep_for(Pause);
    }
}

// The same for a change; says so when one was given up.
template <class Call>
auto change(const Call& call)
{
    bool isBusy = false;
    auto result = untilFree(ChangePatience, [&](LockedStore& store) {
        auto made = call(store);
        isBusy = store.isBusy();
        return made;
    });
    if (isBusy)
        Platform::report("Settings: a change was given up, another program holds the store");
    return result;
}

using Names = const std::vector<std::string>*;

int countOf(Names names)
{
    return names != nullptr ? static_cast<int>(names->size()) : -1;
}

bool nameAt(Names names, int index, std::string& name)
{
    if (index < 0 || index >= countOf(names))
        return false;
    name = (*names)[static_cast<std::size_t>(index)];
    return true;
}

Names valueNames(OpenKeys::Entry* entry)
{
    return entry != nullptr ? entry->hive->valueNames(entry->key) : nullptr;
}

Names subkeyNames(OpenKeys::Entry* entry)
{
    return entry != nullptr ? entry->hive->subkeyNames(entry->key) : nullptr;
}

}

}

namespace Tools::Platform {

using namespace Store;

namespace {

template <class Open>
KeyHandle openOr(bool create, const Open& open)
{
    return create ? change(open) : untilFree(ReadPatience, open);
}

}

KeyHandle openKey(int hive, KeyNames names, bool create)
{
    return openOr(create, [&](LockedStore& store) {
        return store.open(store.hive(hive), RootKey, names, create);
    });
}

KeyHandle openKey(KeyHandle parent, KeyNames names, bool create)
{
    return openOr(create, [&](LockedStore& store) {
        const OpenKeys::Entry* entry = store.keys().find(parent);
        return entry != nullptr ? store.open(entry->hive, entry->key.id, names, create) : nullptr;
    });
}

void closeKey(KeyHandle key)
{
    LockedStore().keys().remove(key);
}

bool readValue(KeyHandle key, const std::string& name, ValueReceiver& receiver)
{
    bool exists = false;
    if (Hives::get().recent.read(key, name, exists, receiver))
        return exists;
    return untilFree(ReadPatience, [&](LockedStore& store) {
        OpenKeys::Entry* entry = store.keys().find(key);
        const StoredValue* value =
            entry != nullptr ? entry->hive->value(entry->key, name.c_str()) : nullptr;
        if (value == nullptr)
            return false;
        store.remember(key, *entry->hive, name, *value);
        if (value->exists)
            receiver.receive(value->kind, value->data);
        return value->exists;
    });
}

bool writeValue(KeyHandle key, const std::string& name, std::uint32_t kind, const void* data,
                std::size_t size)
{
    const std::string_view bytes(static_cast<const char*>(data), size);
    return change([&](LockedStore& store) {
        OpenKeys::Entry* entry = store.keys().find(key);
        return entry != nullptr && entry->hive->writeValue(entry->key, name.c_str(), kind, bytes);
    });
}

bool removeValue(KeyHandle key, const std::string& name)
{
    return change([&](LockedStore& store) {
        OpenKeys::Entry* entry = store.keys().find(key);
        return entry != nullptr && entry->hive->removeValue(entry->key, name.c_str());
    });
}

bool removeTree(KeyHandle parent, KeyNames names)
{
    return change([&](LockedStore& store) {
        OpenKeys::Entry* entry = store.keys().find(parent);
        if (entry == nullptr || names.empty())
            return false;
        const KeyId key = entry->hive->find(entry->key.id, names);
        return key != NoKey && entry->hive->removeTree(key);
    });
}

ChangeBatch::ChangeBatch()
{
    LockedStore().beginBatch();
}

ChangeBatch::~ChangeBatch()
{
    cancel();
}

bool ChangeBatch::commit()
{
    return LockedStore().endBatch(true);
}

bool ChangeBatch::cancel()
{
    LockedStore().endBatch(false);
    return true;
}

int countSubkeys(KeyHandle key)
{
    return untilFree(ReadPatience, [&](LockedStore& store) {
        return countOf(subkeyNames(store.keys().find(key)));
    });
}

int countValues(KeyHandle key)
{
    return untilFree(ReadPatience, [&](LockedStore& store) {
        return countOf(valueNames(store.keys().find(key)));
    });
}

bool subkeyName(KeyHandle key, int index, std::string& name)
{
    return untilFree(ReadPatience, [&](LockedStore& store) {
        return nameAt(subkeyNames(store.keys().find(key)), index, name);
    });
}

bool valueName(KeyHandle key, int index, std::string& name)
{
    return untilFree(ReadPatience, [&](LockedStore& store) {
        return nameAt(valueNames(store.keys().find(key)), index, name);
    });
}

}
