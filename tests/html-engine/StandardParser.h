// The engine's reader beside a parser that follows the HTML standard to the letter: on markup that
// needs no repair both make the same tree.
#pragma once

#include <string>
#include <string_view>

namespace HtmlEngine::Test {

// Both trees where they differ in any respect, what either has left behind, or nothing. `html` is
// well-formed UTF-8 and stands inside an element of the name `context`.
std::string DifferenceFromStandard(std::string_view html, std::string_view context);

}  // namespace HtmlEngine::Test
