// Whatever a comment says, its neighbours are read as beside any other. The bytes are the texts of
// an item: name, contents, subject and title, with zero bytes between.

#include "../tests/html-engine/Containment.h"
#include "FuzzTarget.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace HtmlEngine::Test;
    InputReader input(TextOf(data, size));
    ItemTexts texts;
    texts.name = input.TextUntil('\0');
    texts.contents = input.TextUntil('\0');
    texts.subject = input.TextUntil('\0');
    texts.title = input.TextUntil('\0');
    const std::string spoilt = SpellsOutItsEnd(texts) ? std::string() : SpoiltBy(texts);
    if (!spoilt.empty()) {
        EndWithFault(spoilt, TextOf(data, size));
    }
    return 0;
}
