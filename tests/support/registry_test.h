#pragma once

#include "platform/registry_store.h"
#include "support/test_environment.h"

#include <mdtools/registry.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace MdToolsTest {

// A key of the current user for one test, gone afterwards with all below it.
class RegistryTest : public ::testing::Test {
protected:
    RegistryTest()
    {
        // The work directory's name is this process's own.
        m_top = "MdTools " + std::filesystem::path(workDirectory()).filename().string();
        m_path = "Software\\" + m_top;
        m_key = Tools::Registry::find(Tools::Registry::CurrentUser, m_path, true);
    }

    ~RegistryTest() override
    {
        const std::string_view names[] = {"Software", m_top};
        const Tools::RegistryKey root =
            Tools::Registry::find(Tools::Registry::CurrentUser, "", false);
        EXPECT_TRUE(Tools::Platform::removeTree(root.handle(), names));
    }

    void SetUp() override { ASSERT_TRUE(m_key.valid()); }

    static Tools::RegistryValue makeValue(const std::string& name, Tools::RegistryValue::Type type)
    {
        Tools::RegistryValue value;
        value.setName(name).setType(type);
        return value;
    }

    void writeText(const std::string& name, const std::string& text)
    {
        m_key.add(makeValue(name, Tools::RegistryValue::String).setData(text));
    }

    std::string m_top;
    std::string m_path;
    Tools::RegistryKey m_key;
};

}
