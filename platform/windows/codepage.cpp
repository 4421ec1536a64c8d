#include "platform/codepage.h"

#include <algorithm>
#include <limits>
#include <windows.h>

namespace Tools::Platform {

namespace {

// The system counts in int. Longer texts are converted in pieces that end between characters.
constexpr std::size_t PieceSize = std::size_t{1} << 24;

bool isUtf8Continuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// Bytes of the first piece of the text.
std::size_t narrowPiece(const char* text, std::size_t size)
{
    if (size <= PieceSize)
        return size;
    std::size_t end = PieceSize;
    if (::GetACP() == CP_UTF8) {
        while (end > PieceSize - 4 && isUtf8Continuation(text[end]))
            --end;
        return end;
    }
    // A byte that is no first byte ends a character: an odd number of first bytes directly before
    // the cut means that it would split one.
    std::size_t leads = 0;
    while (leads < end && ::IsDBCSLeadByte(static_cast<BYTE>(text[end - 1 - leads])))
        ++leads;
    return end - leads % 2;
}

std::size_t widePiece(const wchar_t* text, std::size_t size)
{
    if (size <= PieceSize)
        return size;
    return IS_HIGH_SURROGATE(text[PieceSize - 1]) ? PieceSize - 1 : PieceSize;
}

}

bool isCodePageKnown()
{
    return true;
}

void readLeadBytes(bool (&isLead)[256])
{
    CPINFO info{};
    ::GetCPInfo(CP_ACP, &info);
    std::fill(std::begin(isLead), std::end(isLead), false);
    for (int i = 0; i + 1 < MAX_LEADBYTES && info.LeadByte[i] != 0; i += 2)
        std::fill(isLead + info.LeadByte[i], isLead + info.LeadByte[i + 1] + 1, true);
}

bool isSingleBytePage()
{
    CPINFO info{};
    return ::GetCPInfo(CP_ACP, &info) && info.MaxCharSize == 1;
}

std::wstring codePageToWide(const char* text, std::size_t size)
{
    std::wstring wide;
    while (size != 0) {
        const std::size_t piece = narrowPiece(text, size);
        const int length = static_cast<int>(piece);
        const int count = ::MultiByteToWideChar(CP_ACP, 0, text, length, nullptr, 0);
        const std::size_t old = wide.size();
        wide.resize(old + static_cast<std::size_t>(count));
        ::MultiByteToWideChar(CP_ACP, 0, text, length, wide.data() + old, count);
        text += piece;
        size -= piece;
    }
    return wide;
}

std::string wideToCodePage(const wchar_t* text, std::size_t size)
{
    std::string narrow;
    while (size != 0) {
        const std::size_t piece = widePiece(text, size);
        const int length = static_cast<int>(piece);
        const int count =
            ::WideCharToMultiByte(CP_ACP, 0, text, length, nullptr, 0, nullptr, nullptr);
        const std::size_t old = narrow.size();
        narrow.resize(old + static_cast<std::size_t>(count));
        ::WideCharToMultiByte(CP_ACP, 0, text, length, narrow.data() + old, count, nullptr,
                              nullptr);
        text += piece;
        size -= piece;
    }
    return narrow;
}

}
