#include "text/byte_set.h"

#include <mdtools/constants.h>
#include <mdtools/encoding.h>
#include <mdtools/strings.h>

#include <algorithm>

namespace Tools {

std::vector<std::string> tokenize(const std::string& s, const std::string& delimiters)
{
    const ByteSet set(delimiters);
    std::vector<std::string> tokens;
    const char* const end = s.data() + s.size();
    for (const char* p = s.data(); p < end;) {
        while (p < end && set.contains(*p))
            ++p;
        const char* const first = p;
        while (p < end && !set.contains(*p))
            ++p;
        if (p != first)
            tokens.emplace_back(first, p);
    }
    return tokens;
}

std::vector<std::string> tokenize(const std::string& s, std::size_t maxLength)
{
    std::vector<std::string> lines;
    for (const std::string& word : tokenize(s, std::string(" \t"))) {
        if (!lines.empty() && lines.back().size() + word.size() < maxLength)
            lines.back().append(C::Blank).append(word);
        else
            lines.push_back(word);
    }
    return lines;
}

std::vector<std::wstring> Unicode16::tokenize(const std::wstring& s, const std::wstring& delimiters)
{
    std::wstring sorted = delimiters;
    std::sort(sorted.begin(), sorted.end());
    const auto isDelimiter = [&sorted](wchar_t unit) {
        return std::binary_search(sorted.begin(), sorted.end(), unit);
    };
    std::vector<std::wstring> tokens;
    for (auto p = s.begin();;) {
        const auto first = std::find_if_not(p, s.end(), isDelimiter);
        if (first == s.end())
            return tokens;
        p = std::find_if(first, s.end(), isDelimiter);
        tokens.emplace_back(first, p);
    }
}

}
