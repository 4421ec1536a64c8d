#include "text/characters.h"

#include "text/byte_set.h"
#include "text/code_page.h"

#include <algorithm>
#include <cstring>

namespace Tools::Characters {

namespace {

// Calls visitor(position) for every single-byte character from `from` on that is in the set, until
// it returns false. `from` begins a character.
template <class Visitor>
void visit(std::string_view text, std::size_t from, const ByteSet& set, Visitor visitor)
{
    const std::string_view rest = text.substr(std::min(from, text.size()));
    for (const Character& character : CodePage::get().characters(rest)) {
        if (character.bytes == 1 && set.contains(*character.p) &&
            !visitor(static_cast<std::size_t>(character.p - text.data())))
            return;
    }
}

}

std::size_t length(std::string_view text, std::size_t position)
{
    return CodePage::get().length(text.data() + position, text.data() + text.size());
}

std::size_t find(std::string_view text, char c, std::size_t from)
{
    if (!CodePage::get().hasLeadBytes())
        return text.find(c, from);
    return findAny(text, std::string_view(&c, 1), from);
}

std::size_t findLast(std::string_view text, char c)
{
    if (!CodePage::get().hasLeadBytes())
        return text.rfind(c);
    return findLastAny(text, std::string_view(&c, 1));
}

std::size_t findAny(std::string_view text, std::string_view chars, std::size_t from)
{
    std::size_t found = std::string_view::npos;
    visit(text, from, ByteSet(chars), [&found](std::size_t position) {
        found = position;
        return false;
    });
    return found;
}

// Where characters begin is only known from the front, so the last one is the last of all.
std::size_t findLastAny(std::string_view text, std::string_view chars)
{
    std::size_t found = std::string_view::npos;
    visit(text, 0, ByteSet(chars), [&found](std::size_t position) {
        found = position;
        return true;
    });
    return found;
}

bool endsWith(std::string_view text, char c)
{
    if (text.empty() || text.back() != c)
        return false;
    const auto asIs = [](char byte) { return static_cast<unsigned char>(byte); };
    return !CodePage::get().isSecondByte(text.data(), text.size() - 1, asIs);
}

// Both are single-byte characters, so that no character changes its size.
void replace(std::string& text, char from, char to)
{
    if (!CodePage::get().hasLeadBytes()) {
        std::replace(text.begin(), text.end(), from, to);
        return;
    }
    visit(text, 0, ByteSet(std::string_view(&from, 1)), [&text, to](std::size_t position) {
        text[position] = to;
        return true;
    });
}

// Not the walk of CodePage: here a first byte whose second one is missing is no character.
std::size_t count(const char* text)
{
    const CodePage& page = CodePage::get();
    if (!page.hasLeadBytes())
        return std::strlen(text);
    std::size_t characters = 0;
    for (; *text != '\0'; ++text) {
        if (page.leadBytes()[static_cast<unsigned char>(*text)] && *++text == '\0')
            break;
        ++characters;
    }
    return characters;
}

}
