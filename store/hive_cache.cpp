#include "store/hive_cache.h"

#include <ctime>
#include <utility>

namespace Tools::Store {

namespace {

// All is forgotten when the cache has grown to this size.
constexpr std::size_t MaximumSize = std::size_t{16} << 20;
// The rough price of an entry beside its text and data.
constexpr std::size_t EntrySize = 128;

constexpr std::int64_t CheckMilliseconds = 100;

std::int64_t milliseconds()
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

}

HiveCache::HiveCache(Database::Location location) : m_database(std::move(location)) {}

KeyId HiveCache::find(KeyId from, Platform::KeyNames names)
{
    if (!refresh())
        return names.empty() && isEmptyRoot(from) ? RootKey : NoKey;
    if (names.empty())
        return exists(from) ? from : NoKey;
    for (const std::string_view name : names)
        from = from != NoKey ? subkey(from, name) : NoKey;
    return from;
}

KeyId HiveCache::findOrCreate(KeyId from, Platform::KeyNames names)
{
    KeyId key = find(from, names);
    if (key != NoKey || !openFor(from))
        return key;
    const bool isCreated = m_database.createKeys(from, names, key);
    adopt(m_database.finishChange());
    clear();
    return isCreated ? key : NoKey;
}

bool HiveCache::checkFiles()
{
    const std::int64_t now = milliseconds();
    if (now < m_nextCheck)
        return false;
    m_nextCheck = now + CheckMilliseconds;
    m_changeNumber = ChangeCounter::Unknown;
    const bool isExchanged = m_database.isExchanged();
    if (isExchanged)
        close();
    return isExchanged;
}

// Whatever is asked for next has to pass refreshSlowly(), which opens the database.
void HiveCache::close()
{
    m_database.close();
    m_changeNumber = ChangeCounter::Unknown;
}

// True if m_keys can be trusted. A number that stays the same and even is enough to know.
bool HiveCache::refresh()
{
    const std::uint64_t number = m_database.changeNumber();
    return (number == m_changeNumber && number % 2 == 0) || refreshSlowly();
}

// Asks SQLite, with some system calls, and notes the number at which the answer was right.
bool HiveCache::refreshSlowly()
{
    if (m_database.open() != Database::State::Open)
        return false;
    const std::uint64_t number = m_database.changeNumber();
    const std::int64_t version = m_database.dataVersion();
    if (version < 0)
        return false;
    // The version counts from somewhere else after each opening.
    if (m_opening != m_database.opening() || m_dataVersion != version)
        clear();
    m_opening = m_database.opening();
    m_dataVersion = version;
    // A change between the two looks may or may not be seen by what is read from now on.
    const bool isStill = number % 2 == 0 && m_database.changeNumber() == number;
    m_changeNumber = isStill ? number : ChangeCounter::Unknown;
    return true;
}

// The root is there before anything was ever stored.
bool HiveCache::isEmptyRoot(KeyId key)
{
    return key == RootKey && m_database.open() == Database::State::Missing;
}

bool HiveCache::openFor(KeyId key)
{
    return key == RootKey ? m_database.openOrMake()
                          : m_database.openForChange() == Database::State::Open;
}

// A new epoch ends the ways that open keys remember to their entries.
void HiveCache::clear()
{
    m_keys.clear();
    m_size = 0;
    ++m_epoch;
}

void HiveCache::reserve(std::size_t size)
{
    if (m_size + size > MaximumSize)
        clear();
    m_size += size;
}

// After a change of our own all else that is known is right still, unless another process has made
// one meanwhile.
void HiveCache::adopt(Database::Change change)
{
    const bool isOurs = change.before % 2 == 0 && change.before == m_changeNumber;
    m_changeNumber = isOurs ? change.after : ChangeCounter::Unknown;
}

void HiveCache::forgetValues(Key& key)
{
    KnownKey& entry = known(key);
    entry.values.clear();
    entry.valueNames.reset();
}

// The open key remembers the way, so that most reads need no search for the key.
HiveCache::KnownKey& HiveCache::known(Key& key)
{
    if (key.epoch != m_epoch) {
        key.known = &m_keys[key.id];
        key.epoch = m_epoch;
    }
    return *key.known;
}

KeyId HiveCache::subkey(KeyId parent, std::string_view name)
{
    const auto entry = m_keys.find(parent);
    if (entry != m_keys.end()) {
        const auto found = entry->second.subkeys.find(name);
        if (found != entry->second.subkeys.end())
            return found->second;
    }
    KeyId key = NoKey;
    if (!m_database.findKey(parent, name, key))
        return NoKey;
    reserve(EntrySize + name.size());
    m_keys[parent].subkeys.emplace(name, key);
    return key;
}

bool HiveCache::exists(KeyId key)
{
    KnownKey& entry = m_keys[key];
    entry.exists = entry.exists || m_database.keyExists(key);
    return entry.exists;
}

const StoredValue* HiveCache::value(Key& key, std::string_view name)
{
    if (!refresh())
        return nullptr;
    KnownKey& entry = known(key);
    const auto found = entry.values.find(name);
    return found != entry.values.end() ? &found->second : readValue(key, name);
}

const StoredValue* HiveCache::readValue(Key& key, std::string_view name)
{
    StoredValue value;
    if (!m_database.readValue(key.id, name, value))
        return nullptr;
    reserve(EntrySize + name.size() + value.data.size());
    return &known(key).values.emplace(name, std::move(value)).first->second;
}

bool HiveCache::writeValue(Key& key, std::string_view name, std::uint32_t kind,
                           std::string_view data)
{
    if (!openFor(key.id))
        return false;
    const bool isWritten = m_database.writeValue(key.id, name, kind, data);
    adopt(m_database.finishChange());
    forgetValues(key);
    return isWritten;
}

bool HiveCache::removeValue(Key& key, std::string_view name)
{
    if (m_database.openForChange() != Database::State::Open)
        return false;
    const bool isRemoved = m_database.removeValue(key.id, name);
    adopt(m_database.finishChange());
    forgetValues(key);
    return isRemoved;
}

bool HiveCache::removeTree(KeyId key)
{
    if (key == RootKey || m_database.openForChange() != Database::State::Open)
        return false;
    const bool isRemoved = m_database.removeTree(key);
    adopt(m_database.finishChange());
    clear();
    return isRemoved;
}

bool HiveCache::endBatch(bool isComplete)
{
    const bool isDone = m_database.endBatch(isComplete);
    m_database.finishChange();
    m_changeNumber = ChangeCounter::Unknown;
    clear();
    return isDone;
}

const std::vector<std::string>* HiveCache::valueNames(Key& key)
{
    return names(key, &KnownKey::valueNames, &Database::listValues);
}

const std::vector<std::string>* HiveCache::subkeyNames(Key& key)
{
    return names(key, &KnownKey::subkeyNames, &Database::listSubkeys);
}

// Lists are kept whole: walks by index ask for them again with each step.
const std::vector<std::string>* HiveCache::names(Key& key, Names KnownKey::*kind, List list)
{
    if (!refresh())
        return isEmptyRoot(key.id) ? &m_noNames : nullptr;
    const Names& old = known(key).*kind;
    if (old)
        return &*old;
    std::vector<std::string> read;
    if (!(m_database.*list)(key.id, read))
        return nullptr;
    std::size_t size = 0;
    for (const std::string& name : read)
        size += EntrySize + name.size();
    reserve(size);
    return &(known(key).*kind).emplace(std::move(read));
}

}
