#pragma once

#include <mdtools/export.h>
#include <mdtools/nullable.h>
#include <mdtools/strings.h>

#include <exception>
#include <string>
#include <vector>

// Twins of the functions in strings.h: for narrow text taken as bytes, and for UTF-16. Where
// nothing is said here they mean the same, and any thread may call them.
namespace Tools {

// Narrow text taken byte by byte, without regard to double-byte characters.
namespace Mbcs {

// Null equals null only.
MDTOOLS_API bool Streq(const std::string& a, const std::string& b);
MDTOOLS_API bool Streq(const std::string& a, const char* b);
MDTOOLS_API bool Streq(const char* a, const std::string& b);
MDTOOLS_API bool Streq(const char* a, const char* b);

MDTOOLS_API bool Strieq(const std::string& a, const std::string& b);
MDTOOLS_API bool Strieq(const std::string& a, const char* b);
MDTOOLS_API bool Strieq(const char* a, const std::string& b);
MDTOOLS_API bool Strieq(const char* a, const char* b);

// Exactly -1, 0 or 1, by unsigned bytes. Null comes before any text.
MDTOOLS_API int strcmp(const char* a, const char* b);

// Exactly -1, 0 or 1. -1 if either is null, even if both are.
MDTOOLS_API int stricmp(const std::string& a, const std::string& b);
MDTOOLS_API int stricmp(const std::string& a, const char* b);
MDTOOLS_API int stricmp(const char* a, const std::string& b);
MDTOOLS_API int stricmp(const char* a, const char* b);

MDTOOLS_API bool stristr(const std::string& s, const std::string& sub);
MDTOOLS_API bool stristr(const std::string& s, const char* sub);
MDTOOLS_API bool stristr(const char* s, const char* sub);

// Always with case.
MDTOOLS_API bool startsWith(const std::string& s, const std::string& prefix);
MDTOOLS_API bool endsWith(const std::string& s, const std::string& suffix);

// The very functions of strings.h.
MDTOOLS_API char* strlwr(char* p);
MDTOOLS_API char* strupr(char* p);
MDTOOLS_API std::string& strlwr(std::string& s);
MDTOOLS_API std::string& strupr(std::string& s);
MDTOOLS_API std::string toLower(const std::string& s);
MDTOOLS_API std::string toUpper(const std::string& s);
MDTOOLS_API std::vector<std::string> tokenize(const std::string& s, const std::string& delimiters);
MDTOOLS_API std::string trim(const std::string& s, const std::string& chars);
MDTOOLS_API std::string trimStart(const std::string& s, const std::string& chars);
MDTOOLS_API std::string trimEnd(const std::string& s, const std::string& chars);
MDTOOLS_API mdt::Nullable<int> tryParseInt(const std::string& s);
MDTOOLS_API mdt::Nullable<long> tryParseLong(const std::string& s);
MDTOOLS_API mdt::Nullable<double> tryParseDouble(const std::string& s);

}

// UTF-16 text, taken unit by unit: half of a surrogate pair is a unit like any other. Where wchar_t
// is wider than 16 bits each still holds one unit. Comparisons end at the first NUL; null equals
// null only.
namespace Unicode16 {

MDTOOLS_API bool Streq(const std::wstring& a, const std::wstring& b);
MDTOOLS_API bool Streq(const wchar_t* a, const std::wstring& b);

// Without case: every unit by Unicode's simple lower-case mapping, which is one to one ("Straße" is
// not "STRASSE") and the same in every locale. Letters beyond the Basic Multilingual Plane keep
// their case.
MDTOOLS_API bool Strieq(const std::wstring& a, const std::wstring& b);
MDTOOLS_API bool Strieq(const std::wstring& a, const wchar_t* b);
MDTOOLS_API bool Strieq(const wchar_t* a, const std::wstring& b);
MDTOOLS_API bool Strieq(const wchar_t* a, const wchar_t* b);

MDTOOLS_API std::vector<std::wstring> tokenize(const std::wstring& s,
                                               const std::wstring& delimiters);

// White space, signs and digits are those of ASCII.
MDTOOLS_API mdt::Nullable<int> tryParseInt(const std::wstring& s);
MDTOOLS_API mdt::Nullable<long> tryParseLong(const std::wstring& s);
MDTOOLS_API mdt::Nullable<double> tryParseDouble(const std::wstring& s);

}

// The text of a WriteAsStringA would not survive being written.
class MDTOOLS_API LossyConversionError : public std::exception {
public:
    const char* what() const noexcept override;
};

// A narrow text that is about to be written, guarded against loss: text that does not come back
// from UTF-16 as it was, such as half a double-byte character, raises LossyConversionError. A plain
// value.
class MDTOOLS_API WriteAsStringA {
public:
    WriteAsStringA(const std::string& text);

private:
    friend class WriteAsStringATest;

    std::string convert() const;

    std::string m_text;
};

}
