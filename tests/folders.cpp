#include <mdtools/folders.h>

#include <mdtools/directory.h>
#include <mdtools/environment.h>
#include <mdtools/file.h>
#include <mdtools/logger.h>

#include "support/child_process.h"
#include "support/files.h"
#include "support/shared_value.h"
#include "support/test_environment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

namespace {

using namespace Tools;
using MdToolsTest::SharedValue;
using MdToolsTest::workPath;

const char Install[] = "SOFTWARE\\MERODA\\Install";

TEST(Folders, installation)
{
    SharedValue own(Registry::LocalMachine, Install, "Directory");
    SharedValue group(Registry::LocalMachine, "SOFTWARE\\VOK\\MERODA\\Install", "Directory");
    ASSERT_TRUE(Directory::createRecursively(workPath("new26")));
    struct Case {
        RegistryValue::Type type;
        std::string value, expected;
    };
    const Case cases[] = {
        {RegistryValue::None, "", ""},
        {RegistryValue::String, "C:\\Program", "C:\\Program"},
        {RegistryValue::String, "C:\\Program\\", "C:\\Program"},
        {RegistryValue::String, "C:/Program//", "C:/Program/"}, // one separator only
        {RegistryValue::ExpandString, "C:\\Program", ""},
        {RegistryValue::String, workPath("new"), workPath("new26")},
        {RegistryValue::String, "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.value);
        own.set(c.type, c.value);
        EXPECT_EQ(getInstallationDirectory(false), c.expected);
        char buffer[1024] = "x";
        EXPECT_EQ(getInstallationDirectory(buffer, sizeof buffer), !c.expected.empty());
        EXPECT_EQ(buffer, c.expected);
    }
    own.set(RegistryValue::String, "C:\\Own");
    group.set(RegistryValue::String, "C:\\Group");
    EXPECT_EQ(getInstallationDirectory(true), "C:\\Group");
    group.set(RegistryValue::None, "");
    EXPECT_EQ(getInstallationDirectory(true), "");

    char buffer[] = "abcdefg";
    EXPECT_FALSE(getInstallationDirectory(buffer, 6));
    EXPECT_STREQ(buffer, "");
    EXPECT_TRUE(getInstallationDirectory(buffer, 7));
    EXPECT_STREQ(buffer, "C:\\Own");
    EXPECT_FALSE(getInstallationDirectory(nullptr, 7));
    EXPECT_FALSE(getInstallationDirectory(buffer, 0));
    EXPECT_STREQ(buffer, "C:\\Own");
}

TEST(Folders, installedData)
{
    SharedValue data(Registry::LocalMachine, Install, "DataDir");
    data.set(RegistryValue::None, "");
    EXPECT_EQ(getInstalledDataDirectory(), "");
    data.set(RegistryValue::String, "D:\\Data\\");
    EXPECT_EQ(getInstalledDataDirectory(), "D:\\Data\\");
}

TEST(Folders, user)
{
    const std::string directory = getUserDirectory();
    EXPECT_TRUE(Directory::exists(directory));
    EXPECT_TRUE(directory.ends_with("/Meroda") || directory.ends_with("\\Meroda")) << directory;
    EXPECT_EQ(getUserDirectory(), directory);
    EXPECT_NE(getUserName(), "");
}

TEST(Folders, readingSettingsMakesNone)
{
    if (MdToolsTest::IsWindows)
        GTEST_SKIP() << "The system makes the directory with the account.";
    const std::string home = workPath("new account");
    const MdToolsTest::ChildResult result = MdToolsTest::runChild(
        MdToolsTest::builtProgram("settings_child"),
        {"read", std::to_string(Registry::CurrentUser), "Software", "x"},
        {{"XDG_CONFIG_HOME", home + "/config"}, {"MDTOOLS_REGISTRY_DIR", ""}});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "invalid\n");
    EXPECT_FALSE(Directory::exists(home));
}

// Whatever the user's mask allows, a temporary file is his alone.
TEST(Folders, temporaryFilesArePrivate)
{
    if (MdToolsTest::IsWindows)
        GTEST_SKIP() << "Files have no permissions of this kind.";
    const unsigned before = MdToolsTest::setFileMask(0);
    const std::string name = getTempFilePath();
    const std::string log = workPath("mask.log");
    FileLogger(log).initialize();
    File::close(File::open(workPath("mask.txt"), "w"));
    MdToolsTest::setFileMask(before);
    using std::filesystem::perms;
    const auto permissions = [](const std::string& path) {
        return std::filesystem::status(path).permissions();
    };
    EXPECT_EQ(permissions(name), perms::owner_read | perms::owner_write);
    const perms forAll = perms(0666);
    EXPECT_EQ(permissions(log), forAll);
    EXPECT_EQ(permissions(workPath("mask.txt")), forAll);
    EXPECT_TRUE(File::remove(name));
}

TEST(Folders, userByTheEarlierRule)
{
    SharedValue setting(Registry::CurrentUser, "SOFTWARE\\MERODA\\SETTINGS", "UserDirectory");
    SharedValue install(Registry::LocalMachine, Install, "Directory");
    Environment drive("HOMEDRIVE");
    Environment path("HOMEPATH");
    const std::string before[] = {drive.getValue(), path.getValue()};

    setting.set(RegistryValue::String, workPath("missing"));
    install.set(RegistryValue::String, "C:\\Program\\");
    drive.setValue("H:");
    path.setValue(std::string(260, 'x')); // longer than is taken
    EXPECT_EQ(getUserDirectoryOld(), "C:\\Program\\User\\" + getUserName());
    path.setValue("\\home");
    EXPECT_EQ(getUserDirectoryOld(), "H:\\home");
    setting.set(RegistryValue::ExpandString, workPath(""));
    EXPECT_EQ(getUserDirectoryOld(), "H:\\home");
    setting.set(RegistryValue::String, workPath(""));
    EXPECT_EQ(getUserDirectoryOld(), workPath(""));

    drive.setValue(before[0]);
    path.setValue(before[1]);
}

TEST(Folders, temporaryFiles)
{
    const std::string directory = getTempPath();
    EXPECT_TRUE(Directory::exists(directory));
    EXPECT_TRUE(directory.ends_with('/') || directory.ends_with('\\')) << directory;
    std::set<std::string> names;
    for (int i = 0; i < 20; ++i) {
        const std::string name = getTempFilePath();
        EXPECT_EQ(name.rfind(directory + "mer", 0), 0U) << name;
        EXPECT_TRUE(File::exists(name) && File::isEmpty(name));
        names.insert(name);
    }
    EXPECT_EQ(names.size(), 20U);
    for (const std::string& name : names)
        EXPECT_TRUE(File::remove(name));
}

}
