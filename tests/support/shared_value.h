#pragma once

#include <mdtools/registry.h>

#include <string>

namespace MdToolsTest {

// A value of the settings that belong to all programs; what was there before comes back.
class SharedValue {
public:
    SharedValue(Tools::Registry::Hive hive, const char* path, const char* name)
        : m_key(Tools::Registry::find(hive, path, true)), m_before(m_key[name])
    {}
    SharedValue(const SharedValue&) = delete;
    SharedValue& operator=(const SharedValue&) = delete;
    ~SharedValue() { m_key.add(m_before); }

    void set(Tools::RegistryValue::Type type, const std::string& text)
    {
        Tools::RegistryValue value;
        m_key.add(value.setName(m_before.name()).setType(type).setData(text));
    }

private:
    Tools::RegistryKey m_key;
    Tools::RegistryValue m_before;
};

}
