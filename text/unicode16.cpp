#include "text/unicode_case.h"

#include <mdtools/encoding.h>

#include <cwchar>

namespace Tools::Unicode16 {

namespace {

// A program's own literal may hold whole code points in a wide wchar_t: they keep their case.
wchar_t lower(wchar_t unit)
{
    const auto wide = static_cast<char32_t>(unit);
    return wide > 0xFFFF ? unit
                         : static_cast<wchar_t>(UnicodeCase::toLower(static_cast<char16_t>(wide)));
}

// Most units are equal as they are; only others are lowered.
bool isEqualWithoutCase(const wchar_t* a, const wchar_t* b)
{
    if (a == b)
        return true;
    if (a == nullptr || b == nullptr)
        return false;
    for (; *a == *b || lower(*a) == lower(*b); ++a, ++b) {
        if (*a == L'\0')
            return true;
    }
    return false;
}

}

bool Streq(const std::wstring& a, const std::wstring& b)
{
    return Streq(a.c_str(), b);
}

bool Streq(const wchar_t* a, const std::wstring& b)
{
    return a == b.c_str() || (a != nullptr && std::wcscmp(a, b.c_str()) == 0);
}

bool Strieq(const std::wstring& a, const std::wstring& b)
{
    return isEqualWithoutCase(a.c_str(), b.c_str());
}

bool Strieq(const std::wstring& a, const wchar_t* b)
{
    return isEqualWithoutCase(a.c_str(), b);
}

bool Strieq(const wchar_t* a, const std::wstring& b)
{
    return isEqualWithoutCase(a, b.c_str());
}

bool Strieq(const wchar_t* a, const wchar_t* b)
{
    return isEqualWithoutCase(a, b);
}

}
