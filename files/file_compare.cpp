#include "files/file_compare.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <memory>
#include <system_error>
#include <thread>

namespace Tools {

namespace {

// Two blocks stay in a core's own cache.
constexpr std::size_t BlockSize = std::size_t{256} * 1024;
// So much is compared before a second thread is worth its start.
constexpr std::uint64_t SmallSize = std::uint64_t{4} << 20U;
constexpr std::uint64_t ToTheEnd = std::numeric_limits<std::uint64_t>::max();

// Compares parts of two files, several at once. The threads share the verdict alone, which goes
// from true to false only; so it may be read late, but never wrongly. The first difference ends
// all.
class Comparison {
public:
    Comparison(const Platform::InputFile& a, const Platform::InputFile& b) : m_a(a), m_b(b) {}

    using Buffer = std::unique_ptr<char[]>;
    static Buffer makeBuffer() { return Buffer(new char[2 * BlockSize]); }

    bool isEqual() const { return m_isEqual; }

    void compare(std::uint64_t begin, std::uint64_t end, char* buffer)
    {
        for (bool isLast = false; begin < end && !isLast && m_isEqual; begin += BlockSize) {
            const auto wanted =
                static_cast<std::size_t>(std::min<std::uint64_t>(end - begin, BlockSize));
            std::size_t count = 0;
            std::size_t other = 0;
            if (!m_a.read(begin, buffer, wanted, count) ||
                !m_b.read(begin, buffer + BlockSize, wanted, other) || count != other ||
                std::memcmp(buffer, buffer + BlockSize, count) != 0)
                m_isEqual = false;
            isLast = count < wanted;
        }
    }

private:
    const Platform::InputFile& m_a;
    const Platform::InputFile& m_b;
    std::atomic<bool> m_isEqual = true;
};

}

bool haveSameBytes(const Platform::InputFile& a, const Platform::InputFile& b)
{
    // Files that the system makes up on reading have size 0 and nevertheless contents.
    const std::uint64_t size = std::min(a.size(), b.size());
    if (size != 0 && a.size() != b.size())
        return false;
    Comparison comparison(a, b);
    const Comparison::Buffer buffer = Comparison::makeBuffer();
    comparison.compare(0, size > SmallSize ? SmallSize : ToTheEnd, buffer.get());
    if (size <= SmallSize || !comparison.isEqual())
        return comparison.isEqual();

    // From the system's cache comes no more than a core can copy, so two of them share the rest.
    const std::uint64_t middle = SmallSize + (size - SmallSize) / 2;
    const Comparison::Buffer secondBuffer = Comparison::makeBuffer();
    std::thread second;
    try {
        second = std::thread([&] { comparison.compare(middle, ToTheEnd, secondBuffer.get()); });
    } catch (const std::system_error&) {
        comparison.compare(middle, ToTheEnd, buffer.get());
    }
    comparison.compare(SmallSize, middle, buffer.get());
    if (second.joinable())
        second.join();
    return comparison.isEqual();
}

}
