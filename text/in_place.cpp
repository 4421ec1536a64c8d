#include "text/characters.h"
#include "text/numbers.h"

#include <mdtools/strings.h>

#include <algorithm>
#include <cstring>

namespace Tools {

char* removeLeadingBlanks(char* p)
{
    return removeLeadingCharakters(p, ' ');
}

char* removeLeadingCharakters(char* p, char c)
{
    if (p == nullptr || *p != c)
        return p;
    const char* rest = p;
    while (*rest == c && *rest != '\0')
        ++rest;
    std::memmove(p, rest, std::strlen(rest) + 1);
    return p;
}

char* removeTrailingBlanks(char* p)
{
    return removeTrailingCharakters(p, ' ');
}

// The count of characters serves as a count of bytes, as callers have always had it.
char* removeTrailingCharakters(char* p, char c)
{
    if (p == nullptr)
        return p;
    for (std::size_t i = Characters::count(p); i > 0 && p[i - 1] == c; --i)
        p[i - 1] = '\0';
    return p;
}

void removeBlanks(char* p)
{
    removeTrailingBlanks(removeLeadingBlanks(p));
}

char* skipSpaces(char* p)
{
    while (Numbers::isSpace(*p))
        ++p;
    return p;
}

const char* skipSpaces(const char* p)
{
    while (Numbers::isSpace(*p))
        ++p;
    return p;
}

// The texts may overlap. `src` is not read beyond `size` - 1 bytes.
int strncpy(char* dst, std::size_t size, const char* src)
{
    if (dst == nullptr || src == nullptr)
        return 0;
    std::size_t length = 0;
    if (size != 0) {
        const void* const end = std::memchr(src, '\0', size - 1);
        length = end != nullptr ? static_cast<std::size_t>(static_cast<const char*>(end) - src)
                                : size - 1;
    }
    std::memmove(dst, src, length);
    dst[length] = '\0';
    return 0;
}

// Null gives an empty text, not null: callers need not test.
char* stringDuplicate(const char* src)
{
    const std::size_t length = src != nullptr ? std::strlen(src) : 0;
    char* const copy = new char[length + 1];
    std::copy_n(src, length, copy);
    copy[length] = '\0';
    return copy;
}

}
