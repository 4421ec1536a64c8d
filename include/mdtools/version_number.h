#pragma once

#include <mdtools/export.h>

#include <string>

namespace Tools {

// A version "Major.Minor" somewhere in a text. The major number has at least two digits and does
// not begin with 0, as all majors of the family have ("9.1" is no version); the leftmost position
// that fits counts, so that "v10.2.3" is 10.2 and "024.1" is 24.1. Versions have no order of their
// own: callers compare majors, then minors. A value; the text is kept as given.
class MDTOOLS_API VersionNumber {
public:
    explicit VersionNumber(const std::string& text);

    bool isValid() const;

    // These throw std::invalid_argument where the text holds no version, or a number beyond int.
    int getMajor() const;
    int getMinor() const;

    // The text as given.
    const std::string& getText() const;

private:
    std::string m_text;
};

}
