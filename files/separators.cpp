#include "files/separators.h"

#include "platform/filesystem.h"
#include "text/characters.h"

namespace Tools::Separators {

void toSlashes(std::string& text)
{
    Characters::replace(text, '\\', '/');
}

void toBackslashes(std::string& text)
{
    Characters::replace(text, '/', '\\');
}

bool endsWithOne(const std::string& text)
{
    return text.ends_with('/') || Characters::endsWith(text, '\\');
}

void removeFinal(std::string& text)
{
    while (text.size() > 1 && text[text.size() - 2] != ':' && endsWithOne(text))
        text.pop_back();
}

std::string join(const std::string& directory, const std::string& name)
{
    std::string path;
    path.reserve(directory.size() + 1 + name.size());
    path = directory;
    if (!path.empty() && !endsWithOne(path))
        path += Platform::separator();
    path += name;
    return path;
}

}
