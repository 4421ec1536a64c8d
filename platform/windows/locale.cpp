#include "platform/locale.h"

#include <windows.h>

namespace Tools::Platform {

unsigned primaryLanguage()
{
    return PRIMARYLANGID(LANGIDFROMLCID(::GetUserDefaultLCID()));
}

}
