#include <mdtools/registry.h>

#include "platform/registry_store.h"
#include "settings/registry_path.h"

#include <utility>

namespace Tools {

namespace {

KeyHandle openBelow(KeyHandle parent, const std::string& path, bool create)
{
    const RegistryPath parts(path.c_str());
    return parts.valid() ? Platform::openKey(parent, parts.names(), create) : nullptr;
}

// A second handle of the same key, opened for reading: an empty path leads to the key itself.
KeyHandle duplicate(KeyHandle key)
{
    return key != nullptr ? Platform::openKey(key, {}, false) : nullptr;
}

// The system's number of a type, from the library's own.
std::uint32_t kindOf(RegistryValue::Type type)
{
    switch (type) {
    case RegistryValue::MultiString:
        return Platform::ValueKind::MultiText;
    case RegistryValue::ExpandString:
        return Platform::ValueKind::ExpandText;
    case RegistryValue::Binary:
        return Platform::ValueKind::Binary;
    case RegistryValue::DWord:
        return Platform::ValueKind::Word;
    default:
        return Platform::ValueKind::Text;
    }
}

// A list that does not end in a NUL is stored with one, as the system does by itself for texts; the
// data has one after its end.
std::size_t storedSize(const RegistryValue& value)
{
    const std::size_t size = value.size();
    if (value.type() != RegistryValue::MultiString || size == 0)
        return size;
    return value.getChars()[size - 1] == '\0' ? size : size + 1;
}

}

RegistryKey::RegistryKey(KeyHandle handle) : m_handle(handle) {}

RegistryKey::RegistryKey(KeyHandle parent, const std::string& path, bool create)
    : m_handle(openBelow(parent, path, create))
{}

RegistryKey::RegistryKey(const RegistryKey& parent, const std::string& path, bool create)
    : RegistryKey(parent.m_handle, path, create)
{}

RegistryKey::RegistryKey(const RegistryKey& other) : m_handle(duplicate(other.m_handle)) {}

RegistryKey::RegistryKey(RegistryKey&& other) noexcept
    : m_handle(std::exchange(other.m_handle, nullptr))
{}

RegistryKey& RegistryKey::operator=(const RegistryKey& other)
{
    if (this != &other)
        *this = RegistryKey(other);
    return *this;
}

// Swapped with the argument's, not assigned: right for an assignment to itself, too.
RegistryKey& RegistryKey::operator=(RegistryKey&& other) noexcept
{
    RegistryKey taken(std::move(other));
    std::swap(m_handle, taken.m_handle);
    return *this;
}

RegistryKey::~RegistryKey()
{
    if (m_handle != nullptr)
        Platform::closeKey(m_handle);
}

RegistryValue RegistryKey::operator[](const std::string& name) const
{
    return RegistryValue(m_handle, name);
}

RegistryKey& RegistryKey::add(const RegistryValue& value)
{
    if (!value.valid())
        return remove(value);
    const std::string name = value.name();
    if (m_handle != nullptr && isValueName(name))
        Platform::writeValue(m_handle, name, kindOf(value.type()), value.getBytes(),
                             storedSize(value));
    return *this;
}

RegistryKey& RegistryKey::remove(const RegistryValue& value)
{
    const std::string name = value.name();
    if (m_handle != nullptr && isValueName(name))
        Platform::removeValue(m_handle, name);
    return *this;
}

}
