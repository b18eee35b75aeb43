#include "documents/Document.h"

#include "documents/AnnotationSyntax.h"
#include "documents/FaultPlan.h"
#include "documents/Records.h"
#include "documents/UniqueName.h"

#include <algorithm>
#include <new>
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

std::string ReasonOf(const std::exception& error)
{
    const bool lacksMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
    return lacksMemory ? "not enough memory" : error.what();
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
std::vector<Change> ChangesOf(const std::vector<AnnotationRef>& annotations,
                              const std::vector<PlacedAnnotation>& entries,
                              PDAnnotOperation operation, std::uint32_t page)
{
    std::vector<Change> changes;
    for (const AnnotationRef& annotation : annotations) {
        const auto entry =
            std::find_if(entries.begin(), entries.end(),
                         [&](const PlacedAnnotation& one) { return one.annotation == annotation; });
        const auto before = static_cast<std::uint32_t>(entry - entries.begin());
        const std::uint32_t gone = operation == PDAnnotOperation::kRemoved ? before : 0;
        changes.push_back(AnnotationChange{operation, page, annotation, entry->position - gone});
    }
    return changes;
}

}  // namespace

Document::Document(std::string name, bool listAll) : name_{std::move(name)}, listAll_{listAll} {}

Document::~Document() = default;

void Document::SetPermissions(bool readOnly, bool deletionPermitted) noexcept
{
    readOnly_ = readOnly;
    deletionPermitted_ = deletionPermitted;
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
        pages_.SetSnapshot(page, snapshot);
    }
    return snapshot;
}

AnnotationRef Document::AnnotationAt(std::uint32_t page, std::uint32_t position)
{
    const PageRef snapshot = AcquirePage(page);
    if (!snapshot || position >= snapshot.Get()->annotations.size()) {
        return {};
    }
    return snapshot.Get()->annotations[position];
}

std::uint32_t Document::PageIndexOf(const _PDAnnotRec* annotation) const
{
    if (annotation == nullptr) {
        return kPDNoPage;
    }
    const std::vector<std::uint32_t> pages = pages_.Showing(annotation);
    return pages.empty() ? kPDNoPage : pages.front();
}

_PDRect Document::PageBoxUnderEditLock(std::uint32_t page)
{
    if (const std::optional<_PDRect> known = pages_.Box(page)) {
        return *known;
    }
    const _PDRect box = ReadPageBox(page);
    pages_.SetBox(page, box);
    return box;
}

std::optional<_PDRect> Document::PageBox(std::uint32_t page)
{
    const std::optional<_PDRect> known = pages_.Box(page);
    if (known || page >= PageCount()) {
        return known;
    }
    const std::lock_guard lock{editMutex_};
    return page < PageCount() ? std::optional{PageBoxUnderEditLock(page)} : std::nullopt;
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

void Document::RequireEditable() const
{
    if (!refusal_.empty()) {
        throw EditRefused(EditFailure::kOther, refusal_);
    }
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

// `edit` gives the changes to fire.
template <class Edit>
EditResult Document::RunEdit(const Edit& edit)
{
    const std::lock_guard lock{editMutex_};
    try {
        RequireEditable();
        return {{}, edit()};
    } catch (const EditRefused& refused) {
        return {InOneLine(name_ + ": " + refused.what()), {}, refused.Failure()};
    } catch (const std::exception& error) {
        return {InOneLine(name_ + ": " + ReasonOf(error)), {}, EditFailure::kOther};
    }
}

EditResult Document::Undo()
{
    return RunEdit([this] { return history_.Undo(); });
}

EditResult Document::Redo()
{
    return RunEdit([this] { return history_.Redo(); });
}

// Adds entries to a page's array, or removes them. `concerned` has each annotation once, in the
// order of the events.
Document::Step Document::EntriesStep(EditKind kind, std::uint32_t page,
                                     std::vector<PlacedAnnotation> entries,
                                     std::vector<AnnotationRef> concerned, PreparedEdit prepared)
{
    const bool adds = kind == EditKind::kAdd;
    auto put = [this, page, entries, concerned, write = adds ? prepared.apply : prepared.revert] {
        std::vector<Change> changes = ChangesOf(concerned, entries, PDAnnotOperation::kAdded, page);
        PageRef changed = PageWith(KnownPage(page), entries);
        write();
        pages_.SetSnapshot(page, std::move(changed), entries);
        return changes;
    };
    auto take = [this, page, entries = std::move(entries), concerned = std::move(concerned),
                 write = adds ? prepared.revert : prepared.apply] {
        std::vector<Change> changes =
            ChangesOf(concerned, entries, PDAnnotOperation::kRemoved, page);
        PageRef changed = PageWithout(KnownPage(page), entries);
        write();
        pages_.SetSnapshot(page, std::move(changed));
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
    for (const std::uint32_t page : pages_.Showing(annotation.Get())) {
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

// Inserts a page, or deletes it; `page` is what an insertion starts with.
Document::Step Document::PageStep(EditKind kind, std::uint32_t index, Page page,
                                  PreparedEdit prepared)
{
    const bool inserts = kind == EditKind::kInsertPage;
    const auto away = std::make_shared<Page>(std::move(page));  // while it is not in the document
    auto put = [this, index, away, write = inserts ? prepared.apply : prepared.revert] {
        std::vector<Change> changes{PagesChange{PDPageOperation::kInserted, {index}}};
        pages_.Reserve();  // nothing may fail after the writing
        write();
        pages_.Insert(index, std::exchange(*away, {}));
        return changes;
    };
    auto take = [this, index, away, write = inserts ? prepared.revert : prepared.apply] {
        std::vector<Change> changes{PagesChange{PDPageOperation::kDeleted, {index}}};
        write();
        *away = pages_.Take(index);
        return changes;
    };
    return inserts ? Step{kind, std::move(put), std::move(take)}
                   : Step{kind, std::move(take), std::move(put)};
}

// --- Edits ---

EditResult Document::AddAnnotation(std::uint32_t page, std::string_view subtype,
                                   std::u16string contents, std::optional<_PDRect> rect,
                                   const std::optional<Authorship>& authorship,
                                   std::vector<Quad> quads)
{
    return RunEdit([&]() -> std::vector<Change> {
        CheckPage(page);
        if (subtype.empty()) {
            throw EditRefused(EditFailure::kOther,
                              "an annotation without a subtype cannot be added");
        }
        if (!quads.empty() && !IsTextMarkupSubtype(subtype)) {
            throw EditRefused(EditFailure::kOther,
                              "an annotation of the subtype " + std::string{subtype} +
                                  " does not mark text, so it cannot have quads");
        }
        const auto count =
            static_cast<std::uint32_t>(PageUnderEditLock(page).Get()->annotations.size());
        AnnotationProperties properties;
        properties.subtype = subtype;
        properties.name = MakeUniqueName();
        properties.contents = std::move(contents);
        properties.flags = kFlagPrint;
        if (authorship) {
            properties.title = authorship->author;
            properties.created = authorship->time;
            properties.modified = authorship->time;
        }
        if (!quads.empty()) {
            properties.rect = BoundsOf(quads);
            properties.quads = std::move(quads);
        } else {
            properties.rect = rect ? *rect : PlaceOfItsOwn(PageBoxUnderEditLock(page), count);
        }
        properties.hasAppearance = IsDrawn(properties);
        const AnnotationRef added = MakeAnnotationRecord(properties, listAll_);
        return history_.Do(EntriesStep(EditKind::kAdd, page, {{count, added}}, {added},
                                       PrepareAdded(page, properties, added.Get())));
    });
}

EditResult Document::ChangeContents(std::uint32_t page, std::uint32_t position,
                                    std::u16string contents, std::optional<_PDDateRec> time)
{
    return RunEdit([&]() -> std::vector<Change> {
        CheckPage(page);
        const AnnotationRef annotation = CheckAnnotation(page, PageUnderEditLock(page), position);
        const PropertyBlockRef block = annotation.Get()->properties.Load();
        const AnnotationProperties& former = block->properties;
        if (former.contents == contents) {
            return {};
        }
        PreparedEdit prepared = PrepareContents(page, position, contents, time);
        const auto store = [this, annotation](std::u16string text, const _PDDateRec& modified,
                                              std::function<void()> write) {
            return [this, annotation, text = std::move(text), modified, write = std::move(write)] {
                return StoreContents(annotation, text, modified, write);
            };
        };
        return history_.Do(
            {EditKind::kEdit,
             store(std::move(contents), time.value_or(former.modified), std::move(prepared.apply)),
             store(former.contents, former.modified, std::move(prepared.revert))});
    });
}

EditResult Document::RemoveAnnotation(std::uint32_t page, std::uint32_t position)
{
    return RunEdit([&]() -> std::vector<Change> {
        CheckPage(page);
        const PageRef snapshot = PageUnderEditLock(page);
        const AnnotationRef removed = CheckAnnotation(page, snapshot, position);
        const AnnotationRef popup = removed.Get()->popup;
        const std::vector<AnnotationRef>& annotations = snapshot.Get()->annotations;
        std::vector<PlacedAnnotation> entries;
        std::vector<std::uint32_t> positions;
        for (std::uint32_t index = 0; index < annotations.size(); ++index) {
            if (annotations[index] == removed || (popup && annotations[index] == popup)) {
                entries.push_back({index, annotations[index]});
                positions.push_back(index);
            }
        }
        std::vector<AnnotationRef> concerned{removed};
        if (std::any_of(entries.begin(), entries.end(),
                        [&](const PlacedAnnotation& entry) { return entry.annotation == popup; })) {
            concerned.push_back(popup);
        }
        return history_.Do(EntriesStep(EditKind::kRemove, page, std::move(entries),
                                       std::move(concerned), PrepareRemoved(page, positions)));
    });
}

EditResult Document::InsertPage(std::uint32_t at)
{
    return RunEdit([&]() -> std::vector<Change> {
        if (at > PageCount()) {
            throw EditRefused(EditFailure::kGone, "a page cannot be inserted at " +
                                                      std::to_string(at) + ", the document has " +
                                                      std::to_string(PageCount()));
        }
        const _PDRect box =
            PageCount() == 0 ? _PDRect{0, 0, 612, 792} : PageBoxUnderEditLock(at == 0 ? 0 : at - 1);
        return history_.Do(PageStep(EditKind::kInsertPage, at, {MakePageRecord({}), box},
                                    PreparePageInserted(at, box)));
    });
}

EditResult Document::DeletePage(std::uint32_t page)
{
    return RunEdit([&]() -> std::vector<Change> {
        CheckPage(page);
        if (PageCount() == 1) {
            throw EditRefused(EditFailure::kLastPage,
                              "the only page of a document cannot be deleted");
        }
        return history_.Do(PageStep(EditKind::kDeletePage, page, {}, PreparePageDeleted(page)));
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
        const auto move = [this](std::uint32_t start, std::uint32_t end,
                                 std::function<void()> write) {
            return [this, start, end, write = std::move(write)] {
                std::vector<Change> changes{PagesChange{PDPageOperation::kMoved, {start, end}}};
                write();
                pages_.Move(start, end);
                return changes;
            };
        };
        PreparedEdit prepared = PreparePageMoved(from, to);
        return history_.Do({EditKind::kMovePage, move(from, to, std::move(prepared.apply)),
                            move(to, from, std::move(prepared.revert))});
    });
}

void Document::MarkModified()
{
    const std::lock_guard lock{editMutex_};
    history_.NoteUnsaved();
}

SaveResult Document::Save(const std::filesystem::path& path)
{
    const std::lock_guard lock{editMutex_};
    try {
        RequireEditable();
        WriteFile(path);
        history_.NoteSaved();
        return {};
    } catch (const std::exception& error) {
        return {InOneLine(path.string() + ": " + ReasonOf(error))};
    }
}

BytesResult Document::WriteBytes(Encryption encryption, const std::function<bool()>& goesOn)
{
    const std::lock_guard lock{editMutex_};
    try {
        RequireEditable();
        return {{}, FileBytes(encryption, goesOn)};
    } catch (const std::exception& error) {
        return {InOneLine(name_ + ": " + ReasonOf(error)), {}};
    }
}

}  // namespace Documents
