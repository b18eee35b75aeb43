// A document with short ways to ask and change it in tests. A selector that is meant to find an
// element and finds none fails the test at once.
#pragma once

#include "html-engine/Document.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace HtmlEngine::Test {

class TestPage {
public:
    explicit TestPage(std::string_view body = {});

    Document& operator*() { return document; }
    Document* operator->() { return &document; }

    // The first match in the page.
    ElementHandle Find(std::string_view selector) { return FindIn(document.Root(), selector); }
    ElementHandle FindIn(ElementHandle root, std::string_view selector);

    // All matches, named by their `id`, or else their tag name, with blanks between.
    std::string Names(ElementHandle root, std::string_view selector);
    std::string Names(std::string_view selector) { return Names(document.Root(), selector); }
    std::string NameOf(ElementHandle element);

    std::vector<ElementHandle> All(ElementHandle root, std::string_view selector);

    ElementHandle Body();
    std::string BodyHtml() { return document.InnerHtml(Body()); }

    Document document;
};

// A comment list: `pages` page items of `perPage` items each, with captions and tooltips.
std::string ListHtml(int pages, int perPage);
std::string PageItemHtml(int page, int perPage);
std::string ItemHtml(int page, int index);

// The texts of a document that stand in an item.
struct ItemTexts {
    std::string name = "Highlight";
    std::string contents = "one<br/>two";
    std::string subject = "Subject";
    std::string title = "Title";
};
std::string ItemHtml(int page, int index, const ItemTexts& texts);

// A page item around items.
std::string PageItemHtml(int page, std::string_view items);

}  // namespace HtmlEngine::Test
