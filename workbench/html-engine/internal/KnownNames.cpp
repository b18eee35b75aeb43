#include <html-engine/internal/KnownNames.h>

namespace HtmlEngine::Internal {

namespace {

constexpr const char* kVoid[] = {"area",  "base",  "basefont", "bgsound", "br",    "col",
                                 "embed", "frame", "hr",       "img",     "input", "keygen",
                                 "link",  "meta",  "param",    "source",  "track", "wbr"};
constexpr const char* kRawText[] = {"script", "xmp", "iframe", "noembed", "noframes", "plaintext"};
constexpr const char* kPreformatted[] = {"pre", "textarea", "listing"};

}  // namespace

// A fresh table numbers its atoms in the order in which they come, so each group is one range.
KnownNames::KnownNames(AtomTable& atoms)
    : classAttribute(atoms.Acquire("class")),
      styleAttribute(atoms.Acquire("style")),
      idAttribute(atoms.Acquire("id")),
      disabledAttribute(atoms.Acquire("disabled")),
      html(atoms.Acquire("html")),
      head(atoms.Acquire("head")),
      body(atoms.Acquire("body"))
{
    const auto acquireAll = [&](const auto& names, Atom& first, Atom& last) {
        for (const char* name : names) {
            last = atoms.Acquire(name);
            first = first == kNoAtom ? last : first;
        }
    };
    acquireAll(kVoid, firstVoid_, lastVoid_);
    acquireAll(kRawText, firstRawText_, lastRawText_);
    acquireAll(kPreformatted, firstPreformatted_, lastPreformatted_);
}

}  // namespace HtmlEngine::Internal
