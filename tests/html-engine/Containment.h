// Whether what a comment says stays inside its item: a list of comments of which some have texts
// that are put in as they stand, and the neighbours that must not notice.
#pragma once

#include "TestPage.h"

#include <string>
#include <string_view>

namespace HtmlEngine::Test {

// Puts the texts into the middle item of one page of a list and into the last of the next. Tells
// which item, list or page is not as it is beside plain texts, or where one of the items alone is
// read in another way than in its list; empty when everything is right.
std::string SpoiltBy(const ItemTexts& texts);

// Whether the texts of the tooltip spell out the end tags of tooltip and item: the one thing that
// no reader can tell from the item's own.
bool SpellsOutItsEnd(const ItemTexts& texts);

}  // namespace HtmlEngine::Test
