#include "FuzzTarget.h"

#include <cstdlib>
#include <iostream>

void EndWithFault(std::string_view fault, std::string_view input)
{
    std::cerr << fault << "\nThe input was:\n" << input << std::endl;
    std::abort();
}
