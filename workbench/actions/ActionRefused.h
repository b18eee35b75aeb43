// Why an action on a document does nothing: the one type of refusal for scripts, the command line
// and browser clients. [any-thread]
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace Workbench {

// What stands in the way. Browser clients have words of their own for each.
enum class RefusalReason : std::uint8_t {
    kOther,
    kReadOnly,       // of the document
    kLocked,         // of the comment
    kNotPermitted,   // the document does not permit changes of its comments
    kPassword,       // the file needs one, or another one
    kDamaged,        // the file
    kPath,           // the document has none to be saved to, or the one given is none
    kUnsaved,        // there are changes that are not saved
    kChanged,        // the document has another revision by now
    kExists,         // another file is there already
    kChangedOnDisk,  // another program has written the file since
    kWrite,          // the file could not be written
    kGone,           // no such document, page, comment or element
    kNoComment,      // no comment is current
    kOtherComment,   // another comment is current than the one that was meant
    kListing,        // the list is being made
    kFolded,         // the current comment is out of sight
    kLastPage,       // the only page of a document cannot be deleted
};

// The reason as the browser protocol writes it ("read-only"); empty for kOther.
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
