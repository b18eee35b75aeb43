// Refusal of an action on a document, with its reason; the one type for scripts, the command line
// and browser clients. [any-thread]
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace Workbench {

// Reason of a refusal. The web page has its own text for each.
enum class RefusalReason : std::uint8_t {
    kOther,
    kReadOnly,       // of the document
    kLocked,         // of the comment
    kNotPermitted,   // the document does not permit changes of its comments
    kPassword,       // the file needs one, or the given one is wrong
    kDamaged,        // the file
    kPath,           // the document has none to save to, or the given one is invalid
    kUnsaved,        // the document has unsaved changes
    kChanged,        // the document has another revision
    kExists,         // another file exists at the path
    kChangedOnDisk,  // another program has written the file
    kWrite,          // the file could not be written
    kGone,           // no such document, page, comment or element
    kNoComment,      // no comment is current
    kOtherComment,   // another comment than the intended one is current
    kListing,        // the list is being rendered
    kFolded,         // the current comment's page item is collapsed
    kLastPage,       // the only page of a document cannot be deleted
    kSuperseded,     // the client has sent another search meanwhile
};

// The reason in the browser protocol ("read-only"); empty for kOther.
const char* WordOf(RefusalReason reason) noexcept;

// The text is one line in English that names the thing.
class ActionRefused : public std::runtime_error {
public:
    explicit ActionRefused(const std::string& text, RefusalReason reason = RefusalReason::kOther)
        : std::runtime_error(text), reason_(reason)
    {
    }
    RefusalReason Reason() const noexcept { return reason_; }

private:
    RefusalReason reason_;
};

}  // namespace Workbench
