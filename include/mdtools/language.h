#pragma once

#include <mdtools/export.h>

namespace Tools {

// The language of the user's locale, asked anew at each call: on Windows of the user's default
// locale, elsewhere of the one that LC_ALL or else LANG names. Any thread may ask.
class MDTOOLS_API Language {
public:
    Language() = default;
    Language(const Language& other) = default;
    Language(Language&& other) = default;
    Language& operator=(const Language& other) = default;
    Language& operator=(Language&& other) = default;
    virtual ~Language();

    bool isGerman() const;
    bool isCzech() const;
    bool isSlovak() const;
};

}
