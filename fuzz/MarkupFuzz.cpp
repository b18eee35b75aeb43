// Whatever a comment says, its neighbours are read as beside any other. The bytes are the texts of
// an item: name, contents, subject and title, with zero bytes between.

#include "../tests/html-engine/Containment.h"
#include "FuzzTarget.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace HtmlEngine::Test;
    std::string_view rest = TextOf(data, size);
    const auto next = [&] {
        const std::string_view text = rest.substr(0, rest.find('\0'));
        rest.remove_prefix(std::min(rest.size(), text.size() + 1));
        return std::string(text);
    };
    ItemTexts texts;
    texts.name = next();
    texts.contents = next();
    texts.subject = next();
    texts.title = next();
    const std::string spoilt = SpellsOutItsEnd(texts) ? std::string() : SpoiltBy(texts);
    if (!spoilt.empty()) {
        EndWithFault(spoilt, TextOf(data, size));
    }
    return 0;
}
