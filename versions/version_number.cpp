#include <mdtools/version_number.h>

#include "text/digits.h"

#include <stdexcept>
#include <string_view>

namespace Tools {

namespace {

struct Match {
    std::string_view major;
    std::string_view minor;
};

std::size_t skipDigits(std::string_view text, std::size_t position)
{
    while (position < text.size() && isDigit(text[position]))
        ++position;
    return position;
}

// The leftmost match of [1-9][0-9]+\.[0-9]+, in one pass; std::regex would recurse on long texts.
// Every run of digits is looked at once: the major is what follows the zeros at its front, and must
// reach to a point with a digit after it.
std::optional<Match> findVersion(std::string_view text)
{
    std::size_t position = 0;
    while (position < text.size()) {
        if (text[position] < '1' || text[position] > '9') {
            ++position;
            continue;
        }
        const std::size_t start = position;
        position = skipDigits(text, start);
        if (position - start < 2 || position >= text.size() || text[position] != '.')
            continue;
        const std::size_t end = skipDigits(text, position + 1);
        if (end > position + 1)
            return Match{text.substr(start, position - start),
                         text.substr(position + 1, end - position - 1)};
    }
    return std::nullopt;
}

int readPart(const std::string& text, std::string_view Match::*part)
{
    const std::optional<Match> match = findVersion(text);
    const std::optional<int> value = match ? readDigits((*match).*part) : std::nullopt;
    if (!value)
        throw std::invalid_argument("Invalid \"Major.Minor\" VersionNumber text");
    return *value;
}

}

VersionNumber::VersionNumber(const std::string& text) : m_text(text) {}

bool VersionNumber::isValid() const
{
    return findVersion(m_text).has_value();
}

int VersionNumber::getMajor() const
{
    return readPart(m_text, &Match::major);
}

int VersionNumber::getMinor() const
{
    return readPart(m_text, &Match::minor);
}

const std::string& VersionNumber::getText() const
{
    return m_text;
}

}
