// sdk-layout prints what module and host share in memory, and compares it with what a release had.
//
//   sdk-layout                  the present layout
//   sdk-layout --compare FILE   what breaks the layout in FILE (then it fails), and what adds to it
#include "Compatibility.h"
#include "PublicLayout.h"

#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>

int main(int argc, char** argv)
{
    if (argc == 1) {
        std::cout << SdkLayout::PublicLayout();
        return std::cout.flush() ? 0 : 2;
    }
    std::ifstream file(argc == 3 ? argv[2] : "", std::ios::binary);
    if (argc != 3 || std::strcmp(argv[1], "--compare") != 0 || !file) {
        std::cerr << "sdk-layout [--compare FILE]: the layout of a release is to be given\n";
        return 2;
    }
    const std::string released(std::istreambuf_iterator<char>(file), {});
    const SdkLayout::Comparison comparison =
        SdkLayout::Compare(released, SdkLayout::PublicLayout());
    for (const std::string& addition : comparison.additions) {
        std::cout << "added: " << addition << "\n";
    }
    for (const std::string& broken : comparison.breaks) {
        std::cout << "BROKEN: " << broken << "\n";
    }
    std::cout << comparison.breaks.size() << " broken, " << comparison.additions.size()
              << " added since " << argv[2] << "\n";
    return comparison.breaks.empty() ? 0 : 1;
}
