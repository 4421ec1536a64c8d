#include "girder/terminal.h"

#include <unistd.h>

namespace Girder {

bool isTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

}
