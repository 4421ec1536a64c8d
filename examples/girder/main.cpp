#include "program.h"
#include "terminal.h"

#include <iostream>

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    return static_cast<int>(
        Girder::run(arguments, {std::cin, std::cout, std::cerr, Girder::isTerminal()}));
}
