#include "driver/PanelReader.h"

#include "driver/PanelReport.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

using namespace Workbench;

constexpr const char* kTooltip =
    R"(<popup class="annot-details" id="t1"><table class="props-table"><tr><td>Sub:ject::</td>)"
    R"(<td> Title</td></tr></table><div class="separator"></div><table class="props-table">)"
    R"(<tr style="display:block;"><td>Date created:</td><td>2024-05-01 10:00:00</td></tr>)"
    R"(<tr style="display:none;"><td>:</td><td></td></tr></table></popup>)";

std::string PageWith(const std::string& results)
{
    return R"(<body><div class="panel-content" doc-view-addr="7"></div>)"
           R"(<div class="panel-content" doc-view-addr="-7" style="visibility: visible">)"
           R"(<button id="expand-all"></button><button id="collapse-all"></button>)"
           R"(<button id="reply"></button><button id="delete"></button>)"
           R"(<button id="move-top"></button><button id="move-bottom"></button>)"
           R"(<div class="picture" preloader style="visibility: collapse"></div>)"
           R"(<div class="results-container">)" +
           results + "</div></div></body>";
}

std::string ReadAsJson(const std::string& results, const char* changeSelector = nullptr,
                       std::uint32_t state = 0)
{
    HtmlEngine::Document page;
    page.LoadPage(PageWith(results));
    if (changeSelector != nullptr) {
        page.SelectAll(page.Root(), changeSelector, [&](HtmlEngine::ElementHandle element) {
            page.SetState(element, state, 0);
            return true;
        });
    }
    const auto view = ReadPanelView(page, "-7");
    EXPECT_TRUE(view.has_value());
    EXPECT_EQ(FindVisibleContainer(page), FindContainer(page, "-7"));
    EXPECT_FALSE(ReadPanelView(page, "8").has_value());
    return view ? ToLine(ToJson(*view, "a.pdf")) : "";
}

constexpr const char* kHead = R"({"file":"a.pdf","key":"-7","visible":true,"loading":false,)";

std::string Buttons(const std::string& disabled = "")
{
    std::string text = R"("buttons":{)";
    for (const char* const button : kPanelButtons) {
        text += std::string(text.back() == '{' ? "\"" : ",\"") + button + R"(":{"disabled":)" +
                (disabled == button ? "true}" : "false}");
    }
    return text + "},";
}

TEST(PanelReader, ReadsBothFormsOfAnItem)
{
    const std::string results =
        R"(<ul page-item="2"><li page-index="2"><div class="icon document">Page 3</div><div>)"
        R"(<ul class="comments"><li .highlight annot-name="2_1" titleid="t1"> <h3>High</h3>)"
        R"(<p>a<br/>b &lt;c&gt;</p> )" +
        std::string(kTooltip) + R"(</li><li annot-name="2_4" titleid="other">
  Link
  )" + kTooltip +
        "</li></ul></div></li></ul>";
    const std::string tooltip =
        R"("subject":"Sub:ject:","title":" Title","created":"2024-05-01 10:00:00","modified":null}})";
    EXPECT_EQ(ReadAsJson(results, "li[annot-name=\"2_1\"]", HtmlEngine::ElementState::kCurrent),
              std::string(kHead) + R"("noItems":null,)" + Buttons() +
                  R"("pages":[{"index":2,"caption":"Page 3","state":"none","items":[)"
                  R"({"annotName":"2_1","classes":["highlight"],"current":true,"title":"High",)"
                  R"("contents":"a<br>b &lt;c&gt;","tooltip":{"linked":true,)" +
                  tooltip +
                  R"(,{"annotName":"2_4","classes":[],"current":false,"title":"Link",)"
                  R"("contents":null,"tooltip":{"linked":false,)" +
                  tooltip + "]}]}");
}

TEST(PanelReader, ReadsMessageStatesAndButtons)
{
    EXPECT_EQ(ReadAsJson("<p id=\"NoItemsMessage\">Nothing &amp; nobody</p>", "#delete",
                         HtmlEngine::ElementState::kDisabled),
              std::string(kHead) + R"("noItems":"Nothing & nobody",)" + Buttons("delete") +
                  R"("pages":[]})");
    const std::string page = R"(<ul page-item="0"><li page-index="0"></li></ul>)";
    for (const auto& [state, name] :
         {std::pair(HtmlEngine::ElementState::kExpanded, "expanded"),
          std::pair(HtmlEngine::ElementState::kCollapsed, "collapsed")}) {
        EXPECT_EQ(ReadAsJson(page, "li[page-index]", state),
                  std::string(kHead) + R"("noItems":null,)" + Buttons() +
                      R"("pages":[{"index":0,"caption":"","state":")" + name +
                      R"(","items":[]}]})");
    }
}

// Contents are markup of strangers: nothing in them may end the reading.
TEST(PanelReader, ReadsOnThroughMarkupThatContentsLeaveOpen)
{
    const std::string json = ReadAsJson(
        R"(<ul page-item="0"><li page-index="0"><div class="icon">Page 1</div><div>)"
        R"(<ul class="comments"><li annot-name="0_0" titleid="t1"><h3>T</h3><p>an <b>open tag</p>)" +
        std::string(kTooltip) +
        R"(</li><li annot-name="0_1" titleid="t1"><h3>U</h3><p>x</p></li></ul></div></li></ul>)");
    EXPECT_NE(json.find(R"("contents":"an <b>open tag</b>","tooltip":{"linked":true,)"),
              std::string::npos)
        << json;
    EXPECT_NE(json.find(R"("annotName":"0_1")"), std::string::npos) << json;
}

TEST(PanelReader, FormsTheKeyOfTheLowBitsOfAnAddress)
{
    const std::pair<std::uintptr_t, const char*> rows[] = {
        {0x7FFF00000010u, "16"},
        {0x100000010u, "16"},
        {0x1FFFFFFFFu, "-1"},
        {0x80000000u, "-2147483648"},
    };
    for (const auto& [address, key] : rows) {
        EXPECT_EQ(ContainerKey(reinterpret_cast<const void*>(address)), key);
    }
}

}  // namespace
