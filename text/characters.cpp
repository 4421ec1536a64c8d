#include "text/characters.h"

#include "text/byte_set.h"
#include "text/code_page.h"

#include <algorithm>
#include <cstring>

namespace Tools::Characters {

namespace {

// Calls visitor(position) for every single-byte character at or behind `from` that is in the set,
// until it returns false. `from` begins a character.
template <class Visitor>
void visit(std::string_view text, std::size_t from, const ByteSet& set, Visitor visitor)
{
    const CodePage& page = CodePage::get();
    const char* const end = text.data() + text.size();
    for (const char* p = text.data() + std::min(from, text.size()); p < end;) {
        const std::size_t bytes = page.length(p, end);
        if (bytes == 1 && set.contains(*p) && !visitor(static_cast<std::size_t>(p - text.data())))
            return;
        p += bytes;
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
    const CodePage& page = CodePage::get();
    if (!page.hasLeadBytes())
        return true;
    // A byte that cannot be a first one ends a character: those directly before the last byte tell
    // whether they are all paired.
    std::size_t leads = 0;
    while (leads + 1 < text.size() &&
           page.leadBytes()[static_cast<unsigned char>(text[text.size() - 2 - leads])])
        ++leads;
    return leads % 2 == 0;
}

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
