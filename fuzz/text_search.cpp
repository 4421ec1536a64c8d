#include "text/characters.h"

#include <mdtools/encoding.h>
#include <mdtools/strings.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>

// Holds comparison, search and replacement against their rules taken literally. Run it with
// MDTOOLS_CODEPAGE=932 for double-byte text, too. The input is two texts, parted by the first line
// feed.
namespace {

void check(bool condition)
{
    if (!condition)
        std::abort();
}

int sign(int value)
{
    return value < 0 ? -1 : static_cast<int>(value > 0);
}

bool isLead(char c)
{
    const char pair[] = {c, 'x'};
    return Tools::Characters::length(std::string_view(pair, 2), 0) == 2;
}

// The characters of a C text as numbers; half a one at the end is none.
std::vector<unsigned> charactersOf(const std::string& text)
{
    std::vector<unsigned> characters;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned character = static_cast<unsigned char>(text[i]);
        if (isLead(text[i])) {
            if (++i == text.size())
                break;
            character = character << 8 | static_cast<unsigned char>(text[i]);
        }
        characters.push_back(character);
    }
    return characters;
}

int orderLiterally(const std::string& a, const std::string& b)
{
    const std::vector<unsigned> first = charactersOf(a);
    const std::vector<unsigned> second = charactersOf(b);
    return first < second ? -1 : static_cast<int>(second < first);
}

std::size_t findLiterally(const std::string& text, const std::string& sought, std::size_t from)
{
    for (std::size_t i = 0; i + sought.size() <= text.size();) {
        if (i >= from && text.compare(i, sought.size(), sought) == 0)
            return i;
        i += i < text.size() ? Tools::Characters::length(text, i) : 1;
    }
    return std::string::npos;
}

void checkComparison(const std::string& a, const std::string& b)
{
    std::string lowerA = a;
    std::string lowerB = b;
    Tools::strlwr(lowerA);
    Tools::strlwr(lowerB);
    check(sign(Tools::strcmp(a.c_str(), b.c_str())) == orderLiterally(a, b));
    check(sign(Tools::stricmp(a, b)) == orderLiterally(lowerA, lowerB));
    check(Tools::Strieq(a, b) == (orderLiterally(lowerA, lowerB) == 0));
    check(Tools::Mbcs::Streq(a, b) == (a == b));
    check(Tools::Mbcs::strcmp(a.c_str(), b.c_str()) == sign(a.compare(b)));
    check(Tools::stristr(a, b) == (findLiterally(lowerA, lowerB, 0) != std::string::npos));
    check(Tools::Mbcs::stristr(a, b) == (lowerA.find(lowerB) != std::string::npos));
    const bool starts =
        a.size() >= b.size() && Tools::toLower(a.substr(0, b.size())) == Tools::toLower(b);
    check(Tools::startsWith(a, b, false) == starts);
}

void checkReplacement(const std::string& text, const std::string& from)
{
    if (from.empty())
        return;
    const std::string to = "<>";
    std::string all;
    std::size_t copied = 0;
    std::size_t last = std::string::npos;
    for (std::size_t i = findLiterally(text, from, 0); i != std::string::npos;
         i = findLiterally(text, from, copied)) {
        all.append(text, copied, i - copied).append(to);
        copied = i + from.size();
    }
    all.append(text, copied);
    check(Tools::replaceAll(text, from, to) == all);
    for (std::size_t i = findLiterally(text, from, 0); i != std::string::npos;
         i = findLiterally(text, from, i + 1))
        last = i;
    std::string once = text;
    check(Tools::replaceLast(text, from, to) ==
          (last == std::string::npos ? once : once.replace(last, from.size(), to)));
}

void checkTokens(const std::string& text, const std::string& delimiters)
{
    std::vector<std::string> expected;
    std::size_t first = text.find_first_not_of(delimiters);
    while (first != std::string::npos) {
        const std::size_t end = text.find_first_of(delimiters, first);
        expected.push_back(text.substr(first, end - first));
        first = text.find_first_not_of(delimiters, end);
    }
    check(Tools::tokenize(text, delimiters) == expected);
    const std::size_t begin = text.find_first_not_of(delimiters);
    const std::string trimmed =
        begin == std::string::npos
            ? std::string()
            : text.substr(begin, text.find_last_not_of(delimiters) + 1 - begin);
    check(Tools::trim(text, delimiters) == trimmed);
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t middle = input.find('\n');
    const std::string a = input.substr(0, middle);
    const std::string b = middle == std::string::npos ? std::string() : input.substr(middle + 1);
    checkComparison(a.c_str(), b.c_str());
    checkReplacement(a, b);
    checkTokens(a, b);
    return 0;
}
