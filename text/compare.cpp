#include "text/compare.h"

#include <mdtools/encoding.h>
#include <mdtools/strings.h>

#include <type_traits>

namespace Tools {

namespace {

using Comparing::By;
using Comparing::Exact;
using Comparing::Lowered;
using Comparing::Text;

// The order, quicker for texts that are equal but for the case of ASCII letters.
template <class Case>
int compare(Text a, Text b, By by)
{
    if (a.p == b.p)
        return 0;
    if (a.size == b.size) {
        const bool areSame = std::is_same_v<Case, Lowered>
                                 ? Comparing::isSameButCase(a.p, b.p, a.size)
                                 : Comparing::isSame(a.p, b.p, a.size);
        if (areSame)
            return 0;
    }
    return Comparing::order<Case>(a, b, by);
}

// Two nulls are equal, one null equals nothing.
template <class Case>
bool isEqual(Text a, Text b, By by)
{
    if (a.p == nullptr || b.p == nullptr)
        return a.p == b.p;
    return compare<Case>(a, b, by) == 0;
}

// Null comes before any text.
int orderWithNulls(Text a, Text b, By by)
{
    if (a.p == nullptr || b.p == nullptr)
        return static_cast<int>(a.p != nullptr) - static_cast<int>(b.p != nullptr);
    return Comparing::order<Exact>(a, b, by);
}

// An old habit of callers: with a null it is always -1.
int orderWithoutCase(Text a, Text b, By by)
{
    return a.p == nullptr || b.p == nullptr ? -1 : compare<Lowered>(a, b, by);
}

}

bool Streq(const std::string& a, const std::string& b)
{
    return compare<Exact>(a, b, By::Character) == 0;
}

bool Streq(const std::string& a, const char* b)
{
    return isEqual<Exact>(a, b, By::Character);
}

bool Streq(const char* a, const std::string& b)
{
    return isEqual<Exact>(a, b, By::Character);
}

bool Streq(const char* a, const char* b)
{
    return isEqual<Exact>(a, b, By::Character);
}

bool Strieq(const std::string& a, const std::string& b)
{
    return compare<Lowered>(a, b, By::Character) == 0;
}

bool Strieq(const std::string& a, const char* b)
{
    return isEqual<Lowered>(a, b, By::Character);
}

bool Strieq(const char* a, const std::string& b)
{
    return isEqual<Lowered>(a, b, By::Character);
}

bool Strieq(const char* a, const char* b)
{
    return isEqual<Lowered>(a, b, By::Character);
}

int strcmp(const char* a, const char* b)
{
    return orderWithNulls(a, b, By::Character);
}

int stricmp(const std::string& a, const std::string& b)
{
    return compare<Lowered>(a, b, By::Character);
}

int stricmp(const std::string& a, const char* b)
{
    return orderWithoutCase(a, b, By::Character);
}

int stricmp(const char* a, const std::string& b)
{
    return orderWithoutCase(a, b, By::Character);
}

int stricmp(const char* a, const char* b)
{
    return orderWithoutCase(a, b, By::Character);
}

namespace Mbcs {

bool Streq(const std::string& a, const std::string& b)
{
    return isEqual<Exact>(a, b, By::Byte);
}

bool Streq(const std::string& a, const char* b)
{
    return isEqual<Exact>(a, b, By::Byte);
}

bool Streq(const char* a, const std::string& b)
{
    return isEqual<Exact>(a, b, By::Byte);
}

bool Streq(const char* a, const char* b)
{
    return isEqual<Exact>(a, b, By::Byte);
}

bool Strieq(const std::string& a, const std::string& b)
{
    return isEqual<Lowered>(a, b, By::Byte);
}

bool Strieq(const std::string& a, const char* b)
{
    return isEqual<Lowered>(a, b, By::Byte);
}

bool Strieq(const char* a, const std::string& b)
{
    return isEqual<Lowered>(a, b, By::Byte);
}

bool Strieq(const char* a, const char* b)
{
    return isEqual<Lowered>(a, b, By::Byte);
}

int strcmp(const char* a, const char* b)
{
    return orderWithNulls(a, b, By::Byte);
}

int stricmp(const std::string& a, const std::string& b)
{
    return orderWithoutCase(a, b, By::Byte);
}

int stricmp(const std::string& a, const char* b)
{
    return orderWithoutCase(a, b, By::Byte);
}

int stricmp(const char* a, const std::string& b)
{
    return orderWithoutCase(a, b, By::Byte);
}

int stricmp(const char* a, const char* b)
{
    return orderWithoutCase(a, b, By::Byte);
}

}

}
