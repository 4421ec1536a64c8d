// The number that tells processes of each other's changes, on a file that stands for a database.
#include "store/change_counter.h"
#include "support/files.h"
#include "support/posix/change_counters.h"
#include "support/test_environment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace MdToolsTest;
using Tools::Store::ChangeCounter;
constexpr auto Make = ChangeCounter::Missing::Make;
constexpr auto Leave = ChangeCounter::Missing::Leave;
constexpr uid_t Nobody = 65534;

class Counters : public ::testing::Test {
protected:
    Counters()
    {
        fs::permissions(workDirectory(), fs::perms(0755));
        for (const std::string& database : {m_database, m_other}) {
            writeFile(database, "");
            fs::permissions(database, fs::perms(0644));
        }
    }
    ~Counters() override
    {
        for (const std::string& database : {m_database, m_other}) {
            if (const fs::path counter = counterOf(database); !counter.empty())
                fs::remove(counter);
            fs::remove(database);
        }
    }

    std::string m_database = workDirectory() + "/counted";
    std::string m_other = workDirectory() + "/other";
};

TEST_F(Counters, writersAfterEachOther)
{
    ChangeCounter first;
    ChangeCounter second;
    ASSERT_TRUE(first.open(m_database, Make));
    ASSERT_TRUE(second.open(m_database, Leave));
    const std::uint64_t start = first.value();
    EXPECT_EQ(first.begin(), start);
    EXPECT_EQ(second.value() % 2, 1u);
    const std::uint64_t after = first.end();
    EXPECT_EQ(after % 2, 0u);
    EXPECT_NE(after, start);
    EXPECT_EQ(second.value(), after);
    EXPECT_EQ(first.end(), ChangeCounter::Unknown) << "nothing had begun";

    // The database is free before end(): the next writer may have begun by then.
    first.begin();
    EXPECT_EQ(second.begin() % 2, 1u);
    EXPECT_EQ(first.end(), ChangeCounter::Unknown);
    EXPECT_EQ(first.value() % 2, 1u) << "the second change is still under way";
    const std::uint64_t last = second.end();
    EXPECT_EQ(last % 2, 0u);
    EXPECT_EQ(first.value(), last);
}

TEST_F(Counters, names)
{
    const mode_t mask = ::umask(077);
    ChangeCounter held;
    EXPECT_TRUE(held.open(m_database, Leave));
    EXPECT_EQ(held.number(), nullptr);
    EXPECT_TRUE(held.open(m_database, Make));
    ::umask(mask);
    EXPECT_EQ(fs::status(counterOf(m_database)).permissions(), fs::perms(0644));
    {
        ChangeCounter dropped;
        EXPECT_TRUE(dropped.open(m_other, Make));
    }
    const fs::path unused = counterOf(m_other);
    EXPECT_TRUE(fs::exists(unused));
    // Another database under the same name: making its number removes the name that nobody holds.
    fs::rename(m_other, m_other + ".kept");
    writeFile(m_other, "");
    ChangeCounter next;
    EXPECT_TRUE(next.open(m_other, Make));
    EXPECT_FALSE(fs::exists(unused));
    EXPECT_FALSE(counterOf(m_database).empty());
    fs::remove(m_other + ".kept");
}

// What others put under the name is neither used nor changed, and keeps nobody from his settings.
TEST_F(Counters, otherThingsUnderTheName)
{
    const std::string good = workDirectory() + "/good";
    writeFile(good, "12345678");
    struct Case {
        const char* what;
        bool forRoot;
        std::function<void(const fs::path&)> put;
    };
    const Case cases[] = {
        {"an empty file", false, [](const fs::path& name) { writeFile(name, ""); }},
        {"a short file", false, [](const fs::path& name) { writeFile(name, "1234567"); }},
        {"a link", false, [&](const fs::path& name) { fs::create_symlink(good, name); }},
        {"a folder", false, [](const fs::path& name) { fs::create_directory(name); }},
        {"a pipe", false, [](const fs::path& name) { ::mkfifo(name.c_str(), 0600); }},
        {"another user's file", true,
         [](const fs::path& name) {
             writeFile(name, "12345678");
             ASSERT_EQ(::chown(name.c_str(), Nobody, Nobody), 0);
         }},
    };
    {
        ChangeCounter counter;
        ASSERT_TRUE(counter.open(m_database, Make));
    }
    const fs::path name = counterOf(m_database);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        if (c.forRoot && ::geteuid() != 0)
            continue;
        fs::remove(name);
        c.put(name);
        ChangeCounter counter;
        EXPECT_TRUE(counter.open(m_database, Make));
        EXPECT_EQ(counter.number(), nullptr);
        EXPECT_TRUE(counter.canMark());
        EXPECT_TRUE(fs::exists(fs::symlink_status(name)));
    }
    EXPECT_EQ(readFile(good), "12345678");
    fs::remove(good);
}

// Without the right, or the means, to use the number nobody takes the store for one without it.
TEST_F(Counters, onlyToBeRead)
{
    ChangeCounter own;
    ASSERT_TRUE(own.open(m_database, Make));
    ChangeCounter hindered;
    const int files = limitOpenFiles(0);
    EXPECT_FALSE(hindered.open(m_database, Leave));
    EXPECT_FALSE(hindered.open(m_database, Make));
    limitOpenFiles(files);
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    {
        const OrdinaryUser user;
        ASSERT_TRUE(hindered.open(m_database, Make));
        EXPECT_NE(hindered.number(), nullptr);
        EXPECT_FALSE(hindered.canMark());
        EXPECT_EQ(hindered.begin(), ChangeCounter::Unknown);
        EXPECT_EQ(hindered.end(), ChangeCounter::Unknown);
    }
    own.begin();
    EXPECT_EQ(hindered.value(), own.value());
    const std::uint64_t after = own.end();
    EXPECT_EQ(hindered.value(), after);
}

}
