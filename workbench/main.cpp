#include "driver/CommandLine.h"

#include <iostream>

int main(int argumentCount, char** arguments)
{
    return Workbench::RunProgram(argumentCount, arguments, std::cin, std::cout, std::cerr);
}
