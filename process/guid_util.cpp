#include <mdtools/guid_util.h>

#include "platform/guid.h"

#include <cstdint>
#include <string_view>

namespace Tools {

namespace {

constexpr std::string_view Pattern = "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";

void appendHex(std::string& text, std::uint32_t value, int digits)
{
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += "0123456789ABCDEF"[value >> shift & 0xF];
}

// -1 for everything but upper-case digits.
int toDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

bool matches(std::string_view text)
{
    if (text.size() != Pattern.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool fits = Pattern[i] == 'X' ? toDigit(text[i]) >= 0 : text[i] == Pattern[i];
        if (!fits)
            return false;
    }
    return true;
}

std::uint32_t readHex(std::string_view digits)
{
    std::uint32_t value = 0;
    for (const char c : digits)
        value = value << 4 | static_cast<std::uint32_t>(toDigit(c));
    return value;
}

}

Guid GuidUtil::create()
{
    return Platform::createGuid();
}

// The last field is eight single bytes with a hyphen after two of them.
std::string GuidUtil::write(const Guid& guid)
{
    std::string text = "{";
    appendHex(text, guid.Data1, 8);
    text += '-';
    appendHex(text, guid.Data2, 4);
    text += '-';
    appendHex(text, guid.Data3, 4);
    text += '-';
    for (int i = 0; i < 8; ++i) {
        appendHex(text, guid.Data4[i], 2);
        if (i == 1)
            text += '-';
    }
    return text + "}";
}

mdt::Nullable<Guid> GuidUtil::read(const std::string& text)
{
    if (!matches(text))
        return {};
    const std::string_view digits = text;
    Guid guid = {};
    guid.Data1 = readHex(digits.substr(1, 8));
    guid.Data2 = static_cast<std::uint16_t>(readHex(digits.substr(10, 4)));
    guid.Data3 = static_cast<std::uint16_t>(readHex(digits.substr(15, 4)));
    for (std::size_t i = 0; i < 8; ++i) {
        // A hyphen lies between the second and the third byte.
        const std::size_t start = (i < 2 ? 20 : 21) + 2 * i;
        guid.Data4[i] = static_cast<unsigned char>(readHex(digits.substr(start, 2)));
    }
    return guid;
}

}
