#include "web/StyleAdapter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>

namespace WebTests {
namespace {

using testing::HasSubstr;
using testing::Not;
using Workbench::AdaptStyleSheet;

struct Row {
    const char* sheet;
    const char* adapted;
};

std::string FlowChildren(const std::string& selector, const std::string& side)
{
    return "\n:where(" + selector +
           ") > * { --wb-full-width: 0; --wb-full-height: 0; min-width: 0; min-height: 0; "
           "flex-shrink: var(--wb-full-" +
           side + "); }";
}

TEST(StyleAdapter, TranslatesEngineExtensionsToStandardCss)
{
    const Row rows[] = {
        // Per cent signs.
        {"a{left:50%%;top:50%}", "a{left:50%;top:50%}"},
        {"a{content:\"50%%\"}", "a{content:\"50%%\"}"},
        {"a{background:url(a%%20b.png) 5%% 5%%}", "a{background:url(a%%20b.png) 5% 5%}"},
        {"@font-face { size-adjust: 90%%; }", "@font-face { size-adjust: 90%; }"},
        // States.
        {"li:current, li:COLLAPSED > b{x:y}", "li[wb-current], li[wb-collapsed] > b{x:y}"},
        {"a:disabled:hover{x:y}", "a[wb-disabled]:hover{x:y}"},
        {"a:not(:expanded){x:y}", "a:not([wb-expanded]){x:y}"},
        {"a:currently, a::current, a:current(b){x:y}",
         "a:currently, a::current, a:current(b){x:y}"},
        {"a[t=\":current\"], /*:current*/ b{x:y}", "a[t=\":current\"], /*:current*/ b{x:y}"},
        {"a:nth-child(2)::before{x:y}", "a:nth-child(2)::before{x:y}"},
        // What can be clicked.
        {"a{behavior:clickable;c:d}", "a{cursor: pointer;c:d}"},
        {"a{ behavior: other; c:d }", "a{ c:d }"},
        // Languages.
        {"@media locale == \"ru\" { a, b:current {x:y} }",
         ":root[wb-locale=\"ru\"] a, :root[wb-locale=\"ru\"] b[wb-current] {x:y}"},
        {"@media locale!='ru'{:root{x:y}html a{x:y}}",
         ":root:not([wb-locale=\"ru\"]) {x:y}html:not([wb-locale=\"ru\"]) a {x:y}"},
        {"@media (min-width: 5px) { a:current{x:y} }",
         "@media (min-width: 5px) { a[wb-current]{x:y} }"},
        // What a browser can judge itself, and what nobody can.
        {"@import \"a.css\";\na{vertical-scrollbar:b}",
         "@import \"a.css\";\na{vertical-scrollbar:b}"},
        {"a{flow:stack}", "a{flow:stack}"},
        {"/* a{ */ b{x:y}/*", "/* a{ */ b{x:y}/*"},
        {"a{x:\"};{\";y:z}", "a{x:\"};{\";y:z}"},
        {"a{b:current{x:50%%}y:z}", "a{b:current{x:50%}y:z}"},
        {"a{} }b:current{x:y}", "a{} }b[wb-current]{x:y}"},
        {"a{x:y;;z}", "a{x:y;;z}"},
        {"a:current{x:50%%", "a:current{x:50%%"},
        {"a\\:current{x:y}", "a\\:current{x:y}"},
        {"\xEF\xBB\xBF/* b */", "/* b */"},
        {"", ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(AdaptStyleSheet(row.sheet), row.adapted);
    }
}

TEST(StyleAdapter, TurnsFlowIntoFlexBoxes)
{
    EXPECT_EQ(AdaptStyleSheet("a, b:current{flow:vertical;c:d}"),
              "a, b[wb-current]{display: flex; flex-direction: column;c:d}" +
                  FlowChildren("a, b[wb-current]", "height"));
    EXPECT_EQ(AdaptStyleSheet("a{FLOW : horizontal !important}"),
              "a{display: flex !important; flex-direction: row !important}" +
                  FlowChildren("a", "width"));
    EXPECT_EQ(
        AdaptStyleSheet("a{width:100%%;height: 100% ;max-height:100%}"),
        "a{width:100%; --wb-full-width: 1;height: 100% ; --wb-full-height: 1;max-height:100%}");
}

TEST(StyleAdapter, RemovesCollapsedElementsFromLayout)
{
    const std::string always = "\n[wb-visibility=\"collapse\"] { display: none !important; }\n";
    EXPECT_EQ(AdaptStyleSheet("a, b::before, c:after{x:y;visibility:collapse}"),
              "a, b::before, c:after{x:y;}\n"
              "a:not([wb-visibility=\"visible\"]), b:not([wb-visibility=\"visible\"])::before, "
              "c:not([wb-visibility=\"visible\"]):after { display: none; }" +
                  always);
    EXPECT_EQ(AdaptStyleSheet("#r { /* c */ visibility : Collapse ; }"),
              "\n#r:not([wb-visibility=\"visible\"]) { display: none; }" + always)
        << "nothing is left of the rule itself";
    EXPECT_EQ(AdaptStyleSheet("a{visibility:hidden}"), "a{visibility:hidden}");
}

TEST(StyleAdapter, DrawsImagesFromTheirVectorSources)
{
    EXPECT_EQ(AdaptStyleSheet("a:current{background: url(x-y.png) 0 0 !important}"),
              "a[wb-current]{background: url(x-y.png) 0 0 !important}\n"
              "@media not all and (resolution: 1dppx) { a[wb-current] { background-image: "
              "url(artwork/x-y.svg) !important; } }");
    for (const char* other : {"a{background:url(../x.png)}", "a{background:url(x.svg)}",
                              "a{background:red}", "a{x:url(x.png)}"}) {
        EXPECT_EQ(AdaptStyleSheet(other), other);
    }
}

std::string ReadSheet(const std::string& name)
{
    std::ifstream stream(std::string(PANEL_RESOURCES) + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// Nothing that only the engine understands is left of the module's sheets, and no rule is lost.
TEST(StyleAdapter, AdaptsTheModulesOwnSheets)
{
    for (const char* name : {"panel.css", "button.css"}) {
        const std::string sheet = ReadSheet(name);
        ASSERT_THAT(sheet, HasSubstr("{")) << name;
        const std::string adapted = AdaptStyleSheet(sheet);
        for (const char* foreign : {"%%", ":current", ":disabled", ":collapsed", ":expanded",
                                    " flow:", "behavior", "visibility: collapse;", "locale =="}) {
            EXPECT_THAT(adapted, Not(HasSubstr(foreign))) << name;
        }
        EXPECT_EQ(std::count(adapted.begin(), adapted.end(), '{'),
                  std::count(adapted.begin(), adapted.end(), '}'));
    }
    const std::string panel = AdaptStyleSheet(ReadSheet("panel.css"));
    EXPECT_THAT(panel, HasSubstr("li[wb-collapsed] > div:nth-child(2) {"));
    EXPECT_THAT(panel,
                HasSubstr(".panel-content:not([wb-visibility=\"visible\"]) { display: none; }"));
    EXPECT_THAT(panel, HasSubstr(":root[wb-locale=\"ru\"] .button-small {"));
    EXPECT_THAT(panel, HasSubstr("url(../../common/images/round-preloader.png) 50% 50% no-repeat"));
    EXPECT_THAT(panel, HasSubstr("popup.annot-details .separator {"));
}

}  // namespace
}  // namespace WebTests
