// The reference for list rendering: the same list put together with plain appends. Templates are
// split and values are fetched beforehand, so that what is timed is appending alone.
#pragma once

#include "ListRenderer.h"

#include <string>
#include <vector>

class ReferenceList {
public:
    // Prepares the list of a document.
    explicit ReferenceList(ListRenderer& renderer);

    // The list, appended to one string that is reserved first.
    std::wstring Build() const;

private:
    // A template as literal texts with, after each but the last, the number of a value.
    struct Piece {
        std::wstring literal;
        int value;
    };
    using Pieces = std::vector<Piece>;
    using Values = std::vector<std::wstring>;

    struct Item {
        bool simple;
        Values values;
        Values tooltip;
    };
    struct Page {
        Values values;
        std::vector<Item> items;
    };

    static Pieces Split(const wchar_t* path, const std::vector<const wchar_t*>& placeholders);
    static void Append(std::wstring& target, const Pieces& pieces, const Values& values);
    void AppendItem(std::wstring& target, const Item& item) const;

    Pieces page_;
    Pieces item_;
    Pieces simpleItem_;
    Pieces tooltip_;
    std::vector<Page> pages_;
    std::size_t size_ = 0;
};
