#include "text/utf8.h"

namespace Tools::Utf8 {

// Only the second byte needs a range of its own: it decides whether a sequence is overlong, a
// surrogate half, or too large.
char32_t read(const char*& p, const char* end)
{
    const auto first = static_cast<unsigned char>(*p++);
    if (first < 0x80)
        return first;
    if (first < 0xC2 || first > 0xF4)
        return Broken;
    const int more = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    // The range of the second byte; all others have the full one.
    unsigned low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    unsigned high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    char32_t point = first & (0x3FU >> more);
    for (int i = 0; i < more; ++i) {
        const unsigned byte = p != end ? static_cast<unsigned char>(*p) : 0;
        if (byte < low || byte > high)
            return Broken;
        point = point << 6 | (byte & 0x3F);
        ++p;
        low = 0x80;
        high = 0xBF;
    }
    return point;
}

// The first byte has as many high bits as there are bytes; each further byte holds six bits.
void append(std::string& text, char32_t point)
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

void appendUnits(std::wstring& wide, char32_t point)
{
    if (point > 0xFFFF) {
        wide += static_cast<wchar_t>(0xD800 + ((point - 0x10000) >> 10));
        point = 0xDC00 + ((point - 0x10000) & 0x3FF);
    }
    wide += static_cast<wchar_t>(point);
}

}
