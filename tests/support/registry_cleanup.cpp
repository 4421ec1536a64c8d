#include "support/registry_cleanup.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace MdToolsTest {

void removeUserKey([[maybe_unused]] const std::string& path)
{
#ifdef _WIN32
    ::RegDeleteTreeA(HKEY_CURRENT_USER, path.c_str());
#endif
}

}
