// What only files on Linux have: rights of three kinds, owners, numbers, and the signal of a pipe.
#include "support/files.h"
#include "support/test_environment.h"

#include <mdtools/directory.h>
#include <mdtools/file.h>
#include <mdtools/logger.h>

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace MdToolsTest;
using Tools::Directory;
using Tools::File;

class PosixFiles : public testing::Test {
protected:
    PosixFiles() { EXPECT_TRUE(Directory::create(m_directory)); }
    ~PosixFiles() override { EXPECT_TRUE(Directory::removeRecursively(m_directory)); }

    std::string path(const std::string& name) const { return m_directory + "/" + name; }
    std::string make(const std::string& name, mode_t mode = 0644) const
    {
        writeFile(path(name), name);
        ::chmod(path(name).c_str(), mode);
        return path(name);
    }
    static struct stat status(const std::string& name)
    {
        struct stat info {};
        EXPECT_EQ(::stat(name.c_str(), &info), 0) << name;
        return info;
    }

    std::string m_directory = workPath("posix-files");
};

// A copy has the rights of its source, whatever was there before and the process masks out.
TEST_F(PosixFiles, rightsOfCopies)
{
    struct Case {
        mode_t source;
        mode_t before; // 0: nothing is there
    };
    static const Case cases[] = {
        {0600, 0},    {0666, 0},    {0755, 0},    {0400, 0},
        {0600, 0644}, {0666, 0600}, {0755, 0644}, {0644, 0644},
    };
    const unsigned mask = setFileMask(027);
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << std::oct << c.source << " over " << c.before);
        const std::string source = make("source", c.source);
        if (c.before != 0)
            make("target", c.before);
        EXPECT_TRUE(File::copy(source, path("target")));
        EXPECT_EQ(status(path("target")).st_mode & 07777, c.source);
        ::unlink(source.c_str());
        ::unlink(path("target").c_str());
    }
    for (const mode_t mode : {0700, 0750, 0777}) {
        ASSERT_TRUE(Directory::create(path("folder")));
        ASSERT_TRUE(Directory::create(path("folder/inner")));
        ::chmod(path("folder/inner").c_str(), mode);
        EXPECT_TRUE(Directory::copy(path("folder"), path("copy")));
        EXPECT_EQ(status(path("copy/inner")).st_mode & 07777, mode & ~027u);
        EXPECT_TRUE(Directory::removeRecursively(path("folder")));
        EXPECT_TRUE(Directory::removeRecursively(path("copy")));
    }
    setFileMask(mask);
}

// Nobody may write, or only some: any right to write will do.
TEST_F(PosixFiles, rightsThatProtect)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "an ordinary user needs the right of the owner";
    for (const mode_t mode : {0200, 0020, 0002, 0640})
        EXPECT_TRUE(File::remove(make("a", mode))) << std::oct << mode;
    for (const mode_t mode : {0000, 0444, 0111})
        EXPECT_FALSE(File::remove(make("a", mode))) << std::oct << mode;
    EXPECT_TRUE(File::remove(make("a")));
}

// What a link leads to stays its owner's.
TEST_F(PosixFiles, ownersOfCopies)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a file away";
    constexpr uid_t Nobody = 65534;
    ASSERT_EQ(::chown(make("target").c_str(), Nobody, Nobody), 0);
    ASSERT_TRUE(makeLink("target", path("link")));
    EXPECT_TRUE(File::copy(make("source"), path("link")));
    EXPECT_EQ(readFile(path("target")), "source");
    EXPECT_EQ(status(path("target")).st_uid, Nobody);
}

// Files on two disks may have the same number.
TEST_F(PosixFiles, numbersOfFiles)
{
    const SmallDisk first(path("first"), 65536);
    const SmallDisk second(path("second"), 65536);
    if (!first.isThere() || !second.isThere())
        GTEST_SKIP() << first.why() << second.why();
    const std::string source = make("first/a");
    const std::string target = make("second/a");
    if (status(source).st_ino != status(target).st_ino)
        GTEST_SKIP() << "The numbers differ here.";
    EXPECT_TRUE(File::concatenate(source, target));
    EXPECT_EQ(readFile(target), "second/afirst/a");
    EXPECT_TRUE(File::copy(source, target));
    EXPECT_EQ(readFile(target), "first/a");
}

// Writing to a pipe without reader leaves the thread's signals as they were.
TEST_F(PosixFiles, signalOfAPipe)
{
    sigset_t pipeSignal;
    sigset_t set;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    const auto writeToNobody = [this] {
        const std::string name = path("pipe");
        NamedPipe pipe(name, NamedPipe::Reader::Open);
        Tools::FileLogger logger(name);
        logger.initialize();
        pipe.close();
        logger.writeLine("lost");
        ::unlink(name.c_str());
    };
    writeToNobody();
    ::pthread_sigmask(SIG_SETMASK, nullptr, &set);
    EXPECT_EQ(sigismember(&set, SIGPIPE), 0);

    // One that waits already is somebody else's.
    ::pthread_sigmask(SIG_BLOCK, &pipeSignal, nullptr);
    ::pthread_kill(::pthread_self(), SIGPIPE);
    writeToNobody();
    sigpending(&set);
    EXPECT_EQ(sigismember(&set, SIGPIPE), 1);
    const struct timespec atOnce = {};
    EXPECT_EQ(::sigtimedwait(&pipeSignal, nullptr, &atOnce), SIGPIPE);
    ::pthread_sigmask(SIG_UNBLOCK, &pipeSignal, nullptr);
}

}
