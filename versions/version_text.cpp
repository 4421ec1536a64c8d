#include <mdtools/version_text.h>

#include <algorithm>

namespace Tools {

VersionText::ValidVersionTexts::ValidVersionTexts(const std::vector<std::string>& texts)
    : m_texts(texts)
{}

VersionText::ValidVersionTexts::ValidVersionTexts(std::initializer_list<std::string> texts)
    : m_texts(texts)
{}

bool VersionText::ValidVersionTexts::isValid(const std::string& text) const
{
    return std::find(m_texts.begin(), m_texts.end(), text) != m_texts.end();
}

// A text that is not listed is found at the end, after every known one; so only `b` has to be
// known.
bool VersionText::ValidVersionTexts::isLess(const std::string& a, const std::string& b) const
{
    const auto first = std::find(m_texts.begin(), m_texts.end(), a);
    const auto second = std::find(m_texts.begin(), m_texts.end(), b);
    return second != m_texts.end() && first < second;
}

VersionText::VersionText(const ValidVersionTexts& validTexts, const std::string& text)
    : m_validTexts(validTexts), m_text(text)
{}

const std::string& VersionText::getText() const
{
    return m_text;
}

void VersionText::setText(const std::string& text)
{
    if (isValid(text))
        m_text = text;
}

bool VersionText::isValid(const std::string& text) const
{
    return m_validTexts.isValid(text);
}

bool VersionText::isEqualTo(const std::string& text) const
{
    return m_text == text;
}

bool VersionText::isLessThan(const std::string& text) const
{
    return m_validTexts.isLess(m_text, text);
}

bool VersionText::isGreaterEqual(const std::string& text) const
{
    return !isLessThan(text);
}

}
