#include "girder/terminal.h"

#include <windows.h>

namespace Girder {

bool isTerminal()
{
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

}
