#include "platform/registry_store.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <utility>

namespace Tools::Platform {

namespace {

static_assert(ValueKind::Text == REG_SZ && ValueKind::ExpandText == REG_EXPAND_SZ &&
              ValueKind::Binary == REG_BINARY && ValueKind::Word == REG_DWORD &&
              ValueKind::MultiText == REG_MULTI_SZ);

// What the narrow calls take at once: they convert a path in a fixed buffer of 260 characters, and
// create at most 32 levels.
constexpr std::size_t MaximumPathOfCall = 255;
constexpr std::size_t MaximumLevelsOfCall = 32;

// Owns a handle within a call.
class OpenKey {
public:
    explicit OpenKey(KeyHandle key) : m_key(key) {}
    ~OpenKey()
    {
        if (m_key != nullptr)
            ::RegCloseKey(m_key);
    }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;

    KeyHandle get() const { return m_key; }
    KeyHandle release() { return std::exchange(m_key, nullptr); }
    // The new key is open before the old one, its parent, is closed.
    void reset(KeyHandle key)
    {
        OpenKey old(m_key);
        m_key = key;
    }

private:
    KeyHandle m_key;
};

KeyHandle rootOf(int hive)
{
    switch (hive) {
    case 0:
        return HKEY_LOCAL_MACHINE;
    case 1:
        return HKEY_CURRENT_USER;
    case 2:
        return HKEY_CLASSES_ROOT;
    default:
        return nullptr;
    }
}

KeyHandle openOnce(KeyHandle parent, const std::string& path, bool create, REGSAM access)
{
    HKEY key = nullptr;
    char noClass[] = "";
    const LONG result =
        create ? ::RegCreateKeyExA(parent, path.c_str(), 0, noClass, REG_OPTION_NON_VOLATILE,
                                   access, nullptr, &key, nullptr)
               : ::RegOpenKeyExA(parent, path.c_str(), 0, access, &key);
    return result == ERROR_SUCCESS ? key : nullptr;
}

// Joins as many names as one call takes, at least one, and steps over them.
std::string takePath(KeyNames& names)
{
    std::string path;
    std::size_t count = 0;
    while (count < std::min(names.size(), MaximumLevelsOfCall)) {
        const std::string_view name = names[count];
        if (count > 0 && path.size() + 1 + name.size() > MaximumPathOfCall)
            break;
        if (count > 0)
            path += '\\';
        path += name;
        ++count;
    }
    names = names.subspan(count);
    return path;
}

KeyHandle open(KeyHandle parent, KeyNames names, bool create, REGSAM access)
{
    if (parent == nullptr)
        return nullptr;
    std::string path = takePath(names);
    OpenKey key(openOnce(parent, path, create, names.empty() ? access : KEY_READ));
    while (key.get() != nullptr && !names.empty()) {
        path = takePath(names);
        key.reset(openOnce(key.get(), path, create, names.empty() ? access : KEY_READ));
    }
    return key.release();
}

int countOf(LONG result, DWORD count)
{
    return result == ERROR_SUCCESS ? static_cast<int>(count) : -1;
}

}

KeyHandle openKey(int hive, KeyNames names, bool create)
{
    return open(rootOf(hive), names, create, KEY_READ);
}

KeyHandle openKey(KeyHandle parent, KeyNames names, bool create)
{
    return open(parent, names, create, KEY_READ);
}

void closeKey(KeyHandle key)
{
    ::RegCloseKey(key);
}

bool readValue(KeyHandle key, const std::string& name, ValueReceiver& receiver)
{
    std::array<char, 512> buffer;
    std::string large;
    char* data = buffer.data();
    DWORD kind = 0;
    DWORD size = static_cast<DWORD>(buffer.size());
    LONG result =
        ::RegQueryValueExA(key, name.c_str(), nullptr, &kind, reinterpret_cast<BYTE*>(data), &size);
    // The value may grow between two calls.
    while (result == ERROR_MORE_DATA) {
        large.resize(size);
        data = large.data();
        result = ::RegQueryValueExA(key, name.c_str(), nullptr, &kind,
                                    reinterpret_cast<BYTE*>(data), &size);
    }
    if (result != ERROR_SUCCESS)
        return false;
    receiver.receive(kind, std::string_view(data, size));
    return true;
}

bool writeValue(KeyHandle key, const std::string& name, std::uint32_t kind, const void* data,
                std::size_t size)
{
    // Keys are open for reading; writing asks for the right when it is needed, as few users have it
    // everywhere.
    const OpenKey writable(open(key, {}, false, KEY_WRITE));
    return writable.get() != nullptr && size <= MAXDWORD &&
           ::RegSetValueExA(writable.get(), name.c_str(), 0, kind, static_cast<const BYTE*>(data),
                            static_cast<DWORD>(size)) == ERROR_SUCCESS;
}

bool removeValue(KeyHandle key, const std::string& name)
{
    const OpenKey writable(open(key, {}, false, KEY_WRITE));
    return writable.get() != nullptr &&
           ::RegDeleteValueA(writable.get(), name.c_str()) == ERROR_SUCCESS;
}

bool removeTree(KeyHandle parent, KeyNames names)
{
    if (names.empty())
        return false;
    const OpenKey above(
        open(parent, names.first(names.size() - 1), false, KEY_READ | KEY_WRITE | DELETE));
    return above.get() != nullptr &&
           ::RegDeleteTreeA(above.get(), std::string(names.back()).c_str()) == ERROR_SUCCESS;
}

// The system's transactions are not for programs that run without them in mind, and may go.
ChangeBatch::ChangeBatch() = default;
ChangeBatch::~ChangeBatch() = default;

bool ChangeBatch::commit()
{
    return true;
}

bool ChangeBatch::cancel()
{
    return false;
}

int countSubkeys(KeyHandle key)
{
    DWORD count = 0;
    const LONG result = ::RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr,
                                           nullptr, nullptr, nullptr, nullptr, nullptr);
    return countOf(result, count);
}

int countValues(KeyHandle key)
{
    DWORD count = 0;
    const LONG result = ::RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, nullptr, nullptr,
                                           nullptr, &count, nullptr, nullptr, nullptr, nullptr);
    return countOf(result, count);
}

bool subkeyName(KeyHandle key, int index, std::string& name)
{
    // Two bytes a character at most.
    char buffer[2 * MaximumKeyName + 2];
    DWORD size = sizeof buffer;
    if (::RegEnumKeyExA(key, static_cast<DWORD>(index), buffer, &size, nullptr, nullptr, nullptr,
                        nullptr) != ERROR_SUCCESS)
        return false;
    name.assign(buffer, size);
    return true;
}

bool valueName(KeyHandle key, int index, std::string& name)
{
    // Long names are rare, so that most need one call with a short buffer only.
    for (const std::size_t capacity : {std::size_t{256}, 2 * MaximumValueName + 2}) {
        name.resize(capacity);
        DWORD size = static_cast<DWORD>(capacity);
        const LONG result = ::RegEnumValueA(key, static_cast<DWORD>(index), name.data(), &size,
                                            nullptr, nullptr, nullptr, nullptr);
        name.resize(result == ERROR_SUCCESS ? size : 0);
        if (result != ERROR_MORE_DATA)
            return result == ERROR_SUCCESS;
    }
    return false;
}

}
