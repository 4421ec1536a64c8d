// What only this platform has: "xdg-open", which a script stands in for here, and the rights to
// execute and to read.
#include <mdtools/environment.h>
#include <mdtools/shell.h>

#include "support/files.h"
#include "support/test_environment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include <sys/stat.h>

namespace {

using namespace Tools;
using MdToolsTest::readFile;
using MdToolsTest::workPath;
using MdToolsTest::writeFile;
namespace fs = std::filesystem;

void writeProgram(const std::string& path, const std::string& content)
{
    writeFile(path, content);
    ::chmod(path.c_str(), 0755);
}

// A folder of the work directory as the current one, and a search path; both come back at the end.
class Place {
public:
    Place(const std::string& name, const std::string& path)
        : m_folder(workPath(name)),
          m_formerPath(m_variable.getValue()),
          m_former(fs::current_path())
    {
        fs::create_directory(m_folder);
        fs::current_path(m_folder);
        m_variable.setValue(path);
    }
    ~Place()
    {
        fs::current_path(m_former);
        fs::remove_all(m_folder);
        m_variable.setValue(m_formerPath);
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

private:
    const std::string m_folder;
    Environment m_variable{"PATH"};
    const std::string m_formerPath;
    const fs::path m_former;
};

// It writes its argument down.
std::string stand(const std::string& exitCode)
{
    return "#!/bin/sh\necho \"$1\" >> \"" + workPath("opened") + "\"\nexit " + exitCode + "\n";
}

TEST(Shell, opensDocumentsWithTheDesktop)
{
    const std::string folder = workPath("tools");
    fs::create_directory(folder);
    const Place place("documents", folder);
    writeFile("plain.txt", "text");
    writeFile("-option", "text");
    writeProgram("executable.txt", "no program");
    writeProgram("empty", "");
    struct Case {
        const char* file;
        const char* answer;
        Shell::ErrorCode code;
        const char* opened;
    };
    const Case cases[] = {
        {"plain.txt", "0", Shell::Success, "plain.txt\n"},
        {"-option", "0", Shell::Success, "./-option\n"},
        {"executable.txt", "0", Shell::Success, "executable.txt\n"},
        {"empty", "0", Shell::Success, "empty\n"},
        {"https://example.org/a", "0", Shell::Success, "https://example.org/a\n"},
        {"plain.txt", "2", Shell::FileNotFound, "plain.txt\n"},
        {"plain.txt", "3", Shell::NoAssociation, "plain.txt\n"},
        {"plain.txt", "4", Shell::Failed, "plain.txt\n"},
        {"missing", "0", Shell::FileNotFound, ""},
        {"./missing/file", "0", Shell::PathNotFound, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.file) + " " + c.answer);
        fs::remove(workPath("opened"));
        writeProgram(folder + "/xdg-open", stand(c.answer));
        EXPECT_EQ(Shell().execute(c.file), c.code);
        EXPECT_EQ(readFile(workPath("opened")), c.opened);
    }
    writeProgram("bad", "#!/no/such/interpreter\n");
    EXPECT_EQ(Shell().execute("./bad"), Shell::BadFormat);
    ::chmod("plain.txt", 0);
    {
        const MdToolsTest::OrdinaryUser user;
        EXPECT_EQ(Shell().execute("plain.txt"), Shell::AccessDenied);
    }
    fs::remove_all(folder);
}

// What lies in the current directory may be anybody's.
TEST(Shell, looksForItsToolNowhereButInNamedDirectories)
{
    for (const std::string path : {".", "tools", "", ":", "/nowhere:"}) {
        SCOPED_TRACE(path);
        const Place place("trap", path.empty() ? ":" : path);
        fs::create_directory("tools");
        writeFile("document.txt", "text");
        writeProgram("xdg-open", stand("0"));
        writeProgram("tools/xdg-open", stand("0"));
        fs::remove(workPath("opened"));
        EXPECT_EQ(Shell().execute("document.txt"), Shell::NoAssociation);
        EXPECT_FALSE(fs::exists(workPath("opened")));
    }
}

}
