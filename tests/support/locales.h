#pragma once

#include <clocale>
#include <string>

namespace MdToolsTest {

// Locales whose numbers have a decimal comma, by their names on both platforms, and the one that
// every program starts with. Those that a machine lacks leave everything as it is.
inline constexpr const char* CommaLocales[] = {"C", "de_DE.UTF-8", "de_DE", "fr_FR.UTF-8",
                                               "German_Germany.1252"};

// The C library's locale while it lives.
class LocaleScope {
public:
    explicit LocaleScope(const char* locale) : m_before(std::setlocale(LC_ALL, nullptr))
    {
        std::setlocale(LC_ALL, locale);
    }
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;
    ~LocaleScope() { std::setlocale(LC_ALL, m_before.c_str()); }

private:
    std::string m_before;
};

}
