#include "file_text.h"

#include <mdtools/file.h>

#include <array>

namespace Girder {

namespace {

bool write(const std::string& file, const char* mode, const std::string& text)
{
    std::FILE* stream = Tools::File::open(file, mode);
    if (stream == nullptr)
        return false;
    const bool isWhole = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    return Tools::File::close(stream) == 0 && isWhole;
}

}

bool readFile(const std::string& file, std::string& text)
{
    std::FILE* stream = Tools::File::open(file, "rb");
    if (stream == nullptr)
        return false;
    text.clear();
    std::array<char, 65536> block{};
    std::size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), stream)) > 0)
        text.append(block.data(), count);
    const bool isWhole = std::ferror(stream) == 0;
    Tools::File::close(stream);
    return isWhole;
}

bool writeFile(const std::string& file, const std::string& text)
{
    return write(file, "wb", text);
}

bool writeTextFile(const std::string& file, const std::string& text)
{
    return write(file, "w", text);
}

}
