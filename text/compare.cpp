#include "text/compare.h"

#include <type_traits>

namespace Tools::Comparing {

template <class Case>
static bool isPlainlySame(const char* a, const char* b, std::size_t size)
{
    return std::is_same_v<Case, Lowered> ? isSameButCase(a, b, size) : isSame(a, b, size);
}

template <class Case>
int compare(Text a, Text b, By by)
{
    if (a.p == b.p || (a.size == b.size && isPlainlySame<Case>(a.p, b.p, a.size)))
        return 0;
    return order<Case>(a, b, by);
}

template int compare<Exact>(Text a, Text b, By by);
template int compare<Lowered>(Text a, Text b, By by);

}
