#include <mdtools/encoding.h>

// The twins that are the functions of strings.h under another name, because those look at bytes or
// mean the page's characters anyway.
namespace Tools::Mbcs {

char* strlwr(char* p)
{
    return Tools::strlwr(p);
}

char* strupr(char* p)
{
    return Tools::strupr(p);
}

std::string& strlwr(std::string& s)
{
    return Tools::strlwr(s);
}

std::string& strupr(std::string& s)
{
    return Tools::strupr(s);
}

std::string toLower(const std::string& s)
{
    return Tools::toLower(s);
}

std::string toUpper(const std::string& s)
{
    return Tools::toUpper(s);
}

std::vector<std::string> tokenize(const std::string& s, const std::string& delimiters)
{
    return Tools::tokenize(s, delimiters);
}

std::string trim(const std::string& s, const std::string& chars)
{
    return Tools::trim(s, chars);
}

std::string trimStart(const std::string& s, const std::string& chars)
{
    return Tools::trimStart(s, chars);
}

std::string trimEnd(const std::string& s, const std::string& chars)
{
    return Tools::trimEnd(s, chars);
}

mdt::Nullable<int> tryParseInt(const std::string& s)
{
    return Tools::tryParseInt(s);
}

mdt::Nullable<long> tryParseLong(const std::string& s)
{
    return Tools::tryParseLong(s);
}

mdt::Nullable<double> tryParseDouble(const std::string& s)
{
    return Tools::tryParseDouble(s);
}

}
