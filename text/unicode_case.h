#pragma once

namespace Tools::UnicodeCase {

// The simple, one-to-one case mappings of Unicode 14 for a UTF-16 unit; a unit without one, halves
// of surrogate pairs among them, maps to itself.
char16_t toLower(char16_t unit);
char16_t toUpper(char16_t unit);

// The letters that have a lower case, in ascending order: calls visitor(upper, lower).
template <class Visitor>
void forEachLetter(Visitor visitor);

// Every `step`-th unit from `first` to `last` has its lower case `distance` further on.
struct Range {
    char16_t first;
    char16_t last;
    int step;
    int distance;
};
const Range* begin();
const Range* end();

template <class Visitor>
void forEachLetter(Visitor visitor)
{
    for (const Range* range = begin(); range != end(); ++range) {
        for (int unit = range->first; unit <= range->last; unit += range->step)
            visitor(static_cast<char16_t>(unit), static_cast<char16_t>(unit + range->distance));
    }
}

}
