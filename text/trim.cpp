#include "text/byte_block.h"
#include "text/byte_set.h"

#include <mdtools/encoding.h>
#include <mdtools/strings.h>

#include <bit>

namespace Tools {

namespace {

// More different bytes are looked up in a set.
constexpr std::size_t FewBytes = 6;

struct Ends {
    std::size_t first;
    std::size_t last;
};

// The front first: of a text that is trimmed away altogether nothing is left for the back.
Ends trimByteByByte(const std::string& s, const std::string& chars)
{
    const ByteSet set(chars);
    Ends ends{0, s.size()};
    while (ends.first < ends.last && set.contains(s[ends.first]))
        ++ends.first;
    while (ends.first < ends.last && set.contains(s[ends.last - 1]))
        --ends.last;
    return ends;
}

// The first and the last eight bytes are looked at together, because loops of a few steps cost most
// by their unpredictable end.
Ends trimmedEnds(const std::string& s, const std::string& chars)
{
    if (s.size() < 8 || chars.size() > FewBytes)
        return trimByteByByte(s, chars);
    const ByteBlock bytes = ByteBlock::loadEnds<8>(s.data(), s.size());
    ByteBlock found = ByteBlock::zero();
    for (const char c : chars)
        found = found | bytes.equals(c);
    const ByteBlock::Mask mask = found.mask();
    const auto atStart = static_cast<unsigned>(std::countr_zero(~mask | 0x100U));
    const auto atEnd = static_cast<unsigned>(std::countl_zero(~(mask << 16) | 0x800000U));
    return atStart == 8 || atEnd == 8 ? trimByteByByte(s, chars) : Ends{atStart, s.size() - atEnd};
}

}

std::string trim(const std::string& s, const std::string& chars)
{
    const Ends ends = trimmedEnds(s, chars);
    return std::string(s.data() + ends.first, ends.last - ends.first);
}

std::string trimStart(const std::string& s, const std::string& chars)
{
    const std::size_t first = trimmedEnds(s, chars).first;
    return std::string(s.data() + first, s.size() - first);
}

std::string trimEnd(const std::string& s, const std::string& chars)
{
    const Ends ends = trimmedEnds(s, chars);
    return std::string(s.data(), ends.first < ends.last ? ends.last : 0);
}

}
