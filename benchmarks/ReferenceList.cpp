#include "ReferenceList.h"

ReferenceList::ReferenceList(std::wstring_view html) : size_(html.size())
{
    while (!html.empty()) {
        const bool isTag = html.front() == L'<';
        const std::size_t next = html.find(isTag ? L'>' : L'<');
        const std::size_t length = next == html.npos ? html.size() : next + (isTag ? 1 : 0);
        pieces_.push_back(*texts_.emplace(html.substr(0, length)).first);
        html.remove_prefix(length);
    }
}

std::wstring ReferenceList::Build() const
{
    std::wstring list;
    list.reserve(size_);
    for (const std::wstring_view piece : pieces_) {
        list.append(piece);
    }
    return list;
}
