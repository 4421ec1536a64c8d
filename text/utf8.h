#pragma once

#include <string>

// UTF-8 by code points, and code points as UTF-16 units, one a wchar_t.
namespace Tools::Utf8 {

// What `read` returns for bytes that are no UTF-8.
inline constexpr char32_t Broken = 0xFFFFFFFF;
// What readers who go on put in place of them.
inline constexpr char32_t Replacement = 0xFFFD;

// The code point at `p`, which is before `end` and is moved to what follows. A broken sequence is
// stepped over as far as it could have begun a good one, by one byte at least: overlong forms,
// halves of surrogate pairs and what lies beyond 0x10FFFF end where that is sure.
char32_t read(const char*& p, const char* end);

void append(std::string& text, char32_t point);
void appendUnits(std::wstring& wide, char32_t point);

}
