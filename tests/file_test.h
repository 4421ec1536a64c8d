#pragma once

#include "support/files.h"
#include "support/test_environment.h"

#include <mdtools/directory.h>
#include <mdtools/file.h>

#include <gtest/gtest.h>

#include <string>

namespace MdToolsTest {

// A directory of its own for each test.
class FileTest : public testing::Test {
protected:
    FileTest() { EXPECT_TRUE(Tools::Directory::create(m_directory)); }
    ~FileTest() override { EXPECT_TRUE(Tools::Directory::removeRecursively(m_directory)); }

    std::string path(const std::string& name) const { return m_directory + "/" + name; }
    std::string make(const std::string& name, const std::string& bytes = "x") const
    {
        writeFile(path(name), bytes);
        return path(name);
    }

    // As long as somebody has the file "a" open.
    void expectToKeepItsName(const std::string& name) const
    {
        EXPECT_TRUE(Tools::File::isLocked(name));
        EXPECT_FALSE(Tools::File::remove(name));
        EXPECT_FALSE(Tools::File::removeEx(name));
        EXPECT_FALSE(Tools::File::removeEx(path("a*")));
        EXPECT_FALSE(Tools::File::removeFiles({name}));
        EXPECT_FALSE(Tools::File::removeByWildCard(m_directory, "a", true));
        EXPECT_FALSE(Tools::File::rename(name, path("b")));
        EXPECT_TRUE(Tools::File::exists(name));
    }

    std::string m_directory = workPath("files");
};

}
