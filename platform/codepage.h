#pragma once

#include <cstddef>
#include <string>

// The process's ANSI code page. It is the same for the whole life of the process (but see
// isCodePageKnown); all functions may be called from any thread. On Windows the system's page and
// conversion answer; elsewhere MDTOOLS_CODEPAGE names the page, and text/page_tables.cpp converts
// by tables.
namespace Tools::Platform {

// False while the page cannot be asked for, because the process has no file descriptor left. Then
// all functions answer by page 1252, and nobody keeps what they say.
bool isCodePageKnown();

// Marks the bytes that begin a double-byte character; none in single-byte pages and in UTF-8.
void readLeadBytes(bool (&isLead)[256]);

// Every byte is one UTF-16 unit in this page.
bool isSingleBytePage();

// A wchar_t holds one UTF-16 unit. What the page lacks becomes its default character, one a unit;
// broken double-byte characters become what the system puts in their place.
std::wstring codePageToWide(const char* text, std::size_t size);
std::string wideToCodePage(const wchar_t* text, std::size_t size);

}
