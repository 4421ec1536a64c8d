#include "text/code_page.h"
#include "text/compare.h"

#include <algorithm>

namespace Tools::Comparing {

namespace {

// What the byte at `p` counts in a comparison by characters; `isInside` if it is the second one of
// a double-byte character.
template <class Case>
unsigned characterAt(const char* p, bool isInside, const CodePage::ByteFlags& isLead)
{
    const unsigned byte = Case::byte(*p);
    if (isInside)
        return byte == 0 ? 0 : byte | 0x10000;
    if (!isLead[byte])
        return byte;
    const unsigned second = Case::byte(p[1]);
    return second == 0 ? 0 : byte << 8 | second;
}

// The order of two texts that are equal up to `index` and differ there. Lead bytes are judged after
// lowering.
template <class Case>
int characterOrder(const char* a, const char* b, std::size_t index, const CodePage& page)
{
    const bool isInside = page.isSecondByte(a, index, [](char c) { return Case::byte(c); });
    const unsigned first = characterAt<Case>(a + index, isInside, page.leadBytes());
    const unsigned second = characterAt<Case>(b + index, isInside, page.leadBytes());
    return first < second ? -1 : static_cast<int>(first > second);
}

}

// Both terminators are compared, too, so that a text that begins another one comes first.
template <class Case>
int order(Text a, Text b, By by)
{
    const std::size_t index =
        firstDifference<Case, Nul::Ends>(a.p, b.p, std::min(a.size, b.size) + 1);
    const unsigned char first = Case::byte(a.p[index]);
    const unsigned char second = Case::byte(b.p[index]);
    if (first == second)
        return 0;
    if (by == By::Character) {
        const CodePage& page = CodePage::get();
        if (page.hasLeadBytes())
            return characterOrder<Case>(a.p, b.p, index, page);
    }
    return first < second ? -1 : 1;
}

template int order<Exact>(Text a, Text b, By by);
template int order<Lowered>(Text a, Text b, By by);

}
