#include "store/change_counter.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Store {

namespace {

constexpr const char* Folder = "/dev/shm";
constexpr std::size_t Size = sizeof(std::uint64_t);
constexpr int Safely = O_CLOEXEC | O_NOFOLLOW | O_NOCTTY | O_NONBLOCK;
// Someone who tidies up holds a name for a moment only.
constexpr int Attempts = 100;

std::string namesOf(uid_t owner)
{
    return "mdtools-" + std::to_string(owner) + "-";
}

std::string nameOf(const FileId& database, uid_t owner)
{
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "%llx-%llx-%llx",
                  static_cast<unsigned long long>(database.device),
                  static_cast<unsigned long long>(database.inode),
                  static_cast<unsigned long long>(database.born));
    return namesOf(owner) + numbers;
}

std::string pathOf(const std::string& name)
{
    return std::string(Folder) + "/" + name;
}

bool lockFile(const FileDescriptor& file, short kind)
{
    struct flock lock {};
    lock.l_type = kind;
    lock.l_whence = SEEK_SET;
    return ::fcntl(file.get(), F_OFD_SETLK, &lock) == 0;
}

bool isNamed(const FileDescriptor& file, const std::string& path)
{
    struct stat opened {};
    struct stat named {};
    return ::fstat(file.get(), &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

// Anybody can put a file under any name here; the right one is the database owner's.
bool isCounter(const FileDescriptor& file, uid_t owner)
{
    struct stat info {};
    return ::fstat(file.get(), &info) == 0 && S_ISREG(info.st_mode) && info.st_uid == owner &&
           info.st_size >= static_cast<off_t>(Size);
}

// Something else may be there instead: a link, a folder, a file that only its owner can read.
bool isForeign(const std::string& path, uid_t owner)
{
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0 && (!S_ISREG(info.st_mode) || info.st_uid != owner);
}

// Removes the names of databases that nobody uses any more.
void removeUnused(uid_t owner)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(Folder), ::closedir);
    const std::string names = namesOf(owner);
    while (const dirent* entry = folder != nullptr ? ::readdir(folder.get()) : nullptr) {
        const std::string name = entry->d_name;
        if (!name.starts_with(names))
            continue;
        const FileDescriptor file(::open(pathOf(name).c_str(), O_RDWR | Safely));
        if (file.valid() && lockFile(file, F_WRLCK) && isNamed(file, pathOf(name)))
            ::unlink(pathOf(name).c_str());
    }
}

// The memory gets its name when it is complete, and its user's lock before.
FileDescriptor make(const std::string& path, const struct stat& database)
{
    const mode_t mode = database.st_mode & 0666;
    FileDescriptor file(::open(Folder, O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
    if (!file.valid() || ::posix_fallocate(file.get(), 0, Size) != 0 ||
        ::fchmod(file.get(), mode) != 0 ||
        (::fchown(file.get(), database.st_uid, database.st_gid) != 0 &&
         ::geteuid() != database.st_uid) ||
        !lockFile(file, F_RDLCK))
        return FileDescriptor();
    const std::string itself = "/proc/self/fd/" + std::to_string(file.get());
    if (::linkat(AT_FDCWD, itself.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) != 0)
        return FileDescriptor();
    return file;
}

bool isShortage(int cause)
{
    return cause == EMFILE || cause == ENFILE || cause == ENOMEM;
}

}

ChangeCounter::~ChangeCounter()
{
    if (m_number != nullptr)
        ::munmap(m_number, Size);
}

bool ChangeCounter::open(const std::string& database, Missing missing)
{
    struct stat info {};
    const FileId id = fileId(database);
    if (m_number != nullptr && id == m_database)
        return true;
    m_number = nullptr;
    if (::stat(database.c_str(), &info) != 0)
        return true;
    m_database = id;
    const std::string path = pathOf(nameOf(id, info.st_uid));
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        FileDescriptor file(::open(path.c_str(), O_RDWR | Safely));
        m_isWritable = file.valid();
        if (!file.valid() && errno == EACCES)
            file = FileDescriptor(::open(path.c_str(), O_RDONLY | Safely));
        if (!file.valid() && isShortage(errno))
            return false;
        if (file.valid() ? !isCounter(file, info.st_uid) : isForeign(path, info.st_uid))
            return true;
        if (file.valid() && lockFile(file, F_RDLCK) && isNamed(file, path))
            return attach(std::move(file));
        if (file.valid())
            continue;
        if (missing == Missing::Leave || (::geteuid() != info.st_uid && ::geteuid() != 0))
            return true;
        removeUnused(info.st_uid);
        file = make(path, info);
        m_isWritable = file.valid();
        if (file.valid())
            return attach(std::move(file));
        if (errno != EEXIST)
            return !isShortage(errno);
    }
    return false;
}

bool ChangeCounter::attach(FileDescriptor file)
{
    const int access = m_isWritable ? PROT_READ | PROT_WRITE : PROT_READ;
    void* address = ::mmap(nullptr, Size, access, MAP_SHARED, file.get(), 0);
    if (address == MAP_FAILED)
        return false;
    m_number = static_cast<std::uint64_t*>(address);
    m_file = std::move(file);
    return true;
}

std::uint64_t ChangeCounter::value() const
{
    return m_number != nullptr ? std::atomic_ref(*m_number).load() : Unknown;
}

std::uint64_t ChangeCounter::begin()
{
    m_mark = 0;
    const std::uint64_t before = value();
    if (m_number == nullptr || !m_isWritable)
        return Unknown;
    m_mark = (before | 1) + (before % 2 == 1 ? 2 : 0);
    std::atomic_ref(*m_number).store(m_mark);
    return before;
}

std::uint64_t ChangeCounter::end()
{
    std::uint64_t mark = m_mark;
    m_mark = 0;
    if (mark == 0 || m_number == nullptr)
        return Unknown;
    const std::uint64_t after = mark + 1;
    return std::atomic_ref(*m_number).compare_exchange_strong(mark, after) ? after : Unknown;
}

}
