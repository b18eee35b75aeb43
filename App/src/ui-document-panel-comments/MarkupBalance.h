// Texts of annotations are markup, as they stand. Markup that is not balanced reaches beyond its
// item: an HTML parser carries an open <b> on into the items that follow, and an end tag too many
// closes the item around it. A list that holds such a text cannot be updated item by item.
#pragma once

#include <string_view>

// Whether an HTML parser that reads the text inside an element leaves that element as it found it:
// every tag is that of a known inline element, and start and end tags match. Errs towards false.
// Never fails; linear in the text.
bool IsBalancedMarkup(std::wstring_view text);
