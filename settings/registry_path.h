#pragma once

#include "platform/registry_store.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Tools {

// The names of keys in a path, from the top down, as views into the path's text.
class RegistryPath {
public:
    // `path` must outlive this object; null counts as empty.
    explicit RegistryPath(const char* path);

    // False for a path that names nothing, whatever the store holds.
    bool valid() const { return m_valid; }
    const std::vector<std::string_view>& names() const { return m_names; }

private:
    bool split(std::string_view path);

    std::vector<std::string_view> m_names;
    bool m_valid;
};

// Whether the name is no longer than allowed, counted in characters.
bool hasValueNameLength(const std::string& name);
// Whether a value may have this name. One of few bytes has few characters, too.
inline bool isValueName(const std::string& name)
{
    return name.size() <= Platform::MaximumValueName || hasValueNameLength(name);
}

}
