#pragma once

#include <mdtools/export.h>

#include <string>

namespace Tools {

// A build date written DDMMYYYY somewhere in a text: two digits of day (00 to 39), two of month (00
// to 19) and four of year. The leftmost such run of digits counts, whatever is around it; days
// and months are not checked against the calendar. A value; the text is kept as given.
class MDTOOLS_API BuildNumber {
public:
    explicit BuildNumber(const std::string& text);

    bool isValid() const;

    // These throw std::invalid_argument where the text holds no build date.
    int getDay() const;
    int getMonth() const;
    int getYear() const;

    // The text as given.
    const std::string& getDdMmYyyy() const;

    // All six rest on "less", and throw std::invalid_argument where either text holds no build
    // date. A build is less than another if its year, or else its month, or else its day is less; a
    // later year does not end the test, so that of 01012022 and 01122021 each is less than the
    // other. Lists of builds that were ordered this way stay as they are.
    bool operator==(const BuildNumber& other) const;
    bool operator!=(const BuildNumber& other) const;
    bool operator<(const BuildNumber& other) const;
    bool operator<=(const BuildNumber& other) const;
    bool operator>(const BuildNumber& other) const;
    bool operator>=(const BuildNumber& other) const;

private:
    std::string m_text;
};

}
