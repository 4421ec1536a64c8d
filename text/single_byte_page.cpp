#include "text/single_byte_page.h"

#include "platform/codepage.h"

#include <algorithm>
#include <bit>
#include <numeric>

namespace Tools {

namespace {

// A block of bytes as units of two or four bytes.
void storeUnits(wchar_t* to, ByteBlock block)
{
    const __m128i bytes = block.bits();
    const __m128i zero = _mm_setzero_si128();
    const __m128i halves[] = {_mm_unpacklo_epi8(bytes, zero), _mm_unpackhi_epi8(bytes, zero)};
    auto* out = reinterpret_cast<__m128i*>(to);
    for (const __m128i half : halves) {
        if constexpr (sizeof(wchar_t) == 2) {
            _mm_storeu_si128(out++, half);
        } else {
            _mm_storeu_si128(out++, _mm_unpacklo_epi16(half, zero));
            _mm_storeu_si128(out++, _mm_unpackhi_epi16(half, zero));
        }
    }
}

// Eight units as 16 bits each. Units beyond 16 bits become some that are beyond eight.
__m128i loadUnits(const wchar_t* p)
{
    const auto* in = reinterpret_cast<const __m128i*>(p);
    if constexpr (sizeof(wchar_t) == 2)
        return _mm_loadu_si128(in);
    else
        return _mm_packs_epi32(_mm_loadu_si128(in), _mm_loadu_si128(in + 1));
}

__m128i isBeyond8Bits(__m128i units)
{
    return _mm_xor_si128(_mm_cmpeq_epi16(_mm_srli_epi16(units, 8), _mm_setzero_si128()),
                         _mm_set1_epi8(-1));
}

// Which bytes of a block are another number as units; Latin pages differ from 0x80 to 0x9F only.
ByteBlock::Mask unequalBytes(ByteBlock bytes, bool isLatin)
{
    if (isLatin)
        bytes = bytes.isInRange(0x80, 0x9F);
    return bytes.mask();
}

}

constinit ProcessObject<SingleBytePage::Answer> SingleBytePage::ms_answer;

const SingleBytePage::Answer& SingleBytePage::provide()
{
    const auto find = [] {
        return std::make_unique<Answer>(Platform::isSingleBytePage() ? make() : nullptr);
    };
    return ms_answer.provide(find, [](Platform::LibraryEnd end) { ms_answer.free(end); });
}

// Null if the system's conversion is not one to one after all.
std::unique_ptr<SingleBytePage> SingleBytePage::make()
{
    std::unique_ptr<SingleBytePage> page(new SingleBytePage);
    std::string bytes(256, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    const std::wstring wide = Platform::codePageToWide(bytes.data(), bytes.size());
    if (wide.size() != bytes.size() || !page->fillNarrow(0, 0xD7FF) ||
        !page->fillNarrow(0xE000, 0xFFFF))
        return nullptr;
    std::copy(wide.begin(), wide.end(), page->m_wide.begin());
    // Each half of a surrogate pair is converted by itself.
    const wchar_t half = 0xD800;
    const std::string replacement = Platform::wideToCodePage(&half, 1);
    std::fill(page->m_narrow.begin() + 0xD800, page->m_narrow.begin() + 0xE000,
              replacement.size() == 1 ? replacement.front() : '?');
    bool isAscii = true;
    page->m_isLatin = true;
    for (std::size_t byte = 0; byte < 256; ++byte) {
        const bool isSame = page->m_wide[byte] == static_cast<wchar_t>(byte);
        isAscii = isAscii && (isSame || byte >= 0x80);
        page->m_isLatin = page->m_isLatin && (isSame || byte < 0xA0);
    }
    return isAscii ? std::move(page) : nullptr;
}

// False if some unit is not one byte.
bool SingleBytePage::fillNarrow(unsigned first, unsigned last)
{
    std::wstring units(last - first + 1, L'\0');
    std::iota(units.begin(), units.end(), static_cast<wchar_t>(first));
    const std::string bytes = Platform::wideToCodePage(units.data(), units.size());
    if (bytes.size() != units.size())
        return false;
    std::copy(bytes.begin(), bytes.end(), m_narrow.begin() + first);
    return true;
}

// By way of a small buffer that stays in the cache: a result of full size would first be filled
// with zeros, and it is large.
std::wstring SingleBytePage::toWide(std::string_view text) const
{
    constexpr std::size_t PieceSize = 512;
    wchar_t units[PieceSize];
    std::wstring wide;
    wide.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); i += PieceSize) {
        const std::string_view piece = text.substr(i, PieceSize);
        widen(piece, units);
        wide.append(units, piece.size());
    }
    return wide;
}

// Most bytes are their own units: a block is widened as if all were, and the others are set right.
void SingleBytePage::widen(std::string_view text, wchar_t* wide) const
{
    const auto unitOf = [this](char c) { return m_wide[static_cast<unsigned char>(c)]; };
    // What is written may be anything to the compiler, also the member.
    const bool isLatin = m_isLatin;
    std::size_t i = 0;
    for (; i + ByteBlock::Size <= text.size(); i += ByteBlock::Size) {
        const char* const p = text.data() + i;
        const ByteBlock bytes = ByteBlock::load(p);
        storeUnits(wide + i, bytes);
        ByteBlock::Mask others = unequalBytes(bytes, isLatin);
        if (others != 0 && !isLatin) {
            std::transform(p, p + ByteBlock::Size, wide + i, unitOf);
            continue;
        }
        for (; others != 0; others &= others - 1) {
            const auto k = static_cast<std::size_t>(std::countr_zero(others));
            wide[i + k] = unitOf(p[k]);
        }
    }
    std::transform(text.begin() + static_cast<std::ptrdiff_t>(i), text.end(), wide + i, unitOf);
}

std::string SingleBytePage::toNarrow(std::wstring_view text) const
{
    std::string result(text.size(), '\0');
    const std::size_t done = narrow(text, result.data());
    if (done < text.size()) {
        result.resize(done);
        result += Platform::wideToCodePage(text.data() + done, text.size() - done);
    }
    return result;
}

// As `widen`: whole blocks are narrowed, and units that are no byte of the same number are set
// right. Returns the number of units converted: up to the first one that is wider than 16 bits.
std::size_t SingleBytePage::narrow(std::wstring_view text, char* narrow) const
{
    const bool isLatin = m_isLatin;
    std::size_t i = 0;
    for (; i + ByteBlock::Size <= text.size(); i += ByteBlock::Size) {
        const wchar_t* const p = text.data() + i;
        const __m128i low = loadUnits(p);
        const __m128i high = loadUnits(p + 8);
        const ByteBlock bytes(_mm_packus_epi16(low, high));
        bytes.store(narrow + i);
        const ByteBlock beyond(_mm_packs_epi16(isBeyond8Bits(low), isBeyond8Bits(high)));
        ByteBlock::Mask others = unequalBytes(bytes, isLatin) | beyond.mask();
        for (; others != 0; others &= others - 1) {
            const auto k = static_cast<std::size_t>(std::countr_zero(others));
            if (!narrowUnit(p[k], narrow[i + k]))
                return i + k;
        }
    }
    while (i < text.size() && narrowUnit(text[i], narrow[i]))
        ++i;
    return i;
}

bool SingleBytePage::narrowUnit(wchar_t unit, char& byte) const
{
    const auto index = static_cast<char32_t>(unit);
    if (index >= m_narrow.size())
        return false;
    byte = m_narrow[index];
    return true;
}

}
