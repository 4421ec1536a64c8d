#include "text/code_page.h"

#include "platform/codepage.h"
#include "text/unicode_case.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <string>

namespace Tools {

namespace {

// The unit's character in the page, 0 if the page lacks it. A look-alike that the system offers
// instead does not come back as the same unit.
std::uint16_t characterOf(char16_t unit)
{
    const auto wide = static_cast<wchar_t>(unit);
    const std::string text = Platform::wideToCodePage(&wide, 1);
    if (text.empty() || text.size() > 2 ||
        Platform::codePageToWide(text.data(), text.size()) != std::wstring(1, wide))
        return 0;
    const auto first = static_cast<unsigned char>(text.front());
    const auto last = static_cast<unsigned char>(text.back());
    return text.size() == 1 ? first : static_cast<std::uint16_t>(first << 8 | last);
}

// Both letters must be in the page, in as many bytes.
void setPartner(CodePage::CaseMap& map, char16_t from, char16_t to)
{
    if (from == to)
        return;
    const std::uint16_t character = characterOf(from);
    const std::uint16_t partner = characterOf(to);
    if (character == 0 || partner == 0 || (character > 0xFF) != (partner > 0xFF))
        return;
    if (character <= 0xFF)
        map.singles[character] = static_cast<unsigned char>(partner);
    else if (!map.pairs.empty())
        map.pairs[character] = partner;
}

}

constinit ProcessObject<CodePage> CodePage::ms_page;

const CodePage& CodePage::provide()
{
    return ms_page.provide([] { return std::unique_ptr<CodePage>(new CodePage); },
                           [](Platform::LibraryEnd end) { ms_page.free(end); });
}

CodePage::CodePage()
{
    bool isLead[256];
    Platform::readLeadBytes(isLead);
    std::copy(std::begin(isLead), std::end(isLead), m_isLead.begin());
    m_hasLeadBytes = std::find(m_isLead.begin(), m_isLead.end(), true) != m_isLead.end();
    for (CaseMap* map : {&m_lower, &m_upper}) {
        std::iota(map->singles.begin(), map->singles.end(), static_cast<unsigned char>(0));
        if (m_hasLeadBytes) {
            map->pairs.resize(0x10000);
            std::iota(map->pairs.begin(), map->pairs.end(), static_cast<std::uint16_t>(0));
        }
    }
    readCase();
    m_hasPlainAscii = !m_hasLeadBytes;
    for (unsigned char c = 'A'; c <= 'Z'; ++c)
        m_hasPlainAscii = m_hasPlainAscii && m_lower.singles[c] == m_lower.singles[c + 0x20U];
}

void CodePage::changeCase(char* p, std::size_t size, const CaseMap& map) const
{
    if (!m_hasLeadBytes) {
        std::transform(p, p + size, p, [&map](char c) {
            return static_cast<char>(map.singles[static_cast<unsigned char>(c)]);
        });
        return;
    }
    for (const Character& character : characters({p, size})) {
        char* const to = p + (character.p - p);
        if (character.bytes == 1) {
            *to = static_cast<char>(map.singles[static_cast<unsigned char>(*to)]);
            continue;
        }
        const std::uint16_t pair = map.pairs[pairAt(to)];
        to[0] = static_cast<char>(pair >> 8);
        to[1] = static_cast<char>(pair & 0xFF);
    }
}

// A single-byte page is asked byte by byte; a double-byte one by the letters that Unicode knows,
// which are fewer than its characters.
void CodePage::readCase()
{
    if (!m_hasLeadBytes) {
        for (int byte = 0; byte < 256; ++byte) {
            const auto character = static_cast<char>(byte);
            const std::wstring wide = Platform::codePageToWide(&character, 1);
            if (wide.size() != 1)
                continue;
            const auto unit = static_cast<char16_t>(wide.front());
            setPartner(m_lower, unit, UnicodeCase::toLower(unit));
            setPartner(m_upper, unit, UnicodeCase::toUpper(unit));
        }
        return;
    }
    UnicodeCase::forEachLetter([this](char16_t upper, char16_t lower) {
        setPartner(m_lower, upper, lower);
        setPartner(m_upper, lower, UnicodeCase::toUpper(lower));
    });
}

}
