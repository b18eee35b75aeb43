#include "TestPage.h"

namespace HtmlEngine::Test {

TestPage::TestPage(std::string_view body)
{
    document.Load("<!DOCTYPE html><html><head></head><body>" + std::string(body) +
                  "</body></html>");
}

ElementHandle TestPage::FindIn(ElementHandle root, std::string_view selector)
{
    ElementHandle match = kNoElement;
    EXPECT_EQ(document.SelectFirst(root, selector, match), Result::Success) << selector;
    EXPECT_NE(match, kNoElement) << selector;
    return match;
}

std::vector<ElementHandle> TestPage::All(ElementHandle root, std::string_view selector)
{
    std::vector<ElementHandle> matches;
    const auto collect = [&](ElementHandle match) {
        matches.push_back(match);
        return true;
    };
    EXPECT_EQ(document.SelectAll(root, selector, collect), Result::Success) << selector;
    ElementHandle first = kNoElement;
    EXPECT_EQ(document.SelectFirst(root, selector, first), Result::Success) << selector;
    EXPECT_EQ(first, matches.empty() ? kNoElement : matches.front()) << selector;
    return matches;
}

std::string TestPage::NameOf(ElementHandle element)
{
    return document.Attribute(element, "id").value_or(std::string(document.TagName(element)));
}

std::string TestPage::Names(ElementHandle root, std::string_view selector)
{
    std::string names;
    for (const ElementHandle match : All(root, selector)) {
        names += names.empty() ? "" : " ";
        names += NameOf(match);
    }
    return names;
}

ElementHandle TestPage::Body()
{
    return document.Child(document.Root(), 1);
}

std::string ItemHtml(int page, int index)
{
    return ItemHtml(page, index, {});
}

std::string ItemHtml(int page, int index, const ItemTexts& texts)
{
    const std::string name = std::to_string(page) + "_" + std::to_string(index);
    const std::string id = "7d3c2f51-" + name;
    const std::string inside = texts.contents.empty() ? texts.name + "\r\n"
                                                      : "<h3>" + texts.name + "</h3>\r\n\t<p>" +
                                                            texts.contents + "</p>\r\n\t";
    return "<li .highlight annot-name=\"" + name + "\" titleid=\"" + id + "\">\r\n\t" + inside +
           "<popup class=\"annot-details\" id=\"" + id +
           "\"><table class=\"props-table\" border=\"0\"><tr><td>" + texts.subject + ":</td><td>" +
           texts.title +
           "</td></tr></table><div class=\"separator\"></div><table class=\"props-table\" "
           "border=\"0\"><tr style=\"display:none;\"><td>:</td><td></td></tr></table></popup>"
           "\r\n</li>\r\n";
}

std::string PageItemHtml(int page, std::string_view items)
{
    const std::string number = std::to_string(page);
    return " <ul page-item=\"" + number + "\"><li page-index=\"" + number +
           "\"><div class=\"icon\" .document localize>Page</div><div><ul class=\"comments\">" +
           std::string(items) + "</ul></div></li></ul>";
}

std::string PageItemHtml(int page, int perPage)
{
    std::string items;
    for (int index = 0; index < perPage; ++index) {
        items += ItemHtml(page, index);
    }
    return PageItemHtml(page, items);
}

std::string ListHtml(int pages, int perPage)
{
    std::string html;
    for (int page = 0; page < pages; ++page) {
        html += PageItemHtml(page, perPage);
    }
    return html;
}

}  // namespace HtmlEngine::Test
