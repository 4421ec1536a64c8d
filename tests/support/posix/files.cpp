#include "support/files.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace MdToolsTest {

const bool ProtectedFilesCannotBeOpened = true;
const bool OpenFilesAreNotShared = true;
const bool DoubleByteNamesReachTheDisk = true;

bool appendsInOneStep()
{
    return true;
}

void setWriteProtected(const std::string& path, bool isProtected)
{
    ::chmod(path.c_str(), isProtected ? 0444 : 0644);
}

bool makeLink(const std::string& target, const std::string& link)
{
    return ::symlink(target.c_str(), link.c_str()) == 0;
}

// A lock of the open file, not of the process, so that it holds against this process as well.
HeldFile::HeldFile(const std::string& path) : m_handle(::open(path.c_str(), O_RDWR | O_CLOEXEC))
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    ::fcntl(static_cast<int>(m_handle), F_OFD_SETLK, &lock);
}

HeldFile::~HeldFile()
{
    ::close(static_cast<int>(m_handle));
}

SmallDisk::SmallDisk(const std::string& path, std::size_t size) : m_path(path)
{
    std::filesystem::create_directory(path);
    const std::string options = "size=" + std::to_string(size);
    if (::mount("mdtools-test", path.c_str(), "tmpfs", 0, options.c_str()) != 0)
        m_reason = std::string("No disk could be mounted: ") + std::strerror(errno);
}

// Detached, so that a file that is still open does not keep it.
SmallDisk::~SmallDisk()
{
    if (isThere())
        ::umount2(m_path.c_str(), MNT_DETACH);
}

OrdinaryUser::OrdinaryUser()
{
    constexpr uid_t Nobody = 65534;
    m_isThere = ::geteuid() != 0 || ::seteuid(Nobody) == 0;
}

// Going on without the rights back would let later tests fail for no reason of theirs.
OrdinaryUser::~OrdinaryUser()
{
    if (::getuid() == 0 && ::seteuid(0) != 0)
        std::abort();
}

int limitOpenFiles(int count)
{
    struct rlimit limit = {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    const auto before = static_cast<int>(limit.rlim_cur);
    limit.rlim_cur = static_cast<rlim_t>(count);
    ::setrlimit(RLIMIT_NOFILE, &limit);
    return before;
}

}
