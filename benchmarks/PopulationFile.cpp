#include "PopulationFile.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

std::filesystem::path PopulationFile(Documents::PopulationSize size)
{
    const auto path =
        std::filesystem::temp_directory_path() /
        ("comments-benchmark-" + std::to_string(size.comments) + "-" + std::to_string(size.pages) +
         (size.texts == Documents::PopulationTexts::kTagLike ? "-tags" : "") + ".pdf");
    static std::vector<std::filesystem::path> written;
    if (std::find(written.begin(), written.end(), path) == written.end()) {
        const std::string command =
            std::string(MAKE_DOCUMENT) + " --comments " + std::to_string(size.comments) +
            " --pages " + std::to_string(size.pages) + " --seed 1" +
            (size.texts == Documents::PopulationTexts::kTagLike ? " --tags" : "") + " '" +
            path.string() + "' >&2";
        if (std::system(command.c_str()) != 0) {
            throw std::runtime_error("make-document failed");
        }
        written.push_back(path);
    }
    return path;
}
