#include "text/decimal.h"
#include "text/numbers.h"

#include <mdtools/encoding.h>
#include <mdtools/strings.h>

#include <algorithm>
#include <limits>

namespace Tools {

namespace {

// The two ranges of whole numbers are those of 32 bits on every platform, whatever `long` holds.
constexpr std::uint64_t SignedLimit = std::uint64_t{1} << 31;
constexpr std::uint64_t UnsignedMax = std::numeric_limits<std::uint32_t>::max();

std::int64_t signedValue(const Numbers::Integer& number)
{
    const auto magnitude = static_cast<std::int64_t>(number.magnitude);
    return number.isNegative ? -magnitude : magnitude;
}

template <class Result, class Char>
mdt::Nullable<Result> parseSigned(const Char* first, const Char* last)
{
    const Numbers::Integer number = Numbers::readInteger(first, last);
    if (!number.hasDigits || number.magnitude >= SignedLimit + std::uint64_t{number.isNegative})
        return {};
    return static_cast<Result>(signedValue(number));
}

// As the 32-bit C library does it.
std::int32_t saturated(const char* first, const char* last)
{
    const std::int64_t value = signedValue(Numbers::readInteger(first, last));
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(
        value, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

// The fast path first; it leaves white space, "+", words and all that needs exact digits.
mdt::Nullable<double> parseReal(const char* first, const char* last)
{
    double value = 0.0;
    if (Numbers::readPlainReal(first, last, value))
        return value;
    const Numbers::Real number = Numbers::readReal(first, last);
    if (number.end == first || number.isOutOfRange)
        return {};
    return number.value;
}

template <class Char>
bool isNumberPart(Char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '+' || c == '-' ||
           c == '.' || c == '(' || c == ')' || c == '_';
}

// The end of all that could belong to a number at `p`, so that the whole text need not be measured.
template <class Char>
const Char* numberEnd(const Char* p)
{
    while (isNumberPart(*p))
        ++p;
    return p;
}

}

int atoi(const std::string& s)
{
    return saturated(s.data(), s.data() + s.size());
}

int atoi(const char* s)
{
    return s != nullptr ? saturated(s, nullptr) : 0;
}

long atol(const std::string& s)
{
    return atoi(s);
}

long atol(const char* s)
{
    return atoi(s);
}

double atof(const std::string& s)
{
    return Numbers::readReal(s.data(), s.data() + s.size()).value;
}

double atof(const char* s)
{
    if (s == nullptr)
        return 0.0;
    const char* const first = skipSpaces(s);
    return Numbers::readReal(first, numberEnd(first)).value;
}

mdt::Nullable<int> tryParseInt(const std::string& s)
{
    return parseSigned<int>(s.data(), s.data() + s.size());
}

mdt::Nullable<unsigned int> tryParseUInt(const std::string& s)
{
    const Numbers::Integer number = Numbers::readInteger(s.data(), s.data() + s.size());
    if (!number.hasDigits || number.magnitude > UnsignedMax)
        return {};
    return static_cast<unsigned int>(signedValue(number));
}

mdt::Nullable<long> tryParseLong(const std::string& s)
{
    return parseSigned<long>(s.data(), s.data() + s.size());
}

mdt::Nullable<double> tryParseDouble(const std::string& s)
{
    return parseReal(s.data(), s.data() + s.size());
}

mdt::Nullable<int> Unicode16::tryParseInt(const std::wstring& s)
{
    return parseSigned<int>(s.data(), s.data() + s.size());
}

mdt::Nullable<long> Unicode16::tryParseLong(const std::wstring& s)
{
    return parseSigned<long>(s.data(), s.data() + s.size());
}

mdt::Nullable<double> Unicode16::tryParseDouble(const std::wstring& s)
{
    // All that a number consists of is ASCII, so its part of the text can be narrowed unit by unit.
    const wchar_t* first = s.c_str();
    while (Numbers::isSpace(*first))
        ++first;
    const wchar_t* const last = numberEnd(first);
    std::string narrow;
    for (const wchar_t* p = first; p != last; ++p)
        narrow += static_cast<char>(*p);
    return parseReal(narrow.data(), narrow.data() + narrow.size());
}

}
