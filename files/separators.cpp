#include "files/separators.h"

#include "platform/filesystem.h"

#include <algorithm>

namespace Tools::Separators {

void toSlashes(std::string& text)
{
    std::replace(text.begin(), text.end(), '\\', '/');
}

void toBackslashes(std::string& text)
{
    std::replace(text.begin(), text.end(), '/', '\\');
}

std::size_t findLastBackslash(const std::string& text)
{
    return text.rfind('\\');
}

std::size_t endOfLast(const std::string& text)
{
    const std::size_t slash = text.rfind('/');
    const std::size_t backslash = findLastBackslash(text);
    // npos + 1 is 0.
    return std::max(slash + 1, backslash + 1);
}

bool endsWithOne(const std::string& text)
{
    return !text.empty() && endOfLast(text) == text.size();
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
