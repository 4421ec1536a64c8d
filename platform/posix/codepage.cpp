#include "platform/codepage.h"

#include "platform/environment.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <iconv.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Tools::Platform {

namespace {

constexpr char16_t Replacement = 0xFFFD;
constexpr char16_t PrivateUse = 0xF800;

// The upper half of the first 32 bytes above ASCII in page 1252, which must be there whatever iconv
// has installed. 0 marks the bytes that mean themselves.
constexpr char16_t Page1252[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                   0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// The first bytes of double-byte characters in the pages that have such, as the system that made
// the pages defines them. The second range may be empty.
struct DoubleBytePage {
    unsigned number;
    unsigned first, last;
    unsigned first2, last2;
    char16_t unknown;
};
constexpr DoubleBytePage DoubleBytePages[] = {{932, 0x81, 0x9F, 0xE0, 0xFC, 0x30FB},
                                              {936, 0x81, 0xFE, 1, 0, u'?'},
                                              {949, 0x81, 0xFE, 1, 0, u'?'},
                                              {950, 0x81, 0xFE, 1, 0, u'?'}};

// iconv from a page to UTF-16, one character at a time.
class Converter {
public:
    explicit Converter(unsigned page)
        : m_handle(::iconv_open("UTF-16LE", ("CP" + std::to_string(page)).c_str()))
    {}
    ~Converter()
    {
        if (valid())
            ::iconv_close(m_handle);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool valid() const { return m_handle != reinterpret_cast<iconv_t>(-1); }

    enum class Result { Unit, Unknown, Incomplete };

    // Pages with combining characters hold a letter back until the converter is flushed.
    Result convert(std::string_view character, char16_t& unit)
    {
        std::array<char, 2> in{};
        std::copy(character.begin(), character.end(), in.begin());
        std::array<unsigned char, 8> out{};
        char* from = in.data();
        char* to = reinterpret_cast<char*>(out.data());
        std::size_t inLeft = character.size();
        std::size_t outLeft = out.size();
        ::iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        const std::size_t status = ::iconv(m_handle, &from, &inLeft, &to, &outLeft);
        if (status == static_cast<std::size_t>(-1))
            return errno == EINVAL ? Result::Incomplete : Result::Unknown;
        ::iconv(m_handle, nullptr, nullptr, &to, &outLeft);
        if (outLeft != out.size() - 2)
            return Result::Unknown;
        unit = static_cast<char16_t>(out[0] | out[1] << 8);
        return Result::Unit;
    }

private:
    iconv_t m_handle;
};

// The page as tables: from bytes and from units. 0 in `narrow` is "not in the page", except for NUL
// itself; a value above 0xFF is a double-byte character, its first byte above.
class Page {
public:
    explicit Page(unsigned number) : m_narrow(0x10000)
    {
        if (number == 65001)
            m_isUtf8 = true;
        else if (!readDoubleBytePage(number) && !readSingleBytePage(number))
            setPage1252();
        if (!m_isUtf8)
            fillNarrow();
    }

    bool isUtf8() const { return m_isUtf8; }
    bool hasPairs() const { return !m_pairs.empty(); }
    bool isLead(unsigned char byte) const { return m_isLead[byte]; }
    char16_t single(unsigned char byte) const { return m_singles[byte]; }
    char16_t pair(unsigned char lead, unsigned char trail) const
    {
        return m_pairs[lead * 256U + trail];
    }
    // Stands for a pair that the page does not know.
    char16_t unknownPair() const { return m_unknownPair; }
    std::uint16_t narrow(char16_t unit) const { return m_narrow[unit]; }

private:
    bool readDoubleBytePage(unsigned number);
    bool readSingleBytePage(unsigned number);
    void setPage1252();
    bool readSingles(Converter& converter);
    void fillNarrow();

    bool m_isUtf8 = false;
    std::array<bool, 256> m_isLead{};
    // Bytes that the page leaves undefined mean themselves, or characters for private use where
    // they would else be letters.
    std::array<bool, 256> m_isUndefined{};
    std::array<char16_t, 256> m_singles{};
    std::vector<char16_t> m_pairs;
    char16_t m_unknownPair = 0;
    std::vector<std::uint16_t> m_narrow;
};

bool Page::readDoubleBytePage(unsigned number)
{
    const auto* const page =
        std::find_if(std::begin(DoubleBytePages), std::end(DoubleBytePages),
                     [number](const DoubleBytePage& p) { return p.number == number; });
    if (page == std::end(DoubleBytePages))
        return false;
    Converter converter(number);
    if (!converter.valid())
        return false;
    for (unsigned byte = 0; byte < 256; ++byte)
        m_isLead[byte] = (byte >= page->first && byte <= page->last) ||
                         (byte >= page->first2 && byte <= page->last2);
    readSingles(converter);
    m_unknownPair = page->unknown;
    m_pairs.assign(0x10000, page->unknown);
    for (unsigned code = 0x8000; code < 0x10000; ++code) {
        if (!m_isLead[code >> 8])
            continue;
        const char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code)};
        converter.convert(std::string_view(bytes, 2), m_pairs[code]);
    }
    return true;
}

bool Page::readSingleBytePage(unsigned number)
{
    if (number == 1252)
        return false;
    Converter converter(number);
    return converter.valid() && readSingles(converter);
}

// False if a byte that is no known first byte waits for another one.
bool Page::readSingles(Converter& converter)
{
    for (unsigned byte = 0; byte < 256; ++byte) {
        const char character = static_cast<char>(byte);
        m_singles[byte] = static_cast<char16_t>(byte);
        if (m_isLead[byte])
            continue;
        switch (converter.convert(std::string_view(&character, 1), m_singles[byte])) {
        case Converter::Result::Unit:
            break;
        case Converter::Result::Unknown:
            m_isUndefined[byte] = true;
            if (byte >= 0xA0)
                m_singles[byte] = static_cast<char16_t>(PrivateUse + byte);
            break;
        case Converter::Result::Incomplete:
            return false;
        }
    }
    return true;
}

void Page::setPage1252()
{
    m_isUndefined.fill(false);
    for (unsigned byte = 0; byte < 256; ++byte)
        m_singles[byte] = static_cast<char16_t>(byte);
    for (unsigned i = 0; i < 32; ++i) {
        if (Page1252[i] != 0)
            m_singles[0x80 + i] = Page1252[i];
    }
}

// Where two characters of the page mean the same unit the lower one is written, but for the rows
// and characters that pages 932 and 950 hold for old text only.
bool isForReadingOnly(std::size_t code)
{
    return code >> 8 == 0xED || code >> 8 == 0xEE || code == 0xA2CC || code == 0xA2CE;
}

void Page::fillNarrow()
{
    for (std::size_t code = m_pairs.size(); code-- > 0;) {
        if (!m_isLead[code >> 8] || m_pairs[code] == m_unknownPair)
            continue;
        std::uint16_t& narrow = m_narrow[m_pairs[code]];
        if (narrow == 0 || !isForReadingOnly(code))
            narrow = static_cast<std::uint16_t>(code);
    }
    for (const bool undefined : {true, false}) {
        for (unsigned byte = 256; byte-- > 0;) {
            if (!m_isLead[byte] && m_isUndefined[byte] == undefined)
                m_narrow[m_singles[byte]] = static_cast<std::uint16_t>(byte);
        }
    }
}

unsigned configuredPage()
{
    std::string digits;
    readVariable("MDTOOLS_CODEPAGE", digits);
    unsigned number = 0;
    for (const char c : digits) {
        if (c < '0' || c > '9' || number > 99999)
            return 1252;
        number = number * 10 + static_cast<unsigned>(c - '0');
    }
    return digits.empty() ? 1252 : number;
}

// Never destroyed: text is compared and converted until the very end of the process.
const Page& page()
{
    static const Page* const instance = new Page(configuredPage());
    return *instance;
}

void appendUnits(std::wstring& wide, char32_t point)
{
    if (point > 0xFFFF) {
        wide += static_cast<wchar_t>(0xD800 + ((point - 0x10000) >> 10));
        point = 0xDC00 + ((point - 0x10000) & 0x3FF);
    }
    wide += static_cast<wchar_t>(point);
}

// The code point at `p`, which is moved behind it. A broken sequence is one replacement character
// for its longest part that could have begun a good one.
char32_t readUtf8(const unsigned char*& p, const unsigned char* end)
{
    const unsigned char first = *p++;
    if (first < 0x80)
        return first;
    if (first < 0xC2 || first > 0xF4)
        return Replacement;
    const int more = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    unsigned char low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    unsigned char high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    char32_t point = first & (0x3F >> more);
    for (int i = 0; i < more; ++i) {
        if (p == end || *p < low || *p > high)
            return Replacement;
        point = point << 6 | (*p++ & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    return point;
}

void appendUtf8(std::string& text, char32_t point)
{
    if (point < 0x80) {
        text += static_cast<char>(point);
        return;
    }
    const int more = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
    const unsigned mark = 0xFF00U >> (more + 1);
    text += static_cast<char>((mark & 0xFF) | point >> (6 * more));
    for (int i = more; i-- > 0;)
        text += static_cast<char>(0x80 | (point >> (6 * i) & 0x3F));
}

// The code point at `p`, which is moved behind it. A program's own literal may hold whole code
// points in a wide wchar_t; halves of pairs become the replacement character.
char32_t readWide(const wchar_t*& p, const wchar_t* end)
{
    const auto unit = static_cast<char32_t>(*p++);
    if (unit < 0xD800 || (unit > 0xDFFF && unit <= 0x10FFFF))
        return unit;
    if (unit > 0xDBFF || p == end)
        return Replacement;
    const auto second = static_cast<char32_t>(*p);
    if (second < 0xDC00 || second > 0xDFFF)
        return Replacement;
    ++p;
    return 0x10000 + ((unit & 0x3FF) << 10) + (second & 0x3FF);
}

void appendNarrow(std::string& text, const Page& page, wchar_t unit)
{
    const auto point = static_cast<char32_t>(unit);
    if (point > 0xFFFF) {
        text += "??";
        return;
    }
    const std::uint16_t code = page.narrow(static_cast<char16_t>(point));
    if (code == 0 && point != 0) {
        text += '?';
        return;
    }
    if (code > 0xFF)
        text += static_cast<char>(code >> 8);
    text += static_cast<char>(code & 0xFF);
}

}

void readLeadBytes(bool (&isLead)[256])
{
    for (unsigned byte = 0; byte < 256; ++byte)
        isLead[byte] = page().isLead(static_cast<unsigned char>(byte));
}

bool isSingleBytePage()
{
    return !page().isUtf8() && !page().hasPairs();
}

std::wstring codePageToWide(const char* text, std::size_t size)
{
    const Page& current = page();
    std::wstring wide;
    wide.reserve(size);
    const auto* p = reinterpret_cast<const unsigned char*>(text);
    const unsigned char* const end = p + size;
    while (p != end) {
        if (current.isUtf8()) {
            appendUnits(wide, readUtf8(p, end));
        } else if (!current.isLead(*p)) {
            wide += static_cast<wchar_t>(current.single(*p++));
        } else if (end - p > 1 && p[1] != 0) {
            wide += static_cast<wchar_t>(current.pair(p[0], p[1]));
            p += 2;
        } else {
            // Half a character.
            wide += static_cast<wchar_t>(current.unknownPair());
            ++p;
        }
    }
    return wide;
}

std::string wideToCodePage(const wchar_t* text, std::size_t size)
{
    const Page& current = page();
    std::string narrow;
    narrow.reserve(size);
    const wchar_t* p = text;
    const wchar_t* const end = p + size;
    while (p != end) {
        if (current.isUtf8())
            appendUtf8(narrow, readWide(p, end));
        else
            appendNarrow(narrow, current, *p++);
    }
    return narrow;
}

}
