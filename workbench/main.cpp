#include "driver/CommandLine.h"

#if defined(WORKBENCH_SERVES_PAGES)
#include "web/BrowserWorkbench.h"
#endif

#include <iostream>

int main(int argumentCount, char** arguments)
{
    Workbench::Browse browse;
#if defined(WORKBENCH_SERVES_PAGES)
    browse = Workbench::RunInBrowser;
#endif
    return Workbench::RunProgram(argumentCount, arguments, std::cin, std::cout, std::cerr, browse);
}
