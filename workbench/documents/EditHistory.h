// Edits of a document that can be taken back and done again, and which state was saved last.
// Included by the documents; the changes are for everyone who listens to a document.
#pragma once

#include "documents/RecordRef.h"

#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <variant>
#include <vector>

namespace Documents {

// An event that a host fires for its document's listeners after an edit.
struct AnnotationChange {
    PDAnnotOperation operation;
    std::uint32_t page;
    AnnotationRef annotation;
    // Added: its first position on the page. Removed: the position of what followed it. Else 0.
    std::uint32_t position = 0;
};

struct PagesChange {
    PDPageOperation operation;
    // Inserted: its index. Deleted: its former index. Moved: from, to.
    std::vector<std::uint32_t> pages;
};

using Change = std::variant<AnnotationChange, PagesChange>;

// What an edit does, for the words of a menu. A removal takes the pop-up with it.
enum class EditKind : std::uint8_t { kAdd, kEdit, kRemove, kInsertPage, kDeletePage, kMovePage };

// Do, Undo, Redo and NoteSaved are serialised by the caller. What they have found so far is
// [any-thread] and waits for no step that runs.
class EditHistory {
public:
    // `apply` and `revert` are called by turns, beginning with `apply`; each does all of its work
    // and gives the changes to fire, or throws and has changed nothing.
    struct Step {
        EditKind kind;
        std::function<std::vector<Change>()> apply;
        std::function<std::vector<Change>()> revert;
        std::uint64_t state = 0;  // number of the state that the step leads to; set by the history
    };

    // Applies the step, keeps it, and drops what could have been done again.
    std::vector<Change> Do(Step step);
    // Nothing where there is no step to take back or to do again.
    std::vector<Change> Undo() { return Travel(done_, undone_, &Step::revert); }
    std::vector<Change> Redo() { return Travel(undone_, done_, &Step::apply); }
    // The present state is the saved one.
    void NoteSaved();
    // No state so far is a saved one.
    void NoteUnsaved();

    // Of the step that Undo would take back and that Redo would do again.
    std::optional<EditKind> UndoKind() const { return KindOfLast(done_); }
    std::optional<EditKind> RedoKind() const { return KindOfLast(undone_); }
    // Number of steps that were applied or reverted.
    std::uint64_t Revision() const;
    // Whether the present state is another than the first and the last saved one.
    bool Modified() const;

private:
    using Steps = std::list<Step>;

    static constexpr std::uint64_t kNoState = ~std::uint64_t{0};

    std::vector<Change> Travel(Steps& from, Steps& to,
                               std::function<std::vector<Change>()> Step::*direction);
    std::optional<EditKind> KindOfLast(const Steps& steps) const;
    std::uint64_t State() const { return done_.empty() ? 0 : done_.back().state; }

    mutable std::mutex mutex_;  // held for the few instructions that replace or read what follows
    Steps done_;                // most recent last, as in undone_
    Steps undone_;
    std::uint64_t lastState_ = 0;
    std::uint64_t savedState_ = 0;  // kNoState: none
    std::uint64_t revision_ = 0;
};

}  // namespace Documents
