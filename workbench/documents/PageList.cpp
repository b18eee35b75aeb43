#include "documents/PageList.h"

#include "documents/Records.h"

#include <algorithm>
#include <utility>

namespace Documents {

namespace {

// Records a page as the home of an annotation that it shows first.
void NoteHome(const AnnotationRef& annotation, std::uint64_t page)
{
    if (annotation && annotation.Get()->homePage == 0) {
        annotation.Get()->homePage = page;
    } else if (annotation && annotation.Get()->homePage != page) {
        annotation.Get()->onSeveralPages = true;
    }
}

}  // namespace

PageRef PageWith(const PageRef& page, const std::vector<PlacedAnnotation>& added)
{
    std::vector<AnnotationRef> annotations = page.Get()->annotations;
    annotations.reserve(annotations.size() + added.size());
    for (const PlacedAnnotation& entry : added) {
        annotations.insert(annotations.begin() + entry.position, entry.annotation);
    }
    return MakePageRecord(std::move(annotations));
}

PageRef PageWithout(const PageRef& page, const std::vector<PlacedAnnotation>& removed)
{
    std::vector<AnnotationRef> annotations = page.Get()->annotations;
    for (auto entry = removed.rbegin(); entry != removed.rend(); ++entry) {
        annotations.erase(annotations.begin() + entry->position);
    }
    return MakePageRecord(std::move(annotations));
}

void PageList::Assign(std::vector<Page> pages)
{
    const std::lock_guard lock{mutex_};
    pages_ = std::move(pages);
    for (Page& page : pages_) {
        NumberAndNoteHomes(page);
    }
}

std::uint32_t PageList::Count() const
{
    const std::lock_guard lock{mutex_};
    return static_cast<std::uint32_t>(pages_.size());
}

PageRef PageList::Snapshot(std::uint32_t page) const
{
    const std::lock_guard lock{mutex_};
    return page < pages_.size() ? pages_[page].snapshot : PageRef{};
}

void PageList::SetSnapshot(std::uint32_t page, PageRef snapshot,
                           const std::vector<PlacedAnnotation>& added)
{
    PageRef former;  // released after the lock: it may be the last reference to many annotations
    const std::lock_guard lock{mutex_};
    former = std::exchange(pages_[page].snapshot, std::move(snapshot));
    if (!former) {
        NumberAndNoteHomes(pages_[page]);
    }
    for (const PlacedAnnotation& entry : added) {
        NoteHome(entry.annotation, pages_[page].number);
    }
}

std::optional<_PDRect> PageList::Box(std::uint32_t page) const
{
    const std::lock_guard lock{mutex_};
    return page < pages_.size() ? pages_[page].box : std::nullopt;
}

void PageList::SetBox(std::uint32_t page, const _PDRect& box)
{
    const std::lock_guard lock{mutex_};
    pages_[page].box = box;
}

std::vector<std::uint32_t> PageList::Showing(const _PDAnnotRec* annotation) const
{
    std::vector<std::uint32_t> showing;
    const std::lock_guard lock{mutex_};
    for (std::uint32_t page = 0; page < pages_.size(); ++page) {
        if (!annotation->onSeveralPages && pages_[page].number != annotation->homePage) {
            continue;
        }
        const _PDPageRec* const snapshot = pages_[page].snapshot.Get();
        if (snapshot != nullptr &&
            std::any_of(snapshot->annotations.begin(), snapshot->annotations.end(),
                        [&](const AnnotationRef& entry) { return entry.Get() == annotation; })) {
            showing.push_back(page);
        }
    }
    return showing;
}

void PageList::Reserve()
{
    const std::lock_guard lock{mutex_};
    pages_.reserve(pages_.size() + 1);
}

void PageList::Insert(std::uint32_t at, Page page)
{
    const std::lock_guard lock{mutex_};
    NumberAndNoteHomes(page);
    pages_.insert(pages_.begin() + at, std::move(page));
}

Page PageList::Take(std::uint32_t at)
{
    const std::lock_guard lock{mutex_};
    Page taken = std::move(pages_[at]);
    pages_.erase(pages_.begin() + at);
    return taken;
}

void PageList::Move(std::uint32_t from, std::uint32_t to)
{
    const std::lock_guard lock{mutex_};
    const auto first = pages_.begin() + std::min(from, to);
    const auto last = pages_.begin() + std::max(from, to) + 1;
    std::rotate(first, from < to ? first + 1 : last - 1, last);
}

void PageList::NumberAndNoteHomes(Page& page)
{
    page.number = page.number == 0 ? ++lastNumber_ : page.number;
    if (!page.snapshot) {
        return;
    }
    for (const AnnotationRef& entry : page.snapshot.Get()->annotations) {
        NoteHome(entry, page.number);
    }
}

}  // namespace Documents
