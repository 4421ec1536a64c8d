#pragma once

#include <string>

// Between narrow text in the process's code page and UTF-16, one unit a wchar_t. Neither ever
// fails: what cannot be converted becomes the page's (or the system's) replacement. No terminator
// is converted; null is empty.
namespace Tools {

std::wstring toWide(const std::string& text);
std::wstring toWide(const char* text);

std::string toNarrow(const std::wstring& text);
std::string toNarrow(const wchar_t* text);

}
