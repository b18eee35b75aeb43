#include "documents/Document.h"

#include "documents/FaultPlan.h"
#include "documents/Records.h"

#include <algorithm>
#include <stdexcept>

namespace Documents {

namespace {

// An edit that cannot be done; its text goes to the caller after the document's name.
class EditRefused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::string InOneLine(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return text;
}

// Places the `ordinal`-th annotation that is added to a page: a grid from the top left, each
// further sheet of the grid a little aside from the one before.
_PDRect PlaceOfItsOwn(const _PDRect& box, std::uint32_t ordinal)
{
    constexpr std::uint32_t kColumns = 4;
    constexpr std::uint32_t kRows = 12;
    constexpr std::uint32_t kSheets = 16;
    const double cellWidth = (box.right - box.left) / (kColumns + 1);
    const double cellHeight = (box.top - box.bottom) / (kRows + 1);
    const std::uint32_t sheet = ordinal / (kColumns * kRows) % kSheets;
    const double shift = static_cast<double>(sheet) / (2 * kSheets);
    const double column = ordinal % kColumns + 0.5 + shift;
    const double row = ordinal / kColumns % kRows + 0.5 + shift;
    const double left = box.left + column * cellWidth;
    const double top = box.top - row * cellHeight;
    return {left, top - cellHeight * 0.4, left + cellWidth * 0.4, top};
}

std::vector<AnnotationChange> ChangesOn(const std::vector<std::uint32_t>& pages,
                                        PDAnnotOperation operation, const AnnotationRef& annotation)
{
    std::vector<AnnotationChange> changes;
    for (const std::uint32_t page : pages) {
        changes.push_back({operation, page, annotation});
    }
    return changes;
}

}  // namespace

Document::Document(std::string name, bool listAll) : name_{std::move(name)}, listAll_{listAll} {}

Document::~Document() = default;

std::uint32_t Document::PageCount() const noexcept
{
    return pageCount_.load(std::memory_order_acquire);
}

void Document::SetPages(std::vector<Page> pages)
{
    pages_ = std::move(pages);
    for (Page& page : pages_) {
        page.number = ++lastPageNumber_;
        NoteHome(page);
    }
    pageCount_.store(static_cast<std::uint32_t>(pages_.size()), std::memory_order_release);
}

void Document::SetPermissions(bool readOnly, bool deletionPermitted) noexcept
{
    readOnly_ = readOnly;
    deletionPermitted_ = deletionPermitted;
}

PageRef Document::KnownPage(std::uint32_t page) const
{
    const std::lock_guard lock{pagesMutex_};
    return page < pages_.size() ? pages_[page].snapshot : PageRef{};
}

PageRef Document::AcquirePage(std::uint32_t page)
{
    if (CheckFault(TableEntry::kAcquirePage) != kResultOk) {
        return {};
    }
    if (PageRef known = KnownPage(page)) {
        return known;
    }
    if (page >= PageCount()) {
        return {};
    }
    const std::lock_guard lock{editMutex_};
    return page < PageCount() ? PageUnderEditLock(page) : PageRef{};
}

PageRef Document::PageUnderEditLock(std::uint32_t page)
{
    PageRef snapshot = KnownPage(page);
    if (!snapshot) {
        snapshot = ReadPage(page);
        const std::lock_guard lock{pagesMutex_};
        pages_[page].snapshot = snapshot;
        NoteHome(pages_[page]);
    }
    return snapshot;
}

void Document::Publish(std::uint32_t page, PageRef snapshot)
{
    PageRef former;  // released after the lock: it may be the last reference to many annotations
    const std::lock_guard lock{pagesMutex_};
    former = std::exchange(pages_[page].snapshot, std::move(snapshot));
}

void Document::NoteHome(const Page& page)
{
    if (!page.snapshot) {
        return;
    }
    for (const AnnotationRef& entry : page.snapshot.Get()->annotations) {
        if (!entry || entry.Get()->homePage == page.number) {
            continue;
        }
        entry.Get()->onSeveralPages = entry.Get()->homePage != 0;
        if (entry.Get()->homePage == 0) {
            entry.Get()->homePage = page.number;
        }
    }
}

AnnotationRef Document::AnnotationAt(std::uint32_t page, std::uint32_t position)
{
    const PageRef snapshot = AcquirePage(page);
    if (!snapshot || position >= snapshot.Get()->annotations.size()) {
        return {};
    }
    return snapshot.Get()->annotations[position];
}

std::vector<std::uint32_t> Document::PagesShowing(const _PDAnnotRec* annotation) const
{
    std::vector<std::uint32_t> pages;
    const std::lock_guard lock{pagesMutex_};
    for (std::uint32_t page = 0; page < pages_.size(); ++page) {
        if (!annotation->onSeveralPages && pages_[page].number != annotation->homePage) {
            continue;
        }
        const _PDPageRec* const snapshot = pages_[page].snapshot.Get();
        if (snapshot != nullptr &&
            std::any_of(snapshot->annotations.begin(), snapshot->annotations.end(),
                        [&](const AnnotationRef& entry) { return entry.Get() == annotation; })) {
            pages.push_back(page);
        }
    }
    return pages;
}

std::uint32_t Document::PageIndexOf(const _PDAnnotRec* annotation) const
{
    if (annotation == nullptr) {
        return kPDNoPage;
    }
    const std::vector<std::uint32_t> pages = PagesShowing(annotation);
    return pages.empty() ? kPDNoPage : pages.front();
}

_PDRect Document::PageBoxUnderEditLock(std::uint32_t page)
{
    {
        const std::lock_guard lock{pagesMutex_};
        if (pages_[page].box) {
            return *pages_[page].box;
        }
    }
    const _PDRect box = ReadPageBox(page);
    const std::lock_guard lock{pagesMutex_};
    pages_[page].box = box;
    return box;
}

std::optional<_PDRect> Document::PageBox(std::uint32_t page)
{
    {
        const std::lock_guard lock{pagesMutex_};
        if (page >= pages_.size() || pages_[page].box) {
            return page < pages_.size() ? pages_[page].box : std::nullopt;
        }
    }
    const std::lock_guard lock{editMutex_};
    return page < PageCount() ? std::optional{PageBoxUnderEditLock(page)} : std::nullopt;
}

bool Document::ReadOnly() const noexcept
{
    const Forced forced = forcedReadOnly_.load();
    return forced == Forced::kNothing ? readOnly_ : forced == Forced::kTrue;
}

void Document::ForceReadOnly(std::optional<bool> readOnly) noexcept
{
    forcedReadOnly_ = !readOnly ? Forced::kNothing : *readOnly ? Forced::kTrue : Forced::kFalse;
}

bool Document::AnnotationDeletionPermitted() const noexcept
{
    const Forced forced = forcedDeletion_.load();
    return forced == Forced::kNothing ? deletionPermitted_ : forced == Forced::kTrue;
}

void Document::ForceAnnotationDeletionPermitted(std::optional<bool> permitted) noexcept
{
    forcedDeletion_ = !permitted ? Forced::kNothing : *permitted ? Forced::kTrue : Forced::kFalse;
}

std::string Document::DeletionRefusal(const _PDAnnotRec* annotation)
{
    if (annotation == nullptr) {
        return {};
    }
    const std::uint32_t flags = annotation->properties.Load()->properties.flags;
    if ((flags & kFlagReadOnly) != 0) {
        return "the annotation is read-only";
    }
    if ((flags & kFlagLocked) != 0) {
        return "the annotation is locked";
    }
    return {};
}

bool Document::Modified() const noexcept
{
    return revision_.load() != savedRevision_.load();
}

std::vector<std::string> Document::Warnings() const
{
    return {};
}

void Document::CheckPage(std::uint32_t page) const
{
    if (page >= PageCount()) {
        throw EditRefused("there is no page " + std::to_string(page) + ", the document has " +
                          std::to_string(PageCount()));
    }
}

AnnotationRef Document::CheckAnnotation(std::uint32_t page, const PageRef& snapshot,
                                        std::uint32_t position) const
{
    const auto& annotations = snapshot.Get()->annotations;
    if (position >= annotations.size() || !annotations[position]) {
        throw EditRefused("there is no annotation " + std::to_string(position) + " on page " +
                          std::to_string(page) + ", whose array has " +
                          std::to_string(annotations.size()) + " entries");
    }
    return annotations[position];
}

template <class Work> EditResult Document::RunEdit(Work work)
{
    const std::lock_guard lock{editMutex_};
    try {
        EditResult result{{}, work()};
        if (!result.changes.empty()) {
            revision_.fetch_add(1);
        }
        return result;
    } catch (const std::exception& error) {
        return {InOneLine(name_ + ": " + error.what()), {}};
    }
}

EditResult Document::AddAnnotation(std::uint32_t page, std::string_view subtype,
                                   std::u16string contents, std::optional<_PDRect> rect)
{
    return RunEdit([&]() -> std::vector<Change> {
        CheckPage(page);
        if (subtype.empty()) {
            throw EditRefused("an annotation without a subtype cannot be added");
        }
        const PageRef snapshot = PageUnderEditLock(page);
        std::vector<AnnotationRef> annotations = snapshot.Get()->annotations;
        AnnotationProperties properties;
        properties.subtype = subtype;
        properties.contents = std::move(contents);
        properties.flags = kFlagPrint;
        properties.rect = rect ? *rect
                               : PlaceOfItsOwn(PageBoxUnderEditLock(page),
                                               static_cast<std::uint32_t>(annotations.size()));
        const AnnotationRef added = MakeAnnotationRecord(properties, listAll_);
        annotations.push_back(added);
        PageRef changed = MakePageRecord(std::move(annotations));
        added.Get()->homePage = pages_[page].number;
        WriteAdded(page, properties, added.Get());
        Publish(page, std::move(changed));
        return {AnnotationChange{PDAnnotOperation::kAdded, page, added}};
    });
}

EditResult Document::ChangeContents(std::uint32_t page, std::uint32_t position,
                                    std::u16string contents)
{
    return RunEdit([&]() -> std::vector<Change> {
        CheckPage(page);
        const AnnotationRef annotation = CheckAnnotation(page, PageUnderEditLock(page), position);
        const PropertyBlockRef former = annotation.Get()->properties.Load();
        if (former->properties.contents == contents) {
            return {};
        }
        AnnotationProperties properties = former->properties;
        properties.contents = std::move(contents);
        PropertyBlockRef changed = MakePropertyBlock(std::move(properties), former->listAll);
        WriteContents(page, position, changed->properties.contents);
        annotation.Get()->properties.Store(std::move(changed));
        const auto changes = ChangesOn(PagesShowing(annotation.Get()),
                                       PDAnnotOperation::kPropertiesChanged, annotation);
        return {changes.begin(), changes.end()};
    });
}

EditResult Document::RemoveAnnotation(std::uint32_t page, std::uint32_t position)
{
    return RunEdit([&]() -> std::vector<Change> {
        CheckPage(page);
        const PageRef snapshot = PageUnderEditLock(page);
        const AnnotationRef removed = CheckAnnotation(page, snapshot, position);
        const AnnotationRef popup = removed.Get()->popup;
        std::vector<AnnotationRef> kept;
        std::vector<std::uint32_t> positions;
        bool popupRemoved = false;
        for (const AnnotationRef& entry : snapshot.Get()->annotations) {
            const bool isPopup = popup && entry == popup;
            if (entry == removed || isPopup) {
                positions.push_back(
                    static_cast<std::uint32_t>(&entry - snapshot.Get()->annotations.data()));
                popupRemoved = popupRemoved || isPopup;
            } else {
                kept.push_back(entry);
            }
        }
        PageRef changed = MakePageRecord(std::move(kept));
        WriteRemoved(page, positions);
        Publish(page, std::move(changed));
        std::vector<Change> changes{AnnotationChange{PDAnnotOperation::kRemoved, page, removed}};
        if (popupRemoved) {
            changes.push_back(AnnotationChange{PDAnnotOperation::kRemoved, page, popup});
        }
        return changes;
    });
}

EditResult Document::InsertPage(std::uint32_t at)
{
    return RunEdit([&]() -> std::vector<Change> {
        if (at > PageCount()) {
            throw EditRefused("a page cannot be inserted at " + std::to_string(at) +
                              ", the document has " + std::to_string(PageCount()));
        }
        const _PDRect box = PageCount() == 0 ? _PDRect{0, 0, 612, 792}
                                             : PageBoxUnderEditLock(at == 0 ? 0 : at - 1);
        Page page{MakePageRecord({}), box, ++lastPageNumber_};
        WritePageInserted(at, box);
        const std::lock_guard lock{pagesMutex_};
        pages_.insert(pages_.begin() + at, std::move(page));
        pageCount_.store(static_cast<std::uint32_t>(pages_.size()), std::memory_order_release);
        return {PagesChange{PDPageOperation::kInserted, {at}}};
    });
}

EditResult Document::DeletePage(std::uint32_t page)
{
    return RunEdit([&]() -> std::vector<Change> {
        CheckPage(page);
        if (PageCount() == 1) {
            throw EditRefused("the only page of a document cannot be deleted");
        }
        WritePageDeleted(page);
        Page deleted;  // released after the lock
        const std::lock_guard lock{pagesMutex_};
        deleted = std::move(pages_[page]);
        pages_.erase(pages_.begin() + page);
        pageCount_.store(static_cast<std::uint32_t>(pages_.size()), std::memory_order_release);
        return {PagesChange{PDPageOperation::kDeleted, {page}}};
    });
}

EditResult Document::MovePage(std::uint32_t from, std::uint32_t to)
{
    return RunEdit([&]() -> std::vector<Change> {
        CheckPage(from);
        CheckPage(to);
        if (from == to) {
            return {};
        }
        WritePageMoved(from, to);
        const std::lock_guard lock{pagesMutex_};
        const auto first = pages_.begin() + std::min(from, to);
        const auto last = pages_.begin() + std::max(from, to) + 1;
        std::rotate(first, from < to ? first + 1 : last - 1, last);
        return {PagesChange{PDPageOperation::kMoved, {from, to}}};
    });
}

SaveResult Document::Save(const std::filesystem::path& path)
{
    const std::lock_guard lock{editMutex_};
    try {
        WriteFile(path);
        savedRevision_ = revision_.load();
        return {};
    } catch (const std::exception& error) {
        return {InOneLine(path.string() + ": " + error.what())};
    }
}

}  // namespace Documents
