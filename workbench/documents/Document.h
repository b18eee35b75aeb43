// A document of the workbench as its services see it: pages and annotations behind the PDF
// library's records, edits, permissions, saving. MemoryDocument and QpdfDocument are the two kinds.
//
// Everything here is [any-thread], several threads at once. A page record is the page's annotation
// array as it stood when it was acquired; an edit makes a new one and leaves those that were handed
// out as they are. There is one annotation record for one annotation object, on however many pages
// it stands, so equality is identity; its texts follow edits, and it stays readable after it was
// removed and after its document was closed.
#pragma once

#include "documents/AnnotationProperties.h"
#include "documents/EditHistory.h"
#include "documents/PageList.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Documents {

// What kind of thing stands in an edit's way.
enum class EditFailure : std::uint8_t {
    kNone,
    kGone,      // no such page or annotation
    kLastPage,  // the only page of a document cannot be deleted
    kOther,
};

// Outcome of an edit: either an error of one line that names the thing (and nothing has changed),
// or the events to fire, in order. An edit that changes nothing has neither.
struct EditResult {
    std::string error;
    std::vector<Change> changes;
    EditFailure failure = EditFailure::kNone;  // kNone exactly when there is no error

    bool Succeeded() const noexcept { return error.empty(); }
};

// Author and time of a change of an annotation.
struct Authorship {
    std::u16string author;
    _PDDateRec time{};
};

// Whether the bytes of an encrypted document are encrypted too.
enum class Encryption : std::uint8_t { kKept, kDropped };

// The bytes of a file; or none, and one line that names the document.
struct BytesResult {
    std::string error;
    std::string bytes;

    bool Succeeded() const noexcept { return error.empty(); }
};

// Outcome of saving: empty when the file is written, else one line that names the file.
struct SaveResult {
    std::string error;

    bool Succeeded() const noexcept { return error.empty(); }
};

class Document : public std::enable_shared_from_this<Document> {
public:
    virtual ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    // Short name for titles and messages: the file's name without its folder, or the name given.
    const std::string& Name() const noexcept { return name_; }

    std::uint32_t PageCount() const { return pages_.Count(); }

    // The page's present state; empty beyond the page count. The first call for a page of a file
    // reads its annotations (some 30 microseconds each), later calls take some 30 nanoseconds and
    // never wait for a page that another thread is reading.
    PageRef AcquirePage(std::uint32_t page);

    // The annotation at a position of the page's array; empty when there is no such page, no such
    // position, or no annotation there.
    AnnotationRef AnnotationAt(std::uint32_t page, std::uint32_t position);

    // Index of the first page that shows the annotation, among the pages that have been acquired
    // or edited; kPDNoPage for null and for an annotation that is on none of them. Linear in the
    // number of pages, and in that of annotations only for one that several pages share.
    std::uint32_t PageIndexOf(const _PDAnnotRec* annotation) const;

    // The page's visible area in default user space; nothing beyond the page count.
    std::optional<_PDRect> PageBox(std::uint32_t page);

    // --- Permissions. The edits below do not check them; callers that act for a user do. ---

    // Whether the document may not be changed at all: forced, else as the document says.
    bool ReadOnly() const noexcept { return forcedReadOnly_.load().value_or(readOnly_); }
    void ForceReadOnly(std::optional<bool> readOnly) noexcept { forcedReadOnly_ = readOnly; }

    // Whether annotations may be deleted: forced, else as the file's encryption permits.
    bool AnnotationDeletionPermitted() const noexcept
    {
        return forcedDeletion_.load().value_or(deletionPermitted_);
    }
    void ForceAnnotationDeletionPermitted(std::optional<bool> permitted) noexcept
    {
        forcedDeletion_ = permitted;
    }

    // Why this annotation must not be deleted (its flags ReadOnly, Locked), as a phrase for the
    // user; empty when nothing speaks against it, and for null.
    static std::string DeletionRefusal(const _PDAnnotRec* annotation);

    // --- Edits. Serialised; each one is visible to other threads as a whole. ---

    // Appends an annotation without a subject and with a name of its own (a random UUID), in a
    // rectangle given or, without one, in a place of its own inside the page. It gets the author as
    // its title and the time as both dates; without an authorship it has neither title nor dates.
    // Quads are the text that a text markup covers; its rectangle is then their bounding box. Fails
    // for a page beyond the count, for an empty subtype, and for quads of another subtype.
    EditResult AddAnnotation(std::uint32_t page, std::string_view subtype, std::u16string contents,
                             std::optional<_PDRect> rect = std::nullopt,
                             const std::optional<Authorship>& authorship = std::nullopt,
                             std::vector<Quad> quads = {});

    // Replaces the contents, and the date of modification where a time is given; one change for
    // every page known to show the annotation. The same contents change nothing. Fails where there
    // is no annotation.
    EditResult ChangeContents(std::uint32_t page, std::uint32_t position, std::u16string contents,
                              std::optional<_PDDateRec> time = std::nullopt);

    // Removes the annotation from this page, every entry of it, together with the pop-up that
    // belongs to it; other pages that show it keep it. Fails where there is no annotation.
    EditResult RemoveAnnotation(std::uint32_t page, std::uint32_t position);

    // Inserts a blank page that gets the index `at` (up to and including the page count), of the
    // size of the page before it.
    EditResult InsertPage(std::uint32_t at);

    // Fails beyond the count and for the only page of a document.
    EditResult DeletePage(std::uint32_t page);

    // Moves a page so that its index is `to` afterwards. The same index twice changes nothing.
    EditResult MovePage(std::uint32_t from, std::uint32_t to);

    // --- History. Every edit that changed something can be taken back, those before the last save
    //     too; memory alone bounds their number. An edit drops what could have been done again. ---

    // Takes the last edit back, or does it again: arrays, contents, pages and the identity of the
    // records are then as they were, and the changes are those of the opposite edit, or of the
    // same. Changes nothing where there is nothing to take back or to do again.
    EditResult Undo();
    EditResult Redo();

    // Of the edit that Undo would take back and that Redo would do again. They wait for no edit,
    // and neither do Revision and Modified.
    std::optional<EditKind> UndoKind() const { return history_.UndoKind(); }
    std::optional<EditKind> RedoKind() const { return history_.RedoKind(); }

    // Grows with everything that edits, takes back or does again.
    std::uint64_t Revision() const { return history_.Revision(); }

    // Whether the document differs from what was opened or saved last; no longer, once Undo or
    // Redo has led back there.
    bool Modified() const { return history_.Modified(); }

    // What was opened is not what the document's file holds: it is modified until it is saved.
    void MarkModified();

    // Writes the document to `path`: beside it first, then renamed over it, so that a write that
    // fails leaves what was there. The document stays usable, under its old name, in any case.
    SaveResult Save(const std::filesystem::path& path);

    // The document as it stands, as the PDF file that Save would write: encrypted when the file
    // was, unless that is to be dropped. Counts as no save. Of a document in memory too: blank
    // pages with their annotations. `goesOn`, unless it is empty, is asked on this thread from time
    // to time while a file is written; when it answers false, the result is an error.
    BytesResult WriteBytes(Encryption encryption = Encryption::kKept,
                           const std::function<bool()>& goesOn = {});

    // Whether it was read from an encrypted file.
    virtual bool Encrypted() const noexcept { return false; }

    // Problems of the file so far, one line each: repairs on opening, and damage found while pages
    // were read. Empty for a sound file.
    virtual std::vector<std::string> Warnings() const { return {}; }

protected:
    explicit Document(std::string name, bool listAll);

    // Takes the pages over, before any other thread knows the document.
    void SetPages(std::vector<Page> pages) { pages_.Assign(std::move(pages)); }
    void SetPermissions(bool readOnly, bool deletionPermitted) noexcept;
    bool ListAll() const noexcept { return listAll_; }

    // From here on edits and saving fail for this reason, a clause; before any other thread knows
    // the document.
    void RefuseEdits(std::string reason) { refusal_ = std::move(reason); }

    // --- What the kind of document does. Called with the edit lock held, never concurrently.
    //     Indices are valid. ---

    // Reads the annotations of a page that has no snapshot yet. What cannot be read becomes an
    // entry without annotation.
    virtual PageRef ReadPage(std::uint32_t page) = 0;
    virtual _PDRect ReadPageBox(std::uint32_t page) = 0;

    // An edit of what lies behind the pages. `apply` and `revert` are called by turns, beginning
    // with `apply`, each when the document is as the other one left it; each either does all of its
    // work or throws and has changed nothing.
    struct PreparedEdit {
        std::function<void()> apply = [] {};
        std::function<void()> revert = [] {};
    };

    // Prepare edits without doing them yet, or throw when they cannot be done. A document that
    // is nothing but its pages has nothing to prepare.
    virtual PreparedEdit PrepareAdded(std::uint32_t /*page*/, const AnnotationProperties&,
                                      _PDAnnotRec* /*annotation*/)
    {
        return {};
    }
    virtual PreparedEdit PrepareContents(std::uint32_t /*page*/, std::uint32_t /*position*/,
                                         std::u16string_view /*contents*/,
                                         const std::optional<_PDDateRec>& /*time*/)
    {
        return {};
    }
    // Positions are in ascending order.
    virtual PreparedEdit PrepareRemoved(std::uint32_t /*page*/, const std::vector<std::uint32_t>&)
    {
        return {};
    }
    virtual PreparedEdit PreparePageInserted(std::uint32_t /*at*/, const _PDRect&) { return {}; }
    virtual PreparedEdit PreparePageDeleted(std::uint32_t /*page*/) { return {}; }
    virtual PreparedEdit PreparePageMoved(std::uint32_t /*from*/, std::uint32_t /*to*/)
    {
        return {};
    }

    // Write the document as it stands; throw when that fails.
    virtual void WriteFile(const std::filesystem::path& path) = 0;
    virtual std::string FileBytes(Encryption encryption, const std::function<bool()>& goesOn) = 0;

    // The page's present state; empty when it has not been read, and beyond the page count.
    PageRef KnownPage(std::uint32_t page) const { return pages_.Snapshot(page); }

    // Held while a page is read and during edits and saving.
    mutable std::mutex editMutex_;

private:
    using Step = EditHistory::Step;

    PageRef PageUnderEditLock(std::uint32_t page);
    _PDRect PageBoxUnderEditLock(std::uint32_t page);
    void RequireEditable() const;
    void CheckPage(std::uint32_t page) const;
    AnnotationRef CheckAnnotation(std::uint32_t page, const PageRef& snapshot,
                                  std::uint32_t position) const;

    template <class Edit>
    EditResult RunEdit(const Edit& edit);
    Step EntriesStep(EditKind kind, std::uint32_t page, std::vector<PlacedAnnotation> entries,
                     std::vector<AnnotationRef> concerned, PreparedEdit prepared);
    Step PageStep(EditKind kind, std::uint32_t index, Page page, PreparedEdit prepared);
    std::vector<Change> StoreContents(const AnnotationRef& annotation,
                                      const std::u16string& contents, const _PDDateRec& modified,
                                      const std::function<void()>& write);

    const std::string name_;
    const bool listAll_;
    std::string refusal_;  // of edits and saving; empty: none

    PageList pages_;
    EditHistory history_;  // changed under the edit lock

    bool readOnly_ = false;
    bool deletionPermitted_ = true;
    std::atomic<std::optional<bool>> forcedReadOnly_{};
    std::atomic<std::optional<bool>> forcedDeletion_{};
};

}  // namespace Documents
