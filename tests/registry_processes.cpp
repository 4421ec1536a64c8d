#include "support/child_process.h"
#include "support/registry_test.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Tools;
using namespace MdToolsTest;

const std::string User = std::to_string(Registry::CurrentUser);

class RegistryProcesses : public RegistryTest {
protected:
    static std::string program() { return builtProgram("settings_child"); }

    std::string readInChild(const std::string& name) const
    {
        return runChild(program(), {"read", User, m_path, name}).output;
    }
};

TEST_F(RegistryProcesses, writersLoseNothing)
{
    constexpr int Writers = 4;
    constexpr int Count = 200;
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < Writers; ++i)
        children.push_back(std::make_unique<Child>(
            program(), std::vector<std::string>{"words", User, m_path, std::to_string(i) + "-",
                                                std::to_string(Count)}));
    // This process writes and reads along.
    for (int i = 0; i < Count; ++i) {
        m_key.add(makeValue("own", RegistryValue::DWord).setData(i));
        EXPECT_EQ(m_key["own"].getDWord(), static_cast<unsigned>(i));
    }
    for (const std::unique_ptr<Child>& child : children)
        EXPECT_EQ(child->wait().exitCode, 0);
    EXPECT_EQ(Platform::countValues(m_key.handle()), Writers * Count + 1);
    for (int i = 0; i < Writers; ++i)
        EXPECT_EQ(m_key[std::to_string(i) + "-" + std::to_string(Count - 1)].getDWord(),
                  static_cast<unsigned>(Count - 1));
}

TEST_F(RegistryProcesses, killedWriterLosesNothing)
{
    for (int round = 0; round < 4; ++round) {
        const std::string name = "count" + std::to_string(round);
        Child child(program(), {"count", User, m_path, name});
        ASSERT_TRUE(child.waitUntil(
            [&] { return m_key[name].getDWord() >= 20u + static_cast<unsigned>(round); }));
        child.kill();
        // The last line may have been cut off, or not been written any more.
        std::string lines = child.wait().output;
        lines.erase(lines.find_last_of('\n'));
        const auto reported =
            std::strtoul(lines.c_str() + lines.find_last_of('\n') + 1, nullptr, 10);
        const std::uint32_t stored = m_key[name].getDWord();
        EXPECT_GE(stored, reported);
        EXPECT_LE(stored, reported + 1);
        // Nobody is held up by the dead.
        m_key.add(makeValue(name, RegistryValue::DWord).setData(7));
        EXPECT_EQ(m_key[name].getDWord(), 7u);
        EXPECT_EQ(readInChild(name), "7\n");
    }
}

TEST_F(RegistryProcesses, changesOfOthersAreSeenAtOnce)
{
    writeText("x", "0");
    for (const std::string text : {"1", "2", "3"}) {
        EXPECT_FALSE(m_key["y" + text].valid());
        runChild(program(), {"write", User, m_path, "X", text});
        EXPECT_EQ(m_key["x"].getString(), text);
        runChild(program(), {"write", User, m_path, "y" + text, text});
        EXPECT_TRUE(m_key["y" + text].valid());
        EXPECT_FALSE(Registry::find(Registry::CurrentUser, m_path + "/" + text, false).valid());
        runChild(program(), {"write", User, m_path + "/" + text, "y", text});
        EXPECT_TRUE(Registry::find(Registry::CurrentUser, m_path + "/" + text, false).valid());
    }
    EXPECT_EQ(Platform::countValues(m_key.handle()), 4);
    EXPECT_EQ(Platform::countSubkeys(m_key.handle()), 3);
    writeText("x", "own");
    EXPECT_EQ(readInChild("x"), "own\n");
}

}
