#include <mdtools/registry.h>

#include "platform/registry_store.h"

namespace Tools {

namespace {

// A name and its NUL fill at most 4,096 characters.
constexpr std::size_t MaximumWalkedName = 4095;

using Count = int (*)(KeyHandle key);

// An iterator is an index into what the store lists at each call; nothing is held between two
// calls. -1 is the position of an iterator over nothing.
int firstIndex(Count count, KeyHandle key)
{
    return count(key) > 0 ? 0 : -1;
}

int lastIndex(Count count, KeyHandle key)
{
    const int number = count(key);
    return number > 0 ? number - 1 : -1;
}

}

RegistryKey::Iterator::Iterator(const RegistryKey& key) : m_key(key) {}

RegistryKey::Iterator::~Iterator() = default;

RegistryKey RegistryKey::Iterator::begin()
{
    m_index = firstIndex(Platform::countSubkeys, m_key.handle());
    return **this;
}

RegistryKey RegistryKey::Iterator::end()
{
    m_index = lastIndex(Platform::countSubkeys, m_key.handle());
    return **this;
}

bool RegistryKey::Iterator::valid() const
{
    return m_index >= 0 && m_index < Platform::countSubkeys(m_key.handle());
}

// A slash in a name, which other programs can create, separates here as it does in paths: such keys
// cannot be reached through these classes.
RegistryKey RegistryKey::Iterator::operator[](int index) const
{
    std::string name;
    if (m_index < 0 || index < 0 || !Platform::subkeyName(m_key.handle(), index, name))
        return RegistryKey();
    return RegistryKey(m_key, name, false);
}

RegistryKey RegistryKey::Iterator::operator*() const
{
    return (*this)[m_index];
}

RegistryKey RegistryKey::Iterator::operator++()
{
    ++m_index;
    return **this;
}

RegistryKey RegistryKey::Iterator::operator++(int)
{
    RegistryKey old = **this;
    ++m_index;
    return old;
}

RegistryKey RegistryKey::Iterator::operator--()
{
    --m_index;
    return **this;
}

RegistryKey RegistryKey::Iterator::operator--(int)
{
    RegistryKey old = **this;
    --m_index;
    return old;
}

RegistryValue::Iterator::Iterator(const RegistryKey& key) : m_key(key) {}

RegistryValue::Iterator::~Iterator() = default;

RegistryValue RegistryValue::Iterator::begin()
{
    m_index = firstIndex(Platform::countValues, m_key.handle());
    return **this;
}

RegistryValue RegistryValue::Iterator::end()
{
    m_index = lastIndex(Platform::countValues, m_key.handle());
    return **this;
}

bool RegistryValue::Iterator::valid() const
{
    return m_index >= 0 && m_index < Platform::countValues(m_key.handle());
}

// Unlike that of the subkeys it does not look at its own index.
RegistryValue RegistryValue::Iterator::operator[](int index) const
{
    std::string name;
    if (index < 0 || !Platform::valueName(m_key.handle(), index, name) ||
        name.size() > MaximumWalkedName)
        return RegistryValue();
    return RegistryValue(m_key.handle(), name);
}

RegistryValue RegistryValue::Iterator::operator*() const
{
    return (*this)[m_index];
}

RegistryValue RegistryValue::Iterator::operator++()
{
    ++m_index;
    return **this;
}

RegistryValue RegistryValue::Iterator::operator++(int)
{
    RegistryValue old = **this;
    ++m_index;
    return old;
}

RegistryValue RegistryValue::Iterator::operator--()
{
    --m_index;
    return **this;
}

RegistryValue RegistryValue::Iterator::operator--(int)
{
    RegistryValue old = **this;
    --m_index;
    return old;
}

}
