#pragma once

#include "store/store_file.h"

#include <cstdint>
#include <string>

#include <sys/types.h>

namespace Tools::Store {

// A number in shared memory that moves on with each change of a database, so that a process can
// see without a system call that nothing has changed since its last look. While a change is under
// way the number is odd, and it stays so when the writer is killed; the next writer goes on from
// there.
//
// The one who holds SQLite's lock for writing writes the number, before and after his commit.
// Whoever reads an even number, then the database, and then the same number once more knows that
// what was read belongs to the number.
//
// The memory lies where no backup of the store reaches it, as a mapped file that is cut short ends
// the program. It is named after the database's file and its owner, and everyone who uses it holds
// a lock on it; a name that nobody holds is removed by the next one who makes another.
class ChangeCounter {
public:
    // Nothing can be told from an odd number.
    static constexpr std::uint64_t Unknown = 1;

    enum class Missing { Make, Leave };

    ChangeCounter() = default;
    ~ChangeCounter();
    ChangeCounter(const ChangeCounter&) = delete;
    ChangeCounter& operator=(const ChangeCounter&) = delete;

    // Finds the number of a database, or makes it if the caller owns the database or is root. False
    // if there may be one that cannot be reached just now: the database must not be changed then,
    // as others would not notice. What was mapped for another database stays mapped, as some
    // thread may be reading it.
    bool open(const std::string& database, Missing missing);

    // The number itself; null when there is none.
    const std::uint64_t* number() const { return m_number; }

    // Unknown when there is no number.
    std::uint64_t value() const;

    // False if others rely on a number that this process must not write.
    bool canMark() const { return m_number == nullptr || m_isWritable; }

    // Marks a change before others can see it; only the one writer of the database may call this.
    // Returns the number as it was before.
    std::uint64_t begin();
    // The change can be seen. Returns the number from now on, unknown when another writer has begun
    // meanwhile.
    std::uint64_t end();

private:
    bool attach(FileDescriptor file);

    FileId m_database;
    FileDescriptor m_file;
    std::uint64_t* m_number = nullptr;
    bool m_isWritable = false;
    std::uint64_t m_mark = 0;
};

}
