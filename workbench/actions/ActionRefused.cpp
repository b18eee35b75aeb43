#include "actions/ActionRefused.h"

namespace Workbench {

const char* WordOf(RefusalReason reason) noexcept
{
    switch (reason) {
    case RefusalReason::kOther:
        return "";
    case RefusalReason::kReadOnly:
        return "read-only";
    case RefusalReason::kLocked:
        return "locked";
    case RefusalReason::kNotPermitted:
        return "not-permitted";
    case RefusalReason::kPassword:
        return "password";
    case RefusalReason::kDamaged:
        return "damaged";
    case RefusalReason::kPath:
        return "path";
    case RefusalReason::kUnsaved:
        return "unsaved";
    case RefusalReason::kChanged:
        return "changed";
    case RefusalReason::kExists:
        return "exists";
    case RefusalReason::kChangedOnDisk:
        return "changed-on-disk";
    case RefusalReason::kWrite:
        return "write";
    case RefusalReason::kGone:
        return "gone";
    case RefusalReason::kNoComment:
        return "no-comment";
    case RefusalReason::kOtherComment:
        return "other-comment";
    case RefusalReason::kListing:
        return "listing";
    case RefusalReason::kFolded:
        return "folded";
    case RefusalReason::kLastPage:
        return "last-page";
    case RefusalReason::kSuperseded:
        return "superseded";
    }
    return "";
}

}  // namespace Workbench
