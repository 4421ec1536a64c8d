// Writes what the system makes of every byte, pair and UTF-16 unit in the code pages named: for
// each a file PAGE.txt of lines "W BYTES UNITS" and "N UNIT BYTES", in hexadecimal digits.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <windows.h>

namespace {

void dumpWide(FILE* file, unsigned page, const std::string& bytes)
{
    wchar_t units[8];
    const int count =
        ::MultiByteToWideChar(page, 0, bytes.data(), static_cast<int>(bytes.size()), units, 8);
    std::fputs("W ", file);
    for (const char byte : bytes)
        std::fprintf(file, "%02X", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    std::fputc(' ', file);
    for (int i = 0; i < count; ++i)
        std::fprintf(file, "%04X", static_cast<unsigned>(units[i]));
    std::fputc('\n', file);
}

void dumpNarrow(FILE* file, unsigned page, wchar_t unit)
{
    char bytes[8];
    const int count = ::WideCharToMultiByte(page, 0, &unit, 1, bytes, 8, nullptr, nullptr);
    std::fprintf(file, "N %04X ", static_cast<unsigned>(unit));
    for (int i = 0; i < count; ++i)
        std::fprintf(file, "%02X", static_cast<unsigned>(static_cast<unsigned char>(bytes[i])));
    std::fputc('\n', file);
}

bool dump(const char* name)
{
    const auto page = static_cast<unsigned>(std::atoi(name));
    CPINFO info{};
    FILE* const file =
        ::GetCPInfo(page, &info) ? std::fopen((std::string(name) + ".txt").c_str(), "w") : nullptr;
    if (file == nullptr)
        return false;
    for (int byte = 0; byte < 256; ++byte)
        dumpWide(file, page, std::string(1, static_cast<char>(byte)));
    for (int pair = 0x8000; info.MaxCharSize == 2 && pair < 0x10000; ++pair)
        dumpWide(file, page, {static_cast<char>(pair >> 8), static_cast<char>(pair)});
    for (int unit = 0; unit < 0x10000; ++unit)
        dumpNarrow(file, page, static_cast<wchar_t>(unit));
    return std::fclose(file) == 0;
}

}

int main(int count, char** names)
{
    for (int i = 1; i < count; ++i) {
        if (!dump(names[i])) {
            std::fprintf(stderr, "No page %s\n", names[i]);
            return 1;
        }
    }
    return 0;
}
