// The reference for list rendering: the same list put together with plain appends. Its pieces, the
// tags and the texts between them, are cut beforehand, so that what is timed is appending alone;
// pieces of the same text are one in memory, as those of the templates are.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

class ReferenceList {
public:
    explicit ReferenceList(std::wstring_view html);

    // The list, appended to one string that is reserved first.
    std::wstring Build() const;

private:
    std::unordered_set<std::wstring> texts_;
    std::vector<std::wstring_view> pieces_;
    std::size_t size_;
};
