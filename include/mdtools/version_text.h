#pragma once

#include <mdtools/export.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace Tools {

// The name of a version ("2024") that is judged by a list of the known ones. A value.
class MDTOOLS_API VersionText {
public:
    // The known version names, oldest first. Names are compared byte by byte.
    class MDTOOLS_API ValidVersionTexts {
    public:
        ValidVersionTexts(const std::vector<std::string>& texts);
        ValidVersionTexts(std::initializer_list<std::string> texts);

        // The list holds this very text; an empty list holds none.
        bool isValid(const std::string& text) const;
        // Both are known and `b` is the later one.
        bool isLess(const std::string& a, const std::string& b) const;

    private:
        std::vector<std::string> m_texts;
    };

    // Takes `text` as it is, known or not.
    VersionText(const ValidVersionTexts& validTexts, const std::string& text);

    const std::string& getText() const;
    // An unknown text is ignored.
    void setText(const std::string& text);

    // The list knows `text`.
    bool isValid(const std::string& text) const;

    // These compare its own text with `text`. Less: both are known, and its own is the older one.
    // Greater or equal is the plain opposite of less, so it holds where either text is unknown: an
    // unknown version counts as new enough.
    bool isEqualTo(const std::string& text) const;
    bool isLessThan(const std::string& text) const;
    bool isGreaterEqual(const std::string& text) const;

private:
    ValidVersionTexts m_validTexts;
    std::string m_text;
};

}
