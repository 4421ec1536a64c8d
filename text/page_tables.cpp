#include "platform/codepage.h"

#include "platform/environment.h"
#include "platform/lifetime.h"
#include "platform/page_decoder.h"
#include "text/page_differences.h"
#include "text/utf8.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The process's code page where the system has none: tables that are filled on first use and never
// changed, because text is compared and converted until the very end of the process. What iconv
// knows is put right where the pages of Windows differ, so that narrow text is the same there.
namespace Tools::Platform {

namespace {

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

constexpr unsigned Utf8Page = 65001;

// Page 720, which iconv lacks, is page 1252 with differences.
bool needsDecoder(unsigned number)
{
    return number != 1252 && number != 720 && number != Utf8Page;
}

// A code page as tables: from bytes and from units. 0 in `narrow` is "not in the page", except for
// NUL itself; a value above 0xFF is a double-byte character, its first byte above.
class Page {
public:
    explicit Page(unsigned number) : m_narrow(0x10000)
    {
        if (number == Utf8Page) {
            m_isUtf8 = true;
            return;
        }
        if (!readDoubleBytePage(number) && !readSingleBytePage(number)) {
            setPage1252();
            number = needsDecoder(number) ? 1252 : number;
        }
        apply(PageDifference::Read, number);
        fillNarrow();
        apply(PageDifference::Write, number);
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
    bool readSingles(PageDecoder& decoder);
    void fillNarrow();
    void apply(PageDifference::Kind kind, unsigned number);

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
    PageDecoder decoder(number);
    if (!decoder.isKnown())
        return false;
    for (unsigned byte = 0; byte < 256; ++byte)
        m_isLead[byte] = (byte >= page->first && byte <= page->last) ||
                         (byte >= page->first2 && byte <= page->last2);
    readSingles(decoder);
    m_unknownPair = page->unknown;
    m_pairs.assign(0x10000, page->unknown);
    for (unsigned code = 0x8000; code < 0x10000; ++code) {
        if (!m_isLead[code >> 8])
            continue;
        const char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code)};
        decoder.decode(std::string_view(bytes, 2), m_pairs[code]);
    }
    return true;
}

bool Page::readSingleBytePage(unsigned number)
{
    if (!needsDecoder(number))
        return false;
    PageDecoder decoder(number);
    return decoder.isKnown() && readSingles(decoder);
}

// False if a byte that is no known first byte waits for another one.
bool Page::readSingles(PageDecoder& decoder)
{
    for (unsigned byte = 0; byte < 256; ++byte) {
        const char character = static_cast<char>(byte);
        m_singles[byte] = static_cast<char16_t>(byte);
        if (m_isLead[byte])
            continue;
        switch (decoder.decode(std::string_view(&character, 1), m_singles[byte])) {
        case PageDecoder::Result::Unit:
            break;
        case PageDecoder::Result::Unknown:
            m_isUndefined[byte] = true;
            if (byte >= 0xA0)
                m_singles[byte] = static_cast<char16_t>(PrivateUse + byte);
            break;
        case PageDecoder::Result::Incomplete:
            return false;
        }
    }
    return true;
}

// The bytes above 0x9F are Latin-1.
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

// From the highest character down, so that of several with one unit the lowest is what stays;
// single bytes come last and win over pairs, defined ones over undefined ones.
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

// What the system that made the pages has otherwise.
void Page::apply(PageDifference::Kind kind, unsigned number)
{
    const int index = PageDifferences::indexOf(number);
    if (index < 0)
        return;
    for (const PageDifference* row = PageDifferences::begin(); row != PageDifferences::end();
         ++row) {
        if (row->kind != kind || (row->pages >> index & 1) == 0)
            continue;
        for (unsigned i = 0; i < row->count; ++i) {
            const auto unit = static_cast<char16_t>(row->unit + i * row->unitStep);
            const auto code = static_cast<std::uint16_t>(row->code + i * row->codeStep);
            if (kind == PageDifference::Write)
                m_narrow[unit] = code;
            else
                (code > 0xFF ? m_pairs[code] : m_singles[code]) = unit;
        }
    }
}

// Anything but a number means 1252, as a page does that iconv does not know.
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

// The page's tables. The others are made of these (ProcessObject), so that these are freed last.
std::atomic<const Page*> s_page{nullptr};
std::atomic<const Page*> s_standIn{nullptr};

void freePages(LibraryEnd end)
{
    if (end != LibraryEnd::Unloading)
        return;
    delete s_page.exchange(nullptr);
    delete s_standIn.exchange(nullptr);
}

const Page& keep(std::atomic<const Page*>& target, std::unique_ptr<const Page> made)
{
    const Page* before = nullptr;
    if (!target.compare_exchange_strong(before, made.get()))
        return *before;
    const Page& result = *made.release();
    onLibraryEnd(freePages);
    return result;
}

// Nothing is remembered of a failure that is none of the page.
const Page& makePage()
{
    const unsigned number = configuredPage();
    if (!needsDecoder(number) || PageDecoder::canLook()) {
        auto page = std::make_unique<const Page>(number);
        if (!needsDecoder(number) || PageDecoder::canLook())
            return keep(s_page, std::move(page));
    }
    const Page* const standIn = s_standIn.load(std::memory_order_acquire);
    return standIn != nullptr ? *standIn : keep(s_standIn, std::make_unique<const Page>(1252U));
}

const Page& page()
{
    const Page* const made = s_page.load(std::memory_order_acquire);
    return made != nullptr ? *made : makePage();
}

// The code point at `p`, which is moved to what follows. A program's own literal may hold whole
// code points in a wide wchar_t; halves of pairs become the replacement character.
char32_t readWide(const wchar_t*& p, const wchar_t* end)
{
    const auto unit = static_cast<char32_t>(*p++);
    if (unit < 0xD800 || (unit > 0xDFFF && unit <= 0x10FFFF))
        return unit;
    if (unit > 0xDBFF || p == end)
        return Utf8::Replacement;
    const auto second = static_cast<char32_t>(*p);
    if (second < 0xDC00 || second > 0xDFFF)
        return Utf8::Replacement;
    ++p;
    return 0x10000 + ((unit & 0x3FF) << 10) + (second & 0x3FF);
}

// What the page lacks becomes "?", one for each UTF-16 unit.
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

bool isCodePageKnown()
{
    return &page() == s_page.load(std::memory_order_acquire);
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
    const char* p = text;
    const char* const end = p + size;
    while (p != end) {
        const auto byte = static_cast<unsigned char>(*p);
        if (current.isUtf8()) {
            const char32_t point = Utf8::read(p, end);
            Utf8::appendUnits(wide, point != Utf8::Broken ? point : Utf8::Replacement);
        } else if (!current.isLead(byte)) {
            wide += static_cast<wchar_t>(current.single(byte));
            ++p;
        } else if (end - p > 1 && p[1] != '\0') {
            wide += static_cast<wchar_t>(current.pair(byte, static_cast<unsigned char>(p[1])));
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
            Utf8::append(narrow, readWide(p, end));
        else
            appendNarrow(narrow, current, *p++);
    }
    return narrow;
}

}
