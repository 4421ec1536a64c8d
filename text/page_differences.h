#pragma once

#include <cstdint>

namespace Tools {

// What the code pages of Windows have otherwise than those of iconv: private units of undefined
// bytes, user-defined characters, and the look-alikes that narrowing takes for what a page lacks.
// Measured by scripts/page-differences. A row is a run of units and characters that is right in
// several pages at once.
struct PageDifference {
    // Bit n: it counts in the page with the index n.
    std::uint32_t pages;
    char16_t unit;
    // A double-byte character is one number, its first byte above.
    std::uint16_t code;
    std::uint8_t count;
    std::uint8_t unitStep;
    std::uint8_t codeStep;
    // A character that is read as the unit, and written for it unless another one goes before; or
    // a unit that is written as the character.
    enum Kind : std::uint8_t { Read, Write } kind;
};

namespace PageDifferences {

// Of a page that the table knows, else -1.
int indexOf(unsigned page);

const PageDifference* begin();
const PageDifference* end();

}

}
