#include "documents/Document.h"

#include "documents/FaultPlan.h"
#include "documents/Records.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace Documents {

namespace {

// An edit that cannot be done; its text goes to the caller after the document's name.
class EditRefused : public std::runtime_error {
public:
    EditRefused(EditFailure failure, const std::string& text)
        : std::runtime_error{text}, failure_{failure}
    {
    }
    EditFailure Failure() const noexcept { return failure_; }

private:
    EditFailure failure_;
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

// The changes of annotations that come to a page, or go, with these entries, in ascending order.
template <class Entries>
std::vector<Change> ChangesOf(const std::vector<AnnotationRef>& annotations, const Entries& entries,
                              PDAnnotOperation operation, std::uint32_t page)
{
    std::vector<Change> changes;
    for (const AnnotationRef& annotation : annotations) {
        const auto entry = std::find_if(entries.begin(), entries.end(), [&](const auto& one) {
            return one.annotation == annotation;
        });
        const auto before = static_cast<std::uint32_t>(entry - entries.begin());
        const std::uint32_t gone = operation == PDAnnotOperation::kRemoved ? before : 0;
        changes.push_back(AnnotationChange{operation, page, annotation, entry->position - gone});
    }
    return changes;
}

// The page's array with the entries at the positions that they then have, in ascending order.
template <class Entries>
PageRef PageWith(const PageRef& page, const Entries& entries)
{
    const std::vector<AnnotationRef>& former = page.Get()->annotations;
    std::vector<AnnotationRef> annotations;
    annotations.reserve(former.size() + entries.size());
    auto entry = entries.begin();
    for (auto next = former.begin(); next != former.end() || entry != entries.end();) {
        const bool put = entry != entries.end() && entry->position == annotations.size();
        annotations.push_back(put ? (entry++)->annotation : *next++);
    }
    return MakePageRecord(std::move(annotations));
}

// The page's array without the entries at these positions, in ascending order.
template <class Entries>
PageRef PageWithout(const PageRef& page, const Entries& entries)
{
    const std::vector<AnnotationRef>& former = page.Get()->annotations;
    std::vector<AnnotationRef> annotations;
    annotations.reserve(former.size() - entries.size());
    auto entry = entries.begin();
    for (std::uint32_t position = 0; position < former.size(); ++position) {
        if (entry != entries.end() && entry->position == position) {
            ++entry;
        } else {
            annotations.push_back(former[position]);
        }
    }
    return MakePageRecord(std::move(annotations));
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
    return state_.load() != savedState_.load();
}

std::vector<std::string> Document::Warnings() const
{
    return {};
}

void Document::CheckPage(std::uint32_t page) const
{
    if (page >= PageCount()) {
        throw EditRefused(EditFailure::kGone, "there is no page " + std::to_string(page) +
                                                  ", the document has " +
                                                  std::to_string(PageCount()));
    }
}

AnnotationRef Document::CheckAnnotation(std::uint32_t page, const PageRef& snapshot,
                                        std::uint32_t position) const
{
    const auto& annotations = snapshot.Get()->annotations;
    if (position >= annotations.size() || !annotations[position]) {
        throw EditRefused(EditFailure::kGone, "there is no annotation " + std::to_string(position) +
                                                  " on page " + std::to_string(page) +
                                                  ", whose array has " +
                                                  std::to_string(annotations.size()) + " entries");
    }
    return annotations[position];
}

// --- History ---

// `prepare` gives the edit that is to be done, or nothing when it would change nothing.
template <class Prepare>
EditResult Document::RunEdit(Prepare prepare)
{
    const std::lock_guard lock{editMutex_};
    try {
        std::optional<Step> prepared = prepare();
        if (!prepared) {
            return {};
        }
        Steps step;
        step.push_back(std::move(*prepared));
        EditResult result{{}, step.back().apply()};
        step.back().state = ++lastState_;
        done_.splice(done_.end(), step);
        undone_.clear();
        NoteHistory();
        return result;
    } catch (const EditRefused& refused) {
        return {InOneLine(name_ + ": " + refused.what()), {}, refused.Failure()};
    } catch (const std::exception& error) {
        return {InOneLine(name_ + ": " + error.what()), {}, EditFailure::kOther};
    }
}

EditResult Document::Travel(Steps& from, Steps& to,
                            std::function<std::vector<Change>()> Step::*direction)
{
    const std::lock_guard lock{editMutex_};
    if (from.empty()) {
        return {};
    }
    try {
        EditResult result{{}, (from.back().*direction)()};
        to.splice(to.end(), from, std::prev(from.end()));
        NoteHistory();
        return result;
    } catch (const std::exception& error) {
        return {InOneLine(name_ + ": " + error.what()), {}, EditFailure::kOther};
    }
}

EditResult Document::Undo()
{
    return Travel(done_, undone_, &Step::revert);
}

EditResult Document::Redo()
{
    return Travel(undone_, done_, &Step::apply);
}

void Document::NoteHistory() noexcept
{
    const auto kindOf = [](const Steps& steps) {
        return steps.empty() ? std::nullopt : std::optional{steps.back().kind};
    };
    undoKind_ = kindOf(done_);
    redoKind_ = kindOf(undone_);
    state_ = done_.empty() ? 0 : done_.back().state;
    ++revision_;
}

// Adds entries to a page's array, or removes them. `concerned` has each annotation once, in the
// order of the events.
Document::Step Document::EntriesStep(EditKind kind, std::uint32_t page, std::vector<Entry> entries,
                                     std::vector<AnnotationRef> concerned, PreparedEdit prepared)
{
    const bool adds = kind == EditKind::kAdd;
    auto put = [this, page, entries, concerned, write = adds ? prepared.apply : prepared.revert] {
        std::vector<Change> changes = ChangesOf(concerned, entries, PDAnnotOperation::kAdded, page);
        PageRef changed = PageWith(KnownPage(page), entries);
        write();
        Publish(page, std::move(changed));
        return changes;
    };
    auto take = [this, page, entries = std::move(entries), concerned = std::move(concerned),
                 write = adds ? prepared.revert : prepared.apply] {
        std::vector<Change> changes =
            ChangesOf(concerned, entries, PDAnnotOperation::kRemoved, page);
        PageRef changed = PageWithout(KnownPage(page), entries);
        write();
        Publish(page, std::move(changed));
        return changes;
    };
    return adds ? Step{kind, std::move(put), std::move(take)}
                : Step{kind, std::move(take), std::move(put)};
}

std::vector<Change> Document::StoreContents(const AnnotationRef& annotation,
                                            const std::u16string& contents,
                                            const _PDDateRec& modified,
                                            const std::function<void()>& write)
{
    std::vector<Change> changes;
    for (const std::uint32_t page : PagesShowing(annotation.Get())) {
        changes.push_back(AnnotationChange{PDAnnotOperation::kPropertiesChanged, page, annotation});
    }
    const PropertyBlockRef former = annotation.Get()->properties.Load();
    AnnotationProperties properties = former->properties;
    properties.contents = contents;
    properties.modified = modified;
    PropertyBlockRef changed = MakePropertyBlock(std::move(properties), former->listAll);
    write();
    annotation.Get()->properties.Store(std::move(changed));
    return changes;
}

void Document::PutPage(std::uint32_t at, Page page, const std::function<void()>& write)
{
    {
        const std::lock_guard lock{pagesMutex_};
        pages_.reserve(pages_.size() + 1);  // nothing may fail after the writing
    }
    write();
    const std::lock_guard lock{pagesMutex_};
    pages_.insert(pages_.begin() + at, std::move(page));
    pageCount_.store(static_cast<std::uint32_t>(pages_.size()), std::memory_order_release);
}

Document::Page Document::TakePage(std::uint32_t at, const std::function<void()>& write)
{
    write();
    const std::lock_guard lock{pagesMutex_};
    Page taken = std::move(pages_[at]);
    pages_.erase(pages_.begin() + at);
    pageCount_.store(static_cast<std::uint32_t>(pages_.size()), std::memory_order_release);
    return taken;
}

// Inserts a page, or deletes it; `page` is what an insertion starts with.
Document::Step Document::PageStep(EditKind kind, std::uint32_t index, Page page,
                                  PreparedEdit prepared)
{
    const bool inserts = kind == EditKind::kInsertPage;
    const auto away = std::make_shared<Page>(std::move(page));  // while it is not in the document
    auto put = [this, index, away, write = inserts ? prepared.apply : prepared.revert] {
        std::vector<Change> changes{PagesChange{PDPageOperation::kInserted, {index}}};
        PutPage(index, *away, write);
        *away = {};
        return changes;
    };
    auto take = [this, index, away, write = inserts ? prepared.revert : prepared.apply] {
        std::vector<Change> changes{PagesChange{PDPageOperation::kDeleted, {index}}};
        *away = TakePage(index, write);
        return changes;
    };
    return inserts ? Step{kind, std::move(put), std::move(take)}
                   : Step{kind, std::move(take), std::move(put)};
}

void Document::RotatePages(std::uint32_t from, std::uint32_t to) noexcept
{
    const std::lock_guard lock{pagesMutex_};
    const auto first = pages_.begin() + std::min(from, to);
    const auto last = pages_.begin() + std::max(from, to) + 1;
    std::rotate(first, from < to ? first + 1 : last - 1, last);
}

// --- Edits ---

EditResult Document::AddAnnotation(std::uint32_t page, std::string_view subtype,
                                   std::u16string contents, std::optional<_PDRect> rect,
                                   const std::optional<Authorship>& authorship)
{
    return RunEdit([&]() -> std::optional<Step> {
        CheckPage(page);
        if (subtype.empty()) {
            throw EditRefused(EditFailure::kOther,
                              "an annotation without a subtype cannot be added");
        }
        const auto count =
            static_cast<std::uint32_t>(PageUnderEditLock(page).Get()->annotations.size());
        AnnotationProperties properties;
        properties.subtype = subtype;
        properties.contents = std::move(contents);
        properties.flags = kFlagPrint;
        if (authorship) {
            properties.title = authorship->author;
            properties.created = authorship->time;
            properties.modified = authorship->time;
        }
        properties.rect = rect ? *rect : PlaceOfItsOwn(PageBoxUnderEditLock(page), count);
        const AnnotationRef added = MakeAnnotationRecord(properties, listAll_);
        added.Get()->homePage = pages_[page].number;
        return EntriesStep(EditKind::kAdd, page, {{count, added}}, {added},
                           PrepareAdded(page, properties, added.Get()));
    });
}

EditResult Document::ChangeContents(std::uint32_t page, std::uint32_t position,
                                    std::u16string contents, std::optional<_PDDateRec> time)
{
    return RunEdit([&]() -> std::optional<Step> {
        CheckPage(page);
        const AnnotationRef annotation = CheckAnnotation(page, PageUnderEditLock(page), position);
        const PropertyBlockRef block = annotation.Get()->properties.Load();
        const AnnotationProperties& former = block->properties;
        if (former.contents == contents) {
            return std::nullopt;
        }
        PreparedEdit prepared = PrepareContents(page, position, contents, time);
        const auto store = [this, annotation](std::u16string text, const _PDDateRec& modified,
                                              std::function<void()> write) {
            return [this, annotation, text = std::move(text), modified, write = std::move(write)] {
                return StoreContents(annotation, text, modified, write);
            };
        };
        return Step{
            EditKind::kEdit,
            store(std::move(contents), time.value_or(former.modified), std::move(prepared.apply)),
            store(former.contents, former.modified, std::move(prepared.revert))};
    });
}

EditResult Document::RemoveAnnotation(std::uint32_t page, std::uint32_t position)
{
    return RunEdit([&]() -> std::optional<Step> {
        CheckPage(page);
        const PageRef snapshot = PageUnderEditLock(page);
        const AnnotationRef removed = CheckAnnotation(page, snapshot, position);
        const AnnotationRef popup = removed.Get()->popup;
        const std::vector<AnnotationRef>& annotations = snapshot.Get()->annotations;
        std::vector<Entry> entries;
        std::vector<std::uint32_t> positions;
        for (std::uint32_t index = 0; index < annotations.size(); ++index) {
            if (annotations[index] == removed || (popup && annotations[index] == popup)) {
                entries.push_back({index, annotations[index]});
                positions.push_back(index);
            }
        }
        std::vector<AnnotationRef> concerned{removed};
        if (std::any_of(entries.begin(), entries.end(),
                        [&](const Entry& entry) { return entry.annotation == popup; })) {
            concerned.push_back(popup);
        }
        return EntriesStep(EditKind::kRemove, page, std::move(entries), std::move(concerned),
                           PrepareRemoved(page, positions));
    });
}

EditResult Document::InsertPage(std::uint32_t at)
{
    return RunEdit([&]() -> std::optional<Step> {
        if (at > PageCount()) {
            throw EditRefused(EditFailure::kGone, "a page cannot be inserted at " +
                                                      std::to_string(at) + ", the document has " +
                                                      std::to_string(PageCount()));
        }
        const _PDRect box =
            PageCount() == 0 ? _PDRect{0, 0, 612, 792} : PageBoxUnderEditLock(at == 0 ? 0 : at - 1);
        return PageStep(EditKind::kInsertPage, at, {MakePageRecord({}), box, ++lastPageNumber_},
                        PreparePageInserted(at, box));
    });
}

EditResult Document::DeletePage(std::uint32_t page)
{
    return RunEdit([&]() -> std::optional<Step> {
        CheckPage(page);
        if (PageCount() == 1) {
            throw EditRefused(EditFailure::kLastPage,
                              "the only page of a document cannot be deleted");
        }
        return PageStep(EditKind::kDeletePage, page, {}, PreparePageDeleted(page));
    });
}

EditResult Document::MovePage(std::uint32_t from, std::uint32_t to)
{
    return RunEdit([&]() -> std::optional<Step> {
        CheckPage(from);
        CheckPage(to);
        if (from == to) {
            return std::nullopt;
        }
        const auto move = [this](std::uint32_t start, std::uint32_t end,
                                 std::function<void()> write) {
            return [this, start, end, write = std::move(write)] {
                std::vector<Change> changes{PagesChange{PDPageOperation::kMoved, {start, end}}};
                write();
                RotatePages(start, end);
                return changes;
            };
        };
        PreparedEdit prepared = PreparePageMoved(from, to);
        return Step{EditKind::kMovePage, move(from, to, std::move(prepared.apply)),
                    move(to, from, std::move(prepared.revert))};
    });
}

SaveResult Document::Save(const std::filesystem::path& path)
{
    const std::lock_guard lock{editMutex_};
    try {
        WriteFile(path);
        savedState_ = state_.load();
        return {};
    } catch (const std::exception& error) {
        return {InOneLine(path.string() + ": " + error.what())};
    }
}

BytesResult Document::WriteBytes(Encryption encryption)
{
    const std::lock_guard lock{editMutex_};
    try {
        return {{}, FileBytes(encryption)};
    } catch (const std::exception& error) {
        return {InOneLine(name_ + ": " + error.what()), {}};
    }
}

}  // namespace Documents
