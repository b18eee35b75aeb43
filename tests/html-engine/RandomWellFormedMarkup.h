// Random markup without mistakes, by the way it is made: blocks outside of paragraphs, list items
// in lists, rows and cells in tables, end tags in order, some of those left out that may be.
#pragma once

#include "RandomSelector.h"

#include <string>
#include <string_view>
#include <vector>

namespace HtmlEngine::Test {

class RandomWellFormedMarkup {
public:
    explicit RandomWellFormedMarkup(Random& random) : random_(random) {}

    // For a place like the inside of a `div`.
    std::string Next();

private:
    void AddContent(int depth);
    void AddElement(std::string_view name, int depth);
    void AddList(int depth);
    void AddTable(int depth);
    void AddRows(int depth);
    void AddVoid(std::string_view name);
    void AddText();
    void AddSpace();
    void AddStartTag(std::string_view name, std::string_view end);
    void AddAttribute(std::string_view name);
    void AddEndTag(std::string_view name);
    // The name, perhaps with capital letters.
    std::string Cased(std::string_view name);

    bool IsOpen(std::string_view name, std::size_t times = 1) const;
    bool Coin(std::size_t sides = 2) { return Pick(random_, sides) == 0; }
    template <typename Items>
    std::string_view AnyOf(const Items& items)
    {
        return items[Pick(random_, std::size(items))];
    }

    Random& random_;
    std::string html_;
    std::vector<std::string_view> open_;
};

}  // namespace HtmlEngine::Test
