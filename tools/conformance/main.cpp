// conformance MODULE [PREFIX]: proves that a build of the module keeps the binary contract; with a
// prefix, the promises alone whose names begin so. Prints a line for each promise. Exit status 0
// when all are kept, 1 when one is broken, 2 when there is no module.
#include "Promises.h"

#include "ModuleLibrary.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv)
{
    using namespace Conformance;
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: conformance MODULE [PREFIX]\n");
        return 2;
    }
    try {
        const ModuleLibrary library(argv[1]);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "conformance: %s\n", failure.what());
        return 2;
    }
    Report report(argc == 3 ? argv[2] : "");
    for (const auto prove : {ProveExports, ProveObjects, ProveOrders, ProveHostRules,
                             ProveHostTables, ProveUnloading}) {
        try {
            prove(report, argv[1]);
        } catch (const std::exception& failure) {
            // A group stands on what a host does first; what ends that ends the group.
            report.Prove("setup", [&](Finding& finding) { finding.Fail(failure.what()); });
        }
    }
    return report.Finish();
}
