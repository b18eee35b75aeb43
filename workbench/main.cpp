#include "driver/CommandLine.h"

#if defined(WORKBENCH_SERVES_PAGES)
#include "web/BrowserWorkbench.h"
#endif

#include <csignal>
#include <iostream>

int main(int argumentCount, char** arguments)
{
#if !defined(_WIN32)
    // A file over the user's limit is then a write that fails with a reason, not the end.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    Workbench::Browse browse;
#if defined(WORKBENCH_SERVES_PAGES)
    browse = Workbench::RunInBrowser;
#endif
    return Workbench::RunProgram(argumentCount, arguments, std::cin, std::cout, std::cerr, browse);
}
