#include "Containment.h"

#include "html-engine/internal/Ascii.h"

namespace HtmlEngine::Test {

namespace {

constexpr int kPages = 3;
constexpr int kItems = 3;

bool IsHostile(int page, int index)
{
    return (page == 0 && index == 1) || (page == 1 && index == kItems - 1);
}

class List {
public:
    explicit List(const ItemTexts& texts) : page_("<div class=results-container></div><i></i>")
    {
        std::string html;
        for (int page = 0; page < kPages; ++page) {
            std::string items;
            for (int index = 0; index < kItems; ++index) {
                items +=
                    IsHostile(page, index) ? ItemHtml(page, index, texts) : ItemHtml(page, index);
            }
            html += PageItemHtml(page, items);
        }
        const ElementHandle results = page_->Child(page_.Body(), 0);
        page_->SetHtml(results, html, InsertPosition::ReplaceContent);
    }

    TestPage& Page() { return page_; }

    // The list of items of a page; kNoElement when the way there is not what it must be.
    ElementHandle Items(int page)
    {
        const ElementHandle results = page_->Child(page_.Body(), 0);
        if (page_->ChildCount(page_.Body()) != 2 || page_->ChildCount(results) != kPages) {
            return kNoElement;
        }
        const ElementHandle pageItem = page_->Child(results, static_cast<std::size_t>(page));
        const ElementHandle box = page_->Child(page_->Child(pageItem, 0), 1);
        return page_->ChildCount(pageItem) == 1 ? page_->Child(box, 0) : kNoElement;
    }

private:
    TestPage page_;
};

}  // namespace

std::string SpoiltBy(const ItemTexts& texts)
{
    List plain{ItemTexts()};
    List list(texts);
    for (int page = 0; page < kPages; ++page) {
        const ElementHandle items = list.Items(page);
        if (list.Page()->ChildCount(items) != kItems) {
            return "the items of page " + std::to_string(page);
        }
        for (int index = 0; index < kItems; ++index) {
            const auto at = static_cast<std::size_t>(index);
            const ElementHandle item = list.Page()->Child(items, at);
            const std::string name = std::to_string(page) + "_" + std::to_string(index);
            const std::string html = list.Page()->OuterHtml(item);
            if (list.Page()->Attribute(item, "annot-name") != name) {
                return "the place of item " + name;
            }
            if (IsHostile(page, index)) {
                list.Page()->SetHtml(item, ItemHtml(page, index, texts),
                                     InsertPosition::ReplaceElement);
                if (list.Page()->OuterHtml(list.Page()->Child(items, at)) != html) {
                    return "item " + name + " by itself";
                }
            } else if (html !=
                       plain.Page()->OuterHtml(plain.Page()->Child(plain.Items(page), at))) {
                return "item " + name;
            }
        }
    }
    return {};
}

bool SpellsOutItsEnd(const ItemTexts& texts)
{
    const std::string tags = Internal::AsciiLower(texts.subject + texts.title);
    const std::size_t tooltipEnd = tags.find("</popup");
    return tooltipEnd != std::string::npos && tags.find("</li", tooltipEnd) != std::string::npos;
}

}  // namespace HtmlEngine::Test
