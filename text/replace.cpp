#include "text/character_set.h"
#include "text/code_page.h"
#include "text/search.h"

#include <mdtools/strings.h>

namespace Tools {

namespace {

using ExactSearch = Search<Comparing::Exact>;

}

bool containsAny(const std::string& s, const std::string& chars, bool caseSensitive)
{
    const CodePage& page = CodePage::get();
    const CharacterSet set(page, chars);
    const std::string text = caseSensitive ? s : toLower(s);
    const char* const end = text.data() + text.size();
    for (const char* p = text.data(); p < end;) {
        const std::size_t bytes = page.length(p, end);
        if (set.contains(p, bytes))
            return true;
        p += bytes;
    }
    return false;
}

std::string replaceAll(const std::string& s, const std::string& from, const std::string& to)
{
    if (from.empty())
        return s;
    ExactSearch search(s, from, ExactSearch::By::Character);
    std::string result;
    std::size_t copied = 0;
    for (std::size_t found = search.next(0); found != ExactSearch::None;
         found = search.next(copied)) {
        result.append(s, copied, found - copied).append(to);
        copied = found + from.size();
    }
    return result.append(s, copied);
}

std::string replaceLast(const std::string& s, const std::string& from, const std::string& to)
{
    if (from.empty())
        return s;
    ExactSearch search(s, from, ExactSearch::By::Character);
    const std::size_t found = search.last();
    std::string result = s;
    return found == ExactSearch::None ? result : result.replace(found, from.size(), to);
}

std::string replaceAny(const std::string& s, const std::string& chars, char c)
{
    const CodePage& page = CodePage::get();
    const CharacterSet set(page, chars);
    std::string result;
    result.reserve(s.size());
    const char* const end = s.data() + s.size();
    for (const char* p = s.data(); p < end;) {
        const std::size_t bytes = page.length(p, end);
        if (set.contains(p, bytes))
            result += c;
        else
            result.append(p, bytes);
        p += bytes;
    }
    return result;
}

}
