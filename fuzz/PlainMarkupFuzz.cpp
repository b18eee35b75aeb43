// The reader of plain markup and the full parser must agree. The first byte of an input chooses the
// element around the markup.

#include <iterator>

#include "../tests/html-engine/ReaderComparison.h"
#include "FuzzTarget.h"

namespace {

constexpr std::string_view kContexts[] = {"div",  "ul", "li",   "p",        "body",  "h3",   "td",
                                          "html", "tr", "span", "textarea", "popup", "table"};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string_view html = TextOf(data, size).substr(1);
    const std::string_view context = kContexts[data[0] % std::size(kContexts)];
    const auto comparison = HtmlEngine::Test::CompareReaders(html, context);
    if (!comparison.difference.empty()) {
        EndWithFault(comparison.difference, html);
    }
    return 0;
}
