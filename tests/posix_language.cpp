// Linux takes the user's language from variables of the environment.
#include <mdtools/environment.h>
#include <mdtools/language.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using namespace Tools;

TEST(LanguageOfVariables, language)
{
    struct Case {
        const char *all, *lang;
        bool german, czech, slovak;
    };
    static const Case cases[] = {
        {"de_DE.UTF-8", "cs_CZ", true, false, false}, {"cs", "de", false, true, false},
        {"sk_SK@euro", "de", false, false, true},     {"C", "de_DE", false, false, false},
        {"den_DE", "de_DE", false, false, false},
    };
    const Language language;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.all);
        Environment("LC_ALL").setValue(c.all);
        Environment("LANG").setValue(c.lang);
        EXPECT_EQ(language.isGerman(), c.german);
        EXPECT_EQ(language.isCzech(), c.czech);
        EXPECT_EQ(language.isSlovak(), c.slovak);
    }
    ::unsetenv("LC_ALL");
    EXPECT_FALSE(language.isSlovak());
    ::setenv("LC_ALL", "", 1);
    Environment("LANG").setValue("sk");
    EXPECT_TRUE(language.isSlovak());
    ::unsetenv("LC_ALL");
    ::unsetenv("LANG");
    EXPECT_FALSE(language.isGerman() || language.isCzech() || language.isSlovak());
}

}
