// Bounds for structures of a file that QPDF follows by recursion, so that no file exhausts the
// stack. Included by QpdfDocument only.
#pragma once

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

class InputSource;
class QPDF;

namespace Documents {

// Levels of a page tree that are followed; QPDF's parser has the same bound for arrays and
// dictionaries inside each other. Programs write balanced trees of less than ten.
inline constexpr std::size_t kMostPageLevels = 500;

// The bytes as a source for QPDF, which outlive it. Objects that can only be read by reading one
// inside another (streams whose length is a stream) count as unreadable, with a warning, where the
// calling thread's stack runs short.
std::shared_ptr<InputSource> MakeStackSavingSource(const std::string& description,
                                                   std::string_view bytes);

// The text is a clause for the user.
class TooDeep : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Throws TooDeep when the page tree has more levels than that. Loops and damaged nodes are left to
// QPDF.
void CheckPageTree(QPDF& file);

}  // namespace Documents
