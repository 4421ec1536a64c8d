#include "text/byte_set.h"

#include <mdtools/encoding.h>
#include <mdtools/strings.h>

namespace Tools {

namespace {

std::string trimmed(const std::string& s, const std::string& chars, bool atStart, bool atEnd)
{
    const ByteSet set(chars);
    const char* first = s.data();
    const char* last = first + s.size();
    while (atStart && first < last && set.contains(*first))
        ++first;
    while (atEnd && first < last && set.contains(last[-1]))
        --last;
    return std::string(first, last);
}

}

std::string trim(const std::string& s, const std::string& chars)
{
    return trimmed(s, chars, true, true);
}

std::string trimStart(const std::string& s, const std::string& chars)
{
    return trimmed(s, chars, true, false);
}

std::string trimEnd(const std::string& s, const std::string& chars)
{
    return trimmed(s, chars, false, true);
}

}
