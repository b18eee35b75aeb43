#pragma once

// The names with a meaning of their own, as atoms of one document that live as long as it does.

#include <html-engine/internal/AtomTable.h>

namespace HtmlEngine::Internal {

class KnownNames {
public:
    explicit KnownNames(AtomTable& atoms);

    Atom classAttribute;
    Atom styleAttribute;
    Atom idAttribute;
    Atom disabledAttribute;
    Atom html;
    Atom head;
    Atom body;

    /// Elements that have no content and no end tag in HTML.
    bool IsVoid(Atom name) const { return name >= firstVoid_ && name <= lastVoid_; }

    /// Elements whose text is written without character references.
    bool IsRawText(Atom name) const
    {
        // "style" is an attribute's name too and so has its atom outside the range.
        return (name >= firstRawText_ && name <= lastRawText_) || name == styleAttribute;
    }

    /// Elements in which the parser drops a line break that comes first.
    bool DropsFirstLineBreak(Atom name) const
    {
        return name >= firstPreformatted_ && name <= lastPreformatted_;
    }

private:
    Atom firstVoid_ = kNoAtom;
    Atom lastVoid_ = kNoAtom;
    Atom firstRawText_ = kNoAtom;
    Atom lastRawText_ = kNoAtom;
    Atom firstPreformatted_ = kNoAtom;
    Atom lastPreformatted_ = kNoAtom;
};

}  // namespace HtmlEngine::Internal
