#include "text/byte_set.h"
#include "text/characters.h"

#include <mdtools/strings.h>

#include <algorithm>
#include <cstring>

namespace Tools {

namespace {

// File names are looked at byte by byte, whatever the code page. The backslash is missing from the
// first set on purpose: a name with folders in it passes the test.
constexpr ByteSet ForbiddenInFileNames("/:*?\"<>|");
constexpr ByteSet ReplacedInFileNames("/\\:*?\"<>|");

// A carriage return is allowed on purpose.
constexpr std::string_view ForbiddenInNames(
    " \t\n,\x01\x02\x03\x04\x05\x06\x07\x08\x0B\x0C\x0E\x0F\x10\x11\x12\x13\x14\x15\x16\x17\x18\x19"
    "\x1A\x1B\x1C\x1D\x1E\x1F");

}

bool hasForbiddenFilenameChar(const std::string& s)
{
    return std::any_of(s.begin(), s.end(), [](char c) { return ForbiddenInFileNames.contains(c); });
}

std::string replaceForbiddenFilenameChars(const std::string& s, const std::string& replacement)
{
    std::string result;
    result.reserve(s.size());
    for (const char c : s) {
        if (ReplacedInFileNames.contains(c))
            result += replacement;
        else
            result += c;
    }
    return result;
}

// `removeBlanks` works on C texts: the name ends at its first NUL.
bool checkName(std::string& name)
{
    removeBlanks(name.data());
    name.resize(std::strlen(name.c_str()));
    return !name.empty() && Characters::findAny(name, ForbiddenInNames) == std::string::npos;
}

}
