#include "remark_text.h"

namespace Girder {

std::string abridged(const std::string& text, std::size_t length)
{
    if (text.size() <= length)
        return text;
    return text.substr(0, length / 2) + "..." + text.substr(text.size() - length / 2);
}

}
