#pragma once

// Reads markup with the reader of plain markup and with the full parser, and tells the two trees
// apart.

#include <string>
#include <string_view>

namespace HtmlEngine::Test {

struct ReaderComparison {
    /// Whether the reader of plain markup took it.
    bool isPlain = false;
    /// Empty when the markup was refused or the trees are the same in every respect; else both.
    std::string difference;
};

/// What a refused or disposed of tree leaves behind counts as a difference too.
ReaderComparison CompareReaders(std::string_view html, std::string_view context);

}  // namespace HtmlEngine::Test
