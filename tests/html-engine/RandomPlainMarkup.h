#pragma once

// Random markup that is plain by the way it is made, out of everything that may be in plain markup;
// and the same made carelessly and with small damages.

#include <string>
#include <string_view>
#include <vector>

#include "RandomSelector.h"

namespace HtmlEngine::Test {

class RandomPlainMarkup {
public:
    explicit RandomPlainMarkup(Random& random) : random_(random) {}

    /// For a place like the inside of a `div`.
    std::string Plain();

    /// Elements that are closed in order, but may stand where they must not.
    std::string Careless();

    /// Anything may have become of it.
    std::string Damaged();

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
    /// The name, perhaps with capital letters.
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
    bool isCareless_ = false;
    std::vector<std::string_view> open_;
};

}  // namespace HtmlEngine::Test
