#pragma once

#include <cstdint>
#include <string>

#include <sys/types.h>

namespace Tools::Store {

// A number in a small file that every process maps: it moves on with each change of the database
// beside it, so that a process can tell without a system call that nothing has changed since its
// last look. While a change is under way the number is odd, and it stays so when the writer is
// killed; the next writer goes on from there.
class ChangeCounter {
public:
    // Nothing can be told from an odd number.
    static constexpr std::uint64_t Unknown = 1;

    ChangeCounter() = default;
    ~ChangeCounter();
    ChangeCounter(const ChangeCounter&) = delete;
    ChangeCounter& operator=(const ChangeCounter&) = delete;

    // Maps the file and makes it if it is missing. Who may not write it can still read along. A map
    // that was there before stays in place, as some thread may just look at it.
    void open(const std::string& path, mode_t mode);

    // The number itself; null when there is no file.
    const std::uint64_t* number() const { return m_number; }

    // Unknown when there is no file.
    std::uint64_t value() const;

    // Marks a change before others can see it; only the one writer of the database may call this.
    // Returns the number as it was before.
    std::uint64_t begin();
    // The change can be seen. Returns the number from now on, unknown when another writer has begun
    // meanwhile.
    std::uint64_t end();

private:
    std::uint64_t* m_number = nullptr;
    bool m_isWritable = false;
    std::uint64_t m_mark = 0;
};

}
