#include "platform/report.h"

#include <mdtools/debug_output.h>

namespace Tools::Platform {

void report(const char* text)
{
    debugPrintf("%s\n", text);
}

}
