#include "text/search.h"

#include <mdtools/encoding.h>
#include <mdtools/strings.h>

namespace Tools {

namespace {

using LoweredSearch = Search<Comparing::Lowered>;

// The texts end at their first NUL.
bool contains(const char* text, const char* sub, Comparing::By by)
{
    if (text == nullptr || sub == nullptr)
        return text == sub;
    if (*sub == '\0')
        return true;
    LoweredSearch search(text, sub, by);
    return search.next(0) != LoweredSearch::None;
}

}

bool stristr(const std::string& s, const std::string& sub)
{
    return contains(s.c_str(), sub.c_str(), Comparing::By::Character);
}

bool stristr(const std::string& s, const char* sub)
{
    return contains(s.c_str(), sub, Comparing::By::Character);
}

bool stristr(const char* s, const char* sub)
{
    return contains(s, sub, Comparing::By::Character);
}

bool Mbcs::stristr(const std::string& s, const std::string& sub)
{
    return contains(s.c_str(), sub.c_str(), Comparing::By::Byte);
}

bool Mbcs::stristr(const std::string& s, const char* sub)
{
    return contains(s.c_str(), sub, Comparing::By::Byte);
}

bool Mbcs::stristr(const char* s, const char* sub)
{
    return contains(s, sub, Comparing::By::Byte);
}

}
