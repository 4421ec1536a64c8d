#include "support/files.h"

#include <cerrno>
#include <climits>
#include <clocale>
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
const std::size_t LongestPath = PATH_MAX - 1;

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

NamedPipe::NamedPipe(const std::string& path, Reader reader)
    : m_isThere(::mkfifo(path.c_str(), 0666) == 0)
{
    if (reader == Reader::Open)
        m_handle = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

NamedPipe::~NamedPipe()
{
    close();
}

std::string NamedPipe::read() const
{
    std::string text(65536, '\0');
    const ssize_t count = ::read(static_cast<int>(m_handle), text.data(), text.size());
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
}

void NamedPipe::close()
{
    if (m_handle != -1)
        ::close(static_cast<int>(m_handle));
    m_handle = -1;
}

unsigned setFileMask(unsigned mask)
{
    return ::umask(mask);
}

bool setCommaLocale()
{
    return std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr ||
           std::setlocale(LC_ALL, "de_DE.ISO-8859-1") != nullptr;
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
