#include "store/database_files.h"

#include "platform/posix/retry.h"
#include "store/store_file.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Store {

namespace {

// The bytes that SQLite's own files lock, past the end of any database and within the index of the
// log. All programs that use a database at the same time must agree on them.
constexpr off_t Pending = 0x40000000;
constexpr off_t Reserved = Pending + 1;
constexpr off_t Shared = Pending + 2;
constexpr off_t SharedSize = 510;
constexpr off_t IndexLocks = 120;
// Held, shared, by every program that has the index mapped. A program that gets this lock for
// itself alone is the first one, and cannot trust what it finds in the index.
constexpr off_t IndexInUse = IndexLocks + SQLITE_SHM_NLOCK;
// The number of the first of the five locks that readers of the log hold.
constexpr int FirstReader = 3;
constexpr int ReaderCount = SQLITE_SHM_NLOCK - FirstReader;
// An index that begins with zeros is made anew from the log.
constexpr std::size_t IndexHeader = 136;

constexpr int SectorSize = 4096;
constexpr int IsIndexWhole = 0x4D64;
constexpr int IsIndexShared = 0x4D65;
constexpr int LongestSleep = 1000;

int lockBytes(const FileDescriptor& file, short kind, off_t start, off_t length)
{
    struct flock lock {};
    lock.l_type = kind;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    if (::fcntl(file.get(), F_OFD_SETLK, &lock) == 0)
        return SQLITE_OK;
    return errno == EAGAIN || errno == EACCES ? SQLITE_BUSY : SQLITE_IOERR_LOCK;
}

// The index of the write-ahead log, which all programs with the database open map. Without the
// right to write it there is none: SQLite builds one of its own then, with each change of the log.
class Index {
public:
    bool isOpen() const { return m_isOpen; }
    bool isShared() const { return !m_isPrivate; }

    int open(const std::string& database, bool isReadOnly)
    {
        const std::string path = database + "-shm";
        m_isPrivate = isReadOnly;
        m_file = isReadOnly ? openForReading(path) : openOrMakeLike(path, database);
        if (!m_file.valid() && !isReadOnly) {
            if (errno == EMFILE || errno == ENFILE || errno == ENOMEM)
                return SQLITE_CANTOPEN;
            m_isPrivate = true;
        }
        const int result = m_isPrivate ? SQLITE_OK : join();
        m_isOpen = result == SQLITE_OK;
        if (!m_isOpen)
            m_file.close();
        return result;
    }

    // Regions of the file, mapped one by one as the log grows; they stay until the end.
    int map(int region, int size, bool isExtended, void volatile** address)
    {
        *address = nullptr;
        if (m_isPrivate)
            return SQLITE_READONLY_CANTINIT;
        const auto wanted = static_cast<std::size_t>(region);
        while (m_regions.size() <= wanted) {
            const auto start = static_cast<off_t>(m_regions.size()) * size;
            if (!isLongAs(start + size)) {
                if (!isExtended)
                    return SQLITE_OK;
                // A hole in the file would end the program when the disk has no room for it.
                if (::posix_fallocate(m_file.get(), start, size) != 0)
                    return withoutRoom();
            }
            void* mapped = ::mmap(nullptr, static_cast<std::size_t>(size), PROT_READ | PROT_WRITE,
                                  MAP_SHARED, m_file.get(), start);
            if (mapped == MAP_FAILED)
                return SQLITE_IOERR_SHMMAP;
            m_regionSize = static_cast<std::size_t>(size);
            m_regions.push_back(mapped);
        }
        *address = m_regions[wanted];
        return SQLITE_OK;
    }

    int lock(int offset, int count, int flags) const
    {
        if (!m_file.valid())
            return SQLITE_OK;
        const short kind = (flags & SQLITE_SHM_UNLOCK) != 0   ? F_UNLCK
                           : (flags & SQLITE_SHM_SHARED) != 0 ? F_RDLCK
                                                              : F_WRLCK;
        if (m_isPrivate && offset == FirstReader)
            return lockPrivately(kind);
        return lockBytes(m_file, kind, IndexLocks + offset, count);
    }

    void close()
    {
        for (void* region : m_regions)
            ::munmap(region, m_regionSize);
        m_regions.clear();
        m_file.close();
        m_isOpen = false;
    }

    bool isWhole() const
    {
        return m_regions.empty() || isLongAs(static_cast<off_t>(m_regions.size() * m_regionSize));
    }

private:
    bool isLongAs(off_t size) const
    {
        struct stat info {};
        return ::fstat(m_file.get(), &info) == 0 && info.st_size >= size;
    }

    // A reader with a private index does not leave its mark in the shared one, so it takes all five
    // readers' locks at once. The first one keeps others from copying the log into the database.
    // Each of the other four keeps them from starting the log anew, for which a writer needs all
    // four.
    //
    // A lock that is refused is held alone by another program, which may have been stopped there.
    // If it is the first one, that program is copying the log already; it copies no more than was
    // committed when it began, which this reader knows as well. If it is one of the four, that
    // program is moving the mark of that lock. Either does no harm, so one of the four is enough;
    // if all four are refused, the log is being started anew and the reader has to come back.
    int lockPrivately(short kind) const
    {
        const off_t first = IndexLocks + FirstReader;
        int result = lockBytes(m_file, kind, first, ReaderCount);
        if (result != SQLITE_BUSY)
            return result;
        lockBytes(m_file, kind, first, 1);
        for (off_t other = 1; other < ReaderCount; ++other)
            if (lockBytes(m_file, kind, first + other, 1) == SQLITE_OK)
                result = SQLITE_OK;
        if (result != SQLITE_OK)
            lockBytes(m_file, F_UNLCK, first, ReaderCount);
        return result;
    }

    // On a full disk what is stored can still be read. SQLite is about to make the index when it
    // learns that there is no room for it, and has to begin anew to take the private one.
    int withoutRoom()
    {
        if (!m_regions.empty())
            return SQLITE_FULL;
        m_isPrivate = true;
        lockBytes(m_file, F_UNLCK, IndexInUse, 1);
        return SQLITE_BUSY;
    }

    // The first one to come cannot know what the last one left: a killed writer may have been in
    // the middle of a change.
    int join() const
    {
        if (lockBytes(m_file, F_WRLCK, IndexInUse, 1) == SQLITE_OK) {
            static constexpr char Zeros[IndexHeader] = {};
            if (isLongAs(IndexHeader) && !writeAt(m_file.get(), Zeros, IndexHeader, 0))
                return SQLITE_IOERR_SHMOPEN;
        }
        return lockBytes(m_file, F_RDLCK, IndexInUse, 1);
    }

    FileDescriptor m_file;
    std::vector<void*> m_regions;
    std::size_t m_regionSize = 0;
    bool m_isPrivate = false;
    bool m_isOpen = false;
};

// A database, its write-ahead log, or the journal of one that has no log. SQLite calls it through
// the table of methods below; the comments here are on what is this library's own.
class File : public sqlite3_file {
public:
    static File& of(sqlite3_file* file) { return *static_cast<File*>(file); }

    bool isReadOnly() const { return m_isReadOnly; }

    int open(const char* name, int flags)
    {
        m_name = name;
        if ((flags & SQLITE_OPEN_MAIN_DB) != 0)
            return openDatabase();
        const char* database = sqlite3_filename_database(name);
        // A log that could only be read, when it could be written a moment ago, would make all
        // later writes vanish.
        m_isReadOnly = of(sqlite3_database_file_object(name)).m_isReadOnly;
        if (!m_isReadOnly)
            m_file = (flags & SQLITE_OPEN_CREATE) != 0 ? openOrMakeLike(m_name, database)
                                                       : openForWriting(m_name);
        else
            m_file = openForReading(m_name);
        // Where none can be made a log that is missing is an empty one.
        m_isMissing = !m_file.valid() &&
                      ((m_isReadOnly && errno == ENOENT) || errno == ENOSPC || errno == EDQUOT);
        return m_file.valid() || m_isMissing ? SQLITE_OK : SQLITE_CANTOPEN;
    }

    int close()
    {
        m_index.close();
        this->~File();
        return SQLITE_OK;
    }

    int read(void* buffer, int size, sqlite3_int64 position) const
    {
        auto* next = static_cast<char*>(buffer);
        auto left = static_cast<std::size_t>(size);
        while (left > 0 && !m_isMissing) {
            const auto count = Platform::retryInterrupted(
                [&] { return ::pread(m_file.get(), next, left, position); });
            if (count < 0)
                return SQLITE_IOERR_READ;
            if (count == 0)
                break;
            next += count;
            position += count;
            left -= static_cast<std::size_t>(count);
        }
        std::memset(next, 0, left);
        return left == 0 ? SQLITE_OK : SQLITE_IOERR_SHORT_READ;
    }

    int write(const void* bytes, int size, sqlite3_int64 position) const
    {
        if (m_isMissing)
            return SQLITE_FULL;
        if (writeAt(m_file.get(), bytes, static_cast<std::size_t>(size), position))
            return SQLITE_OK;
        return errno == ENOSPC || errno == EDQUOT ? SQLITE_FULL : SQLITE_IOERR_WRITE;
    }

    int truncate(sqlite3_int64 size) const
    {
        return ::ftruncate(m_file.get(), size) == 0 ? SQLITE_OK : SQLITE_IOERR_TRUNCATE;
    }

    int synchronize() const
    {
        return m_isMissing || ::fdatasync(m_file.get()) == 0 ? SQLITE_OK : SQLITE_IOERR_FSYNC;
    }

    int size(sqlite3_int64& size) const
    {
        struct stat info {};
        if (!m_isMissing && ::fstat(m_file.get(), &info) != 0)
            return SQLITE_IOERR_FSTAT;
        size = info.st_size;
        return SQLITE_OK;
    }

    // The steps of SQLite's protocol for databases without a log: any number of readers, one who
    // will write, one who waits for the readers to leave, and then alone changes the file. A
    // database with a log is opened with the first of them and locked in its index otherwise.
    int lock(int level)
    {
        if (level <= m_level)
            return SQLITE_OK;
        int result = SQLITE_OK;
        if (level == SQLITE_LOCK_SHARED) {
            // Who waits for being alone holds this byte, so that no more readers come.
            result = lockBytes(m_file, F_RDLCK, Pending, 1);
            if (result == SQLITE_OK) {
                result = lockBytes(m_file, F_RDLCK, Shared, SharedSize);
                lockBytes(m_file, F_UNLCK, Pending, 1);
            }
        } else if (level == SQLITE_LOCK_RESERVED) {
            result = lockBytes(m_file, F_WRLCK, Reserved, 1);
        } else {
            result = lockBytes(m_file, F_WRLCK, Pending, 1);
            if (result == SQLITE_OK) {
                m_level = SQLITE_LOCK_PENDING;
                result = lockBytes(m_file, F_WRLCK, Shared, SharedSize);
            }
        }
        if (result == SQLITE_OK)
            m_level = level;
        return result;
    }

    int unlock(int level)
    {
        if (level >= m_level)
            return SQLITE_OK;
        int result = SQLITE_OK;
        if (level == SQLITE_LOCK_SHARED) {
            result = lockBytes(m_file, F_RDLCK, Shared, SharedSize);
            lockBytes(m_file, F_UNLCK, Pending, 2);
        } else {
            result = lockBytes(m_file, F_UNLCK, Pending, 2 + SharedSize);
        }
        m_level = level;
        return result == SQLITE_OK ? SQLITE_OK : SQLITE_IOERR_UNLOCK;
    }

    int isReserved(int& answer) const
    {
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_start = Reserved;
        lock.l_len = 1;
        const bool isOurs = m_level >= SQLITE_LOCK_RESERVED;
        if (!isOurs && ::fcntl(m_file.get(), F_OFD_GETLK, &lock) != 0)
            return SQLITE_IOERR_CHECKRESERVEDLOCK;
        answer = isOurs || lock.l_type != F_UNLCK ? 1 : 0;
        return SQLITE_OK;
    }

    int mapIndex(int region, int size, bool isExtended, void volatile** address)
    {
        if (!m_index.isOpen()) {
            const int result = m_index.open(m_name, m_isReadOnly);
            if (result != SQLITE_OK)
                return result;
        }
        return m_index.map(region, size, isExtended, address);
    }

    Index& index() { return m_index; }

private:
    int openDatabase()
    {
        m_file = openForWriting(m_name);
        // Only who may not write is content with reading: without a descriptor to spare, say, it
        // is tried again later.
        if (!m_file.valid() && (errno == EACCES || errno == EPERM || errno == EROFS)) {
            m_file = openForReading(m_name);
            m_isReadOnly = true;
        }
        return m_file.valid() ? SQLITE_OK : SQLITE_CANTOPEN;
    }

    std::string m_name;
    FileDescriptor m_file;
    Index m_index;
    int m_level = SQLITE_LOCK_NONE;
    bool m_isReadOnly = false;
    bool m_isMissing = false;
};

int control(sqlite3_file* file, int operation, void* argument)
{
    const Index& index = File::of(file).index();
    if (operation != IsIndexWhole && operation != IsIndexShared)
        return SQLITE_NOTFOUND;
    *static_cast<bool*>(argument) = operation == IsIndexWhole ? index.isWhole() : index.isShared();
    return SQLITE_OK;
}

// Version 2: the methods up to those for the index of the log.
constexpr sqlite3_io_methods Methods = {
    2,
    [](sqlite3_file* f) { return File::of(f).close(); },
    [](sqlite3_file* f, void* buffer, int size, sqlite3_int64 position) {
        return File::of(f).read(buffer, size, position);
    },
    [](sqlite3_file* f, const void* bytes, int size, sqlite3_int64 position) {
        return File::of(f).write(bytes, size, position);
    },
    [](sqlite3_file* f, sqlite3_int64 size) { return File::of(f).truncate(size); },
    [](sqlite3_file* f, int) { return File::of(f).synchronize(); },
    [](sqlite3_file* f, sqlite3_int64* size) { return File::of(f).size(*size); },
    [](sqlite3_file* f, int level) { return File::of(f).lock(level); },
    [](sqlite3_file* f, int level) { return File::of(f).unlock(level); },
    [](sqlite3_file* f, int* answer) { return File::of(f).isReserved(*answer); },
    control,
    [](sqlite3_file*) { return SectorSize; },
    [](sqlite3_file*) { return SQLITE_IOCAP_POWERSAFE_OVERWRITE; },
    [](sqlite3_file* f, int region, int size, int isExtended, void volatile** address) {
        return File::of(f).mapIndex(region, size, isExtended != 0, address);
    },
    [](sqlite3_file* f, int offset, int count, int flags) {
        return File::of(f).index().lock(offset, count, flags);
    },
    [](sqlite3_file*) { std::atomic_thread_fence(std::memory_order_seq_cst); },
    // The index stays for those who may only read.
    [](sqlite3_file* f, int) {
        File::of(f).index().close();
        return SQLITE_OK;
    },
    nullptr,
    nullptr,
};

sqlite3_vfs* systemFiles(sqlite3_vfs* files)
{
    return static_cast<sqlite3_vfs*>(files->pAppData);
}

int openFile(sqlite3_vfs* files, const char* name, sqlite3_file* file, int flags, int* result)
{
    constexpr int Own = SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_WAL | SQLITE_OPEN_MAIN_JOURNAL;
    file->pMethods = nullptr;
    if (name == nullptr || (flags & Own) == 0)
        return systemFiles(files)->xOpen(systemFiles(files), name, file, flags, result);
    auto* opened = new (file) File;
    const int code = opened->open(name, flags);
    if (code != SQLITE_OK) {
        opened->close();
        file->pMethods = nullptr;
        return code;
    }
    opened->pMethods = &Methods;
    if (result != nullptr)
        *result =
            opened->isReadOnly() ? (flags & ~SQLITE_OPEN_READWRITE) | SQLITE_OPEN_READONLY : flags;
    return SQLITE_OK;
}

// The names come complete. What links in a folder's name lead to must stay open to change.
int completeName(sqlite3_vfs*, const char* name, int size, char* complete)
{
    sqlite3_snprintf(size, complete, "%s", name);
    return SQLITE_OK;
}

// Readers that find the log between two states look again soon, instead of later and later.
int sleepBriefly(sqlite3_vfs* files, int microseconds)
{
    return systemFiles(files)->xSleep(systemFiles(files), std::min(microseconds, LongestSleep));
}

sqlite3_vfs makeFiles(sqlite3_vfs* system, const char* ownName)
{
    sqlite3_vfs files{};
    files.iVersion = 2;
    files.szOsFile = std::max(system->szOsFile, static_cast<int>(sizeof(File)));
    files.mxPathname = system->mxPathname;
    files.zName = ownName;
    files.pAppData = system;
    files.xOpen = openFile;
    files.xDelete = [](sqlite3_vfs* f, const char* name, int isDurable) {
        return systemFiles(f)->xDelete(systemFiles(f), name, isDurable);
    };
    files.xAccess = [](sqlite3_vfs* f, const char* name, int flags, int* answer) {
        return systemFiles(f)->xAccess(systemFiles(f), name, flags, answer);
    };
    files.xFullPathname = completeName;
    files.xRandomness = [](sqlite3_vfs* f, int size, char* bytes) {
        return systemFiles(f)->xRandomness(systemFiles(f), size, bytes);
    };
    files.xSleep = sleepBriefly;
    files.xCurrentTime = [](sqlite3_vfs* f, double* time) {
        return systemFiles(f)->xCurrentTime(systemFiles(f), time);
    };
    files.xGetLastError = [](sqlite3_vfs*, int, char*) { return errno; };
    files.xCurrentTimeInt64 = [](sqlite3_vfs* f, sqlite3_int64* time) {
        return systemFiles(f)->xCurrentTimeInt64(systemFiles(f), time);
    };
    return files;
}

// Null if SQLite was built without files.
sqlite3_vfs* ownFiles()
{
    static sqlite3_vfs files{};
    static char name[32];
    sqlite3_vfs* system = files.xOpen == nullptr ? sqlite3_vfs_find("unix") : nullptr;
    if (system != nullptr) {
        // A process may hold this library more than once, and SQLite knows ways by their names.
        std::snprintf(name, sizeof name, "mdtools-%p", static_cast<void*>(&files));
        files = makeFiles(system, name);
    }
    return files.xOpen != nullptr ? &files : nullptr;
}

}

const char* databaseFiles()
{
    sqlite3_vfs* files = ownFiles();
    return files != nullptr && sqlite3_vfs_register(files, 0) == SQLITE_OK ? files->zName : nullptr;
}

void forgetDatabaseFiles()
{
    if (sqlite3_vfs* files = ownFiles())
        sqlite3_vfs_unregister(files);
}

bool isIndexShared(sqlite3* connection)
{
    bool isShared = true;
    sqlite3_file_control(connection, "main", IsIndexShared, &isShared);
    return isShared;
}

bool isIndexWhole(sqlite3* connection)
{
    bool isWhole = true;
    sqlite3_file_control(connection, "main", IsIndexWhole, &isWhole);
    return isWhole;
}

}
