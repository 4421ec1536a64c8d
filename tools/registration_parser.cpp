#include "tools/registration_file.h"

#include "platform/registry_store.h"
#include "text/characters.h"
#include "text/conversion.h"
#include "text/utf8.h"

#include <algorithm>

namespace Tools::Registration {

namespace {

namespace Kind = Platform::ValueKind;

bool isBlank(wchar_t c)
{
    return c == L' ' || c == L'\t';
}

int hexDigit(wchar_t c)
{
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    return c >= L'A' && c <= L'F' ? c - L'A' + 10 : -1;
}

bool isTextKind(std::uint32_t type)
{
    return type == Kind::Text || type == Kind::ExpandText || type == Kind::MultiText;
}

bool isKnownKind(std::uint32_t type)
{
    return isTextKind(type) || type == Kind::Binary || type == Kind::Word;
}

// The units of little-endian UTF-16. An odd byte at the end is left out.
std::wstring readUtf16(std::string_view bytes)
{
    std::wstring text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        text += static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) |
                                     static_cast<unsigned char>(bytes[i + 1]) << 8);
    return text;
}

// False if the bytes are no UTF-8.
bool readUtf8(std::string_view bytes, std::wstring& text)
{
    text.clear();
    const char* p = bytes.data();
    const char* const end = p + bytes.size();
    while (p != end) {
        const char32_t point = Utf8::read(p, end);
        if (point == Utf8::Broken)
            return false;
        Utf8::appendUnits(text, point);
    }
    return true;
}

// The file's text as UTF-16 units, whatever it is encoded in.
std::wstring decode(std::string_view bytes)
{
    std::wstring text;
    if (bytes.starts_with("\xFF\xFE")) {
        if (bytes.size() % 2 != 0)
            throw Fault(1, "half a character at the end of the file");
        return readUtf16(bytes.substr(2));
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        if (!readUtf8(bytes.substr(3), text))
            throw Fault(1, "the file is marked as UTF-8 and is not");
        return text;
    }
    if (bytes.starts_with("Windows") && readUtf8(bytes, text))
        return text;
    return toWide(std::string(bytes));
}

// The grammar is one of lines: head, keys, values; only bytes go on in the next line after a
// backslash. So each parse function works on what is left of the current line, and each skip
// function is false, with nothing consumed, where something else is there.
class Parser {
public:
    explicit Parser(const std::wstring& text) : m_unread(text) {}

    Content parse();

private:
    [[noreturn]] void fail(const std::string& text) const { throw Fault(m_line, text); }

    bool nextLine();
    void skipBlanks();
    bool skip(wchar_t c);
    bool skip(std::wstring_view word);
    void expectEnd();

    void parseHead();
    void parseKey();
    void parseValue();
    void parseText(Change& change);
    void parseWord(Change& change);
    void parseBytes(Change& change);
    std::uint32_t parseType();
    std::uint32_t parseNumber(std::size_t maximumDigits);
    bool takeByte(std::string& bytes);
    std::wstring takeQuoted();
    std::string narrow(const std::wstring& text) const;

    // What follows the line, and what is left of it.
    std::wstring_view m_unread;
    std::wstring_view m_rest;
    std::size_t m_line = 0;
    bool m_isVersion5 = false;
    Content m_content;
};

Content Parser::parse()
{
    parseHead();
    while (nextLine()) {
        skipBlanks();
        if (m_rest.empty() || m_rest.front() == L';')
            continue;
        if (m_rest.front() == L'[')
            parseKey();
        else
            parseValue();
    }
    return std::move(m_content);
}

bool Parser::nextLine()
{
    if (m_unread.empty())
        return false;
    ++m_line;
    const std::size_t end = std::min(m_unread.find(L'\n'), m_unread.size());
    m_rest = m_unread.substr(0, end);
    m_unread.remove_prefix(std::min(end + 1, m_unread.size()));
    if (!m_rest.empty() && m_rest.back() == L'\r')
        m_rest.remove_suffix(1);
    if (m_rest.find(L'\0') != std::wstring_view::npos)
        fail("a zero character");
    return true;
}

void Parser::skipBlanks()
{
    while (!m_rest.empty() && isBlank(m_rest.front()))
        m_rest.remove_prefix(1);
}

bool Parser::skip(wchar_t c)
{
    if (m_rest.empty() || m_rest.front() != c)
        return false;
    m_rest.remove_prefix(1);
    return true;
}

bool Parser::skip(std::wstring_view word)
{
    if (!m_rest.starts_with(word))
        return false;
    m_rest.remove_prefix(word.size());
    return true;
}

void Parser::expectEnd()
{
    skipBlanks();
    if (!m_rest.empty() && m_rest.front() != L';')
        fail("unexpected text behind the end");
}

void Parser::parseHead()
{
    // What an empty file lacks is its first line.
    if (!nextLine())
        m_line = 1;
    m_isVersion5 = skip(L"Windows Registry Editor Version 5.00");
    if (!m_isVersion5 && !skip(L"REGEDIT4"))
        fail("not a registration file");
    expectEnd();
}

void Parser::parseKey()
{
    // A name may hold brackets.
    const std::size_t end = m_rest.rfind(L']');
    if (end == std::wstring_view::npos)
        fail("the bracket is not closed");
    std::wstring_view text = m_rest.substr(1, end - 1);
    m_rest.remove_prefix(end + 1);
    expectEnd();
    Change change;
    change.line = m_line;
    if (text.starts_with(L'-')) {
        change.kind = Change::Kind::RemoveKey;
        text.remove_prefix(1);
    }
    KeyPath path;
    if (!readKeyPath(narrow(std::wstring(text)), "\\", path))
        fail("no key can have this path");
    if (change.kind == Change::Kind::RemoveKey && path.names.empty())
        fail("a root cannot be removed");
    change.key = m_content.keys.size();
    m_content.keys.push_back(std::move(path));
    m_content.changes.push_back(std::move(change));
}

void Parser::parseValue()
{
    if (m_content.keys.empty())
        fail("a value before the first key");
    if (m_content.changes[m_content.changes.size() - 1].kind == Change::Kind::RemoveKey)
        fail("a value below a key that is removed");
    Change change;
    change.kind = Change::Kind::SetValue;
    change.line = m_line;
    change.key = m_content.keys.size() - 1;
    if (!skip(L'@'))
        change.name = narrow(takeQuoted());
    if (Characters::count(change.name.c_str()) > Platform::MaximumValueName)
        fail("the name is too long");
    skipBlanks();
    if (!skip(L'='))
        fail("\"=\" is missing");
    skipBlanks();
    if (skip(L'-'))
        change.kind = Change::Kind::RemoveValue;
    else if (!m_rest.empty() && m_rest.front() == L'"')
        parseText(change);
    else if (skip(L"dword:"))
        parseWord(change);
    else if (skip(L"hex"))
        parseBytes(change);
    else
        fail("neither a text nor \"dword:\" nor \"hex:\"");
    expectEnd();
    const bool isKnown = change.kind == Change::Kind::RemoveValue || isKnownKind(change.type);
    (isKnown ? m_content.changes : m_content.unknown).push_back(std::move(change));
}

void Parser::parseText(Change& change)
{
    change.type = Kind::Text;
    change.data = narrow(takeQuoted()) + '\0';
}

void Parser::parseWord(Change& change)
{
    change.type = Kind::Word;
    const std::uint32_t word = parseNumber(8);
    for (int shift = 0; shift < 32; shift += 8)
        change.data += static_cast<char>(word >> shift & 0xFF);
}

void Parser::parseBytes(Change& change)
{
    change.type = parseType();
    if (!skip(L':'))
        fail("\":\" is missing");
    while (takeByte(change.data)) {
    }
    if (!isTextKind(change.type))
        return;
    if (m_isVersion5 && change.data.size() % 2 != 0)
        fail("half a character at the end of a text");
    if (m_isVersion5)
        change.data = narrow(readUtf16(change.data));
    // Windows itself stores no text without an end.
    if (!change.data.empty() && change.data.back() != '\0')
        change.data += '\0';
}

// Without a number in parentheses the bytes are just that.
std::uint32_t Parser::parseType()
{
    if (!skip(L'('))
        return Kind::Binary;
    const std::uint32_t type = parseNumber(8);
    if (!skip(L')'))
        fail("\")\" is missing");
    return type;
}

std::uint32_t Parser::parseNumber(std::size_t maximumDigits)
{
    std::uint32_t number = 0;
    std::size_t count = 0;
    for (; !m_rest.empty() && hexDigit(m_rest.front()) >= 0; ++count) {
        number = number << 4 | static_cast<std::uint32_t>(hexDigit(m_rest.front()));
        m_rest.remove_prefix(1);
    }
    if (count == 0 || count > maximumDigits)
        fail("not a hexadecimal number of up to " + std::to_string(maximumDigits) + " digits");
    return number;
}

// The next byte and the comma after it, maybe in the next line. False if nothing follows.
bool Parser::takeByte(std::string& bytes)
{
    skipBlanks();
    while (skip(L'\\')) {
        skipBlanks();
        if (!m_rest.empty())
            fail("unexpected text behind the end");
        if (!nextLine())
            fail("the next line is missing");
        skipBlanks();
    }
    if (bytes.empty() && (m_rest.empty() || m_rest.front() == L';'))
        return false;
    bytes += static_cast<char>(parseNumber(2));
    skipBlanks();
    return skip(L',');
}

std::wstring Parser::takeQuoted()
{
    if (!skip(L'"'))
        fail("a quote is missing");
    std::wstring text;
    while (!skip(L'"')) {
        // A backslash precedes a quote or another backslash that belongs to the text.
        skip(L'\\');
        if (m_rest.empty())
            fail("the quote is not closed");
        text += m_rest.front();
        m_rest.remove_prefix(1);
    }
    return text;
}

std::string Parser::narrow(const std::wstring& text) const
{
    std::string narrowed = toNarrow(text);
    if (toWide(narrowed) != text)
        fail("a character that the code page lacks");
    return narrowed;
}

}

Content parse(const std::string& bytes)
{
    const std::wstring text = decode(bytes);
    return Parser(text).parse();
}

}
