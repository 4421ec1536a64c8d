#include "text/compare.h"

#include "text/code_page.h"

#include <mdtools/encoding.h>
#include <mdtools/strings.h>

#include <algorithm>

namespace Tools {

namespace {

using Comparing::Exact;
using Comparing::Lowered;

// A text whose terminator stands at `size`; earlier ones may be in it.
struct Text {
    Text(const std::string& text) : p(text.c_str()), size(text.size()) {}
    Text(const char* text) : p(text), size(text != nullptr ? std::strlen(text) : 0) {}

    const char* p;
    std::size_t size;
};

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

// The order of two texts that are equal up to `index` and differ there. A byte that cannot be a
// first byte ends a character, so that those directly before the place tell where it stands. Lead
// bytes are judged after lowering.
template <class Case>
int characterOrder(const char* a, const char* b, std::size_t index,
                   const CodePage::ByteFlags& isLead)
{
    std::size_t leads = 0;
    while (leads < index && isLead[Case::byte(a[index - 1 - leads])])
        ++leads;
    const bool isInside = leads % 2 != 0;
    const unsigned first = characterAt<Case>(a + index, isInside, isLead);
    const unsigned second = characterAt<Case>(b + index, isInside, isLead);
    return first < second ? -1 : static_cast<int>(first > second);
}

// Whether double-byte characters are regarded.
enum class By { Byte, Character };

// -1, 0 or 1. The terminator of the shorter text ends the comparison at the latest.
template <class Case, By by>
int order(Text a, Text b)
{
    const std::size_t index = Comparing::firstDifference<Case, Comparing::Nul::Ends>(
        a.p, b.p, std::min(a.size, b.size) + 1);
    const unsigned char first = Case::byte(a.p[index]);
    const unsigned char second = Case::byte(b.p[index]);
    if (first == second)
        return 0;
    if constexpr (by == By::Character) {
        const CodePage& page = CodePage::get();
        if (page.hasLeadBytes())
            return characterOrder<Case>(a.p, b.p, index, page.leadBytes());
    }
    return first < second ? -1 : 1;
}

template <class Case, By by>
bool isEqual(Text a, Text b)
{
    if (a.p == b.p)
        return true;
    return a.p != nullptr && b.p != nullptr && order<Case, by>(a, b) == 0;
}

template <By by>
int orderWithNulls(Text a, Text b)
{
    if (a.p == b.p)
        return 0;
    if (a.p == nullptr || b.p == nullptr)
        return a.p == nullptr ? -1 : 1;
    return order<Exact, by>(a, b);
}

template <By by>
int orderWithoutCase(Text a, Text b)
{
    if (a.p == nullptr || b.p == nullptr)
        return -1;
    return a.p == b.p ? 0 : order<Lowered, by>(a, b);
}

}

bool Streq(const std::string& a, const std::string& b)
{
    return isEqual<Exact, By::Character>(a, b);
}

bool Streq(const std::string& a, const char* b)
{
    return isEqual<Exact, By::Character>(a, b);
}

bool Streq(const char* a, const std::string& b)
{
    return isEqual<Exact, By::Character>(a, b);
}

bool Streq(const char* a, const char* b)
{
    return isEqual<Exact, By::Character>(a, b);
}

bool Strieq(const std::string& a, const std::string& b)
{
    return isEqual<Lowered, By::Character>(a, b);
}

bool Strieq(const std::string& a, const char* b)
{
    return isEqual<Lowered, By::Character>(a, b);
}

bool Strieq(const char* a, const std::string& b)
{
    return isEqual<Lowered, By::Character>(a, b);
}

bool Strieq(const char* a, const char* b)
{
    return isEqual<Lowered, By::Character>(a, b);
}

int strcmp(const char* a, const char* b)
{
    return orderWithNulls<By::Character>(a, b);
}

int stricmp(const std::string& a, const std::string& b)
{
    return orderWithoutCase<By::Character>(a, b);
}

int stricmp(const std::string& a, const char* b)
{
    return orderWithoutCase<By::Character>(a, b);
}

int stricmp(const char* a, const std::string& b)
{
    return orderWithoutCase<By::Character>(a, b);
}

int stricmp(const char* a, const char* b)
{
    return orderWithoutCase<By::Character>(a, b);
}

namespace Mbcs {

bool Streq(const std::string& a, const std::string& b)
{
    return isEqual<Exact, By::Byte>(a, b);
}

bool Streq(const std::string& a, const char* b)
{
    return isEqual<Exact, By::Byte>(a, b);
}

bool Streq(const char* a, const std::string& b)
{
    return isEqual<Exact, By::Byte>(a, b);
}

bool Streq(const char* a, const char* b)
{
    return isEqual<Exact, By::Byte>(a, b);
}

bool Strieq(const std::string& a, const std::string& b)
{
    return isEqual<Lowered, By::Byte>(a, b);
}

bool Strieq(const std::string& a, const char* b)
{
    return isEqual<Lowered, By::Byte>(a, b);
}

bool Strieq(const char* a, const std::string& b)
{
    return isEqual<Lowered, By::Byte>(a, b);
}

bool Strieq(const char* a, const char* b)
{
    return isEqual<Lowered, By::Byte>(a, b);
}

int strcmp(const char* a, const char* b)
{
    return orderWithNulls<By::Byte>(a, b);
}

int stricmp(const std::string& a, const std::string& b)
{
    return orderWithoutCase<By::Byte>(a, b);
}

int stricmp(const std::string& a, const char* b)
{
    return orderWithoutCase<By::Byte>(a, b);
}

int stricmp(const char* a, const std::string& b)
{
    return orderWithoutCase<By::Byte>(a, b);
}

int stricmp(const char* a, const char* b)
{
    return orderWithoutCase<By::Byte>(a, b);
}

}

}
