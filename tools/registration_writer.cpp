#include "tools/registration_file.h"

#include "platform/registry_store.h"
#include "text/conversion.h"

#include <algorithm>

namespace Tools::Registration {

namespace {

namespace Kind = Platform::ValueKind;

constexpr std::size_t LineWidth = 80;
constexpr const wchar_t* LineEnd = L"\r\n";

bool isControl(wchar_t c)
{
    return c < L' ';
}

bool canBeQuoted(const std::wstring& text)
{
    return std::none_of(text.begin(), text.end(), isControl);
}

// Other escapes than these two there are none, so control characters go as bytes.
std::wstring quote(const std::wstring& text)
{
    std::wstring quoted = L"\"";
    for (const wchar_t c : text) {
        if (c == L'"' || c == L'\\')
            quoted += L'\\';
        quoted += c;
    }
    return quoted + L'"';
}

std::wstring hex(std::uint32_t number, int digits)
{
    std::wstring text;
    while (--digits >= 0)
        text += L"0123456789abcdef"[number >> 4 * digits & 0xF];
    return text;
}

// The units of a text as bytes, low ones first.
std::string toUtf16Bytes(const std::wstring& text)
{
    std::string bytes;
    bytes.reserve(2 * text.size());
    for (const wchar_t c : text) {
        bytes += static_cast<char>(c & 0xFF);
        bytes += static_cast<char>(c >> 8 & 0xFF);
    }
    return bytes;
}

// The type in the shortest form, as registry editors write it.
std::wstring hexHead(std::uint32_t type)
{
    if (type == Kind::Binary)
        return L"hex:";
    std::wstring number = hex(type, 8);
    number.erase(0, std::min(number.find_first_not_of(L'0'), number.size() - 1));
    return L"hex(" + number + L"):";
}

// Appends the bytes to the line, and breaks it where it would become too wide.
void appendBytes(std::wstring& text, std::size_t width, const std::string& bytes, bool isFolded)
{
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        text += hex(static_cast<unsigned char>(bytes[i]), 2);
        width += 3;
        if (i + 1 == bytes.size())
            return;
        text += L',';
        // Another byte, its comma and the backslash must find room.
        if (isFolded && width + 4 > LineWidth) {
            text.append(L"\\").append(LineEnd).append(L"  ");
            width = 2;
        }
    }
}

// A text that ends in its NUL and holds no control character is written for people, others as
// bytes.
bool isQuotedText(std::uint32_t type, const std::wstring& data)
{
    return type == Kind::Text && !data.empty() && data.back() == L'\0' &&
           canBeQuoted(data.substr(0, data.size() - 1));
}

// Little-endian, as it is stored.
std::uint32_t readWord(const std::string& data)
{
    std::uint32_t word = 0;
    for (std::size_t i = data.size(); i-- > 0;)
        word = word << 8 | static_cast<unsigned char>(data[i]);
    return word;
}

bool isTextKind(std::uint32_t type)
{
    return type == Kind::Text || type == Kind::ExpandText || type == Kind::MultiText;
}

// The line of a value, in lines where it is long; empty if the format cannot hold it.
std::wstring composeValue(const std::string& name, std::uint32_t type, const std::string& data,
                          Format format, bool isFolded)
{
    const std::wstring wideName = toWide(name);
    const std::wstring wideData = isTextKind(type) ? toWide(data) : std::wstring();
    std::wstring line = (name.empty() ? std::wstring(L"@") : quote(wideName)) + L"=";
    if (isQuotedText(type, wideData))
        return line + quote(wideData.substr(0, wideData.size() - 1));
    if (type == Kind::Word && data.size() == 4)
        return line + L"dword:" + hex(readWord(data), 8);
    line += hexHead(type);
    const bool isWide = format == Format::Version5 && isTextKind(type);
    appendBytes(line, line.size(), isWide ? toUtf16Bytes(wideData) : data, isFolded);
    return line;
}

// The way through UTF-16, which a file takes, gives the very text back.
bool survives(const std::string& text)
{
    return toNarrow(toWide(text)) == text;
}

}

std::string describeValue(const std::string& name, std::uint32_t type, const std::string& data)
{
    return toNarrow(composeValue(name, type, data, Format::Regedit4, false));
}

Writer::Writer(Format format)
    : m_format(format),
      m_text(format == Format::Version5 ? L"Windows Registry Editor Version 5.00" : L"REGEDIT4")
{
    m_text += LineEnd;
}

bool Writer::addKey(const KeyPath& path)
{
    const std::string text = path.text();
    const std::wstring wide = toWide(text);
    KeyPath readBack;
    if (!canBeQuoted(wide) || !survives(text) || !readKeyPath(text, "\\", readBack))
        return false;
    m_text.append(LineEnd).append(L"[").append(wide).append(L"]").append(LineEnd);
    return true;
}

bool Writer::addValue(const std::string& name, std::uint32_t type, const std::string& data)
{
    const bool isKnown = isTextKind(type) || type == Kind::Binary || type == Kind::Word;
    if (!isKnown || !canBeQuoted(toWide(name)) || !survives(name) ||
        (isTextKind(type) && !survives(data)))
        return false;
    m_text.append(composeValue(name, type, data, m_format, true)).append(LineEnd);
    return true;
}

std::string Writer::take()
{
    m_text += LineEnd;
    return m_format == Format::Version5 ? "\xFF\xFE" + toUtf16Bytes(m_text) : toNarrow(m_text);
}

}
