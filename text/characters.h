#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Narrow text by characters of the process's code page: the second byte of a double-byte character
// is never taken for a character of its own, even where it looks like a backslash. Positions are
// byte positions; npos is std::string_view::npos. All bytes of the text count, NUL included.
namespace Tools::Characters {

// The number of bytes of the character at `position`, which is in the text: 1 or 2.
std::size_t length(std::string_view text, std::size_t position);

// The first, the last character `c`; `c` is a single-byte character.
std::size_t find(std::string_view text, char c, std::size_t from = 0);
std::size_t findLast(std::string_view text, char c);

// The first, the last character that is one of `chars`, all of them single-byte ones.
std::size_t findAny(std::string_view text, std::string_view chars, std::size_t from = 0);
std::size_t findLastAny(std::string_view text, std::string_view chars);

// The last character is `c`.
bool endsWith(std::string_view text, char c);

// Every character `from` becomes `to`.
void replace(std::string& text, char from, char to);

// The number of characters before the terminator. A first byte whose second one is missing is not
// counted.
std::size_t count(const char* text);

}
