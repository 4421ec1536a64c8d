#include "platform/locale.h"

#include "platform/environment.h"

namespace Tools::Platform {

unsigned primaryLanguage()
{
    std::string locale;
    if (!readVariable("LC_ALL", locale) || locale.empty())
        readVariable("LANG", locale);
    // "de_AT.UTF-8@euro": the language ends at the first of these.
    const std::string language = locale.substr(0, locale.find_first_of("_.@"));
    if (language == "de")
        return 7;
    if (language == "cs")
        return 5;
    return language == "sk" ? 27 : 0;
}

}
