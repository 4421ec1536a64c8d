#include "settings/registry_path.h"

#include "platform/registry_store.h"
#include "text/characters.h"

namespace Tools {

namespace {

constexpr std::size_t MaximumPath = 4096;

constexpr std::string_view Separators = "/\\";

bool isLonger(std::string_view text, std::size_t limit)
{
    if (text.size() <= limit)
        return false;
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size() && count <= limit; ++count)
        at += Characters::length(text, at);
    return count > limit;
}

bool startsWithSeparator(std::string_view path)
{
    return !path.empty() && Separators.find(path.front()) != std::string_view::npos;
}

}

RegistryPath::RegistryPath(const char* path) : m_valid(split(path != nullptr ? path : "")) {}

bool RegistryPath::split(std::string_view path)
{
    if (startsWithSeparator(path))
        path.remove_prefix(1);
    if (startsWithSeparator(path) || isLonger(path, MaximumPath))
        return false;
    while (!path.empty()) {
        // The second byte of a double-byte character may look like a separator.
        const std::string_view name = path.substr(0, Characters::findAny(path, Separators));
        if (isLonger(name, Platform::MaximumKeyName))
            return false;
        // Doubled and final separators are passed over, as the system does.
        if (!name.empty())
            m_names.push_back(name);
        path.remove_prefix(name.size() < path.size() ? name.size() + 1 : path.size());
    }
    return true;
}

bool hasValueNameLength(const std::string& name)
{
    return !isLonger(name.c_str(), Platform::MaximumValueName);
}

}
