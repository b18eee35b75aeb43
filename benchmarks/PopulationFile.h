// PDF files of the documents that speed figures are given for.
#pragma once

#include "documents/Population.h"

#include <filesystem>

// A file of that size, written once per run of the program. Throws std::runtime_error.
std::filesystem::path PopulationFile(Documents::PopulationSize size);
