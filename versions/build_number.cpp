#include <mdtools/build_number.h>

#include "text/digits.h"

#include <stdexcept>
#include <string_view>

namespace Tools {

namespace {

constexpr std::size_t Length = 8;

struct Date {
    int day;
    int month;
    int year;
};

// The pattern [0-3][0-9][01][0-9]{5}, a day, a month and a year as far as single digits show.
bool isDate(std::string_view digits)
{
    return digits[0] <= '3' && digits[2] <= '1';
}

// One pass: `digits` counts the run up to here, and each full window of it is looked at, because an
// overlong run may hold a date at its end. The first position of a build date in `text`, or npos.
std::size_t findDate(std::string_view text)
{
    std::size_t digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        digits = isDigit(text[i]) ? digits + 1 : 0;
        if (digits >= Length && isDate(text.substr(i + 1 - Length, Length)))
            return i + 1 - Length;
    }
    return std::string_view::npos;
}

Date readDate(std::string_view text)
{
    const std::size_t start = findDate(text);
    if (start == std::string_view::npos)
        throw std::invalid_argument("Invalid \"DDMMYYYY\" BuildNumber text");
    const auto number = [&](std::size_t position, std::size_t count) {
        return *readDigits(text.substr(start + position, count));
    };
    return {number(0, 2), number(2, 2), number(4, 4)};
}

}

BuildNumber::BuildNumber(const std::string& text) : m_text(text) {}

bool BuildNumber::isValid() const
{
    return findDate(m_text) != std::string_view::npos;
}

int BuildNumber::getDay() const
{
    return readDate(m_text).day;
}

int BuildNumber::getMonth() const
{
    return readDate(m_text).month;
}

int BuildNumber::getYear() const
{
    return readDate(m_text).year;
}

const std::string& BuildNumber::getDdMmYyyy() const
{
    return m_text;
}

// No order in the mathematical sense, as the header says; the others are made of it and stay
// consistent with it, not with each other.
bool BuildNumber::operator<(const BuildNumber& other) const
{
    const Date a = readDate(m_text);
    const Date b = readDate(other.m_text);
    return a.year < b.year || a.month < b.month || a.day < b.day;
}

bool BuildNumber::operator==(const BuildNumber& other) const
{
    return !(*this < other) && !(other < *this);
}

bool BuildNumber::operator!=(const BuildNumber& other) const
{
    return *this < other || other < *this;
}

bool BuildNumber::operator<=(const BuildNumber& other) const
{
    return !(other < *this);
}

bool BuildNumber::operator>(const BuildNumber& other) const
{
    return other < *this;
}

bool BuildNumber::operator>=(const BuildNumber& other) const
{
    return !(*this < other);
}

}
