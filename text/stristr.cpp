#include "text/search.h"

#include <mdtools/encoding.h>
#include <mdtools/strings.h>

namespace Tools {

namespace {

using LoweredSearch = Search<Comparing::Lowered>;

bool contains(const char* text, const char* sub, LoweredSearch::By by)
{
    if (text == nullptr || sub == nullptr)
        return text == sub;
    LoweredSearch search(text, sub, by);
    return search.next(0) != LoweredSearch::None;
}

}

bool stristr(const std::string& s, const std::string& sub)
{
    return contains(s.c_str(), sub.c_str(), LoweredSearch::By::Character);
}

bool stristr(const std::string& s, const char* sub)
{
    return contains(s.c_str(), sub, LoweredSearch::By::Character);
}

bool stristr(const char* s, const char* sub)
{
    return contains(s, sub, LoweredSearch::By::Character);
}

bool Mbcs::stristr(const std::string& s, const std::string& sub)
{
    return contains(s.c_str(), sub.c_str(), LoweredSearch::By::Byte);
}

bool Mbcs::stristr(const std::string& s, const char* sub)
{
    return contains(s.c_str(), sub, LoweredSearch::By::Byte);
}

bool Mbcs::stristr(const char* s, const char* sub)
{
    return contains(s, sub, LoweredSearch::By::Byte);
}

}
