#include "text/conversion.h"

#include "platform/codepage.h"
#include "text/single_byte_page.h"

#include <cstring>
#include <cwchar>

namespace Tools {

namespace {

// By tables where the page has such, else by the system.
std::wstring widen(const char* text, std::size_t size)
{
    const SingleBytePage* const page = SingleBytePage::get();
    if (page != nullptr)
        return page->toWide({text, size});
    return size == 0 ? std::wstring() : Platform::codePageToWide(text, size);
}

// As `widen`.
std::string narrow(const wchar_t* text, std::size_t size)
{
    const SingleBytePage* const page = SingleBytePage::get();
    if (page != nullptr)
        return page->toNarrow({text, size});
    return size == 0 ? std::string() : Platform::wideToCodePage(text, size);
}

}

std::wstring toWide(const std::string& text)
{
    return widen(text.data(), text.size());
}

std::wstring toWide(const char* text)
{
    return text != nullptr ? widen(text, std::strlen(text)) : std::wstring();
}

std::string toNarrow(const std::wstring& text)
{
    return narrow(text.data(), text.size());
}

std::string toNarrow(const wchar_t* text)
{
    return text != nullptr ? narrow(text, std::wcslen(text)) : std::string();
}

}
