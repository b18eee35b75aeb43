// The names with a meaning of their own, as atoms of one document that live as long as it does.
#pragma once

#include "html-engine/internal/AtomTable.h"
#include "html-engine/internal/ElementTraits.h"

#include <vector>

namespace HtmlEngine::Internal {

class KnownNames {
public:
    explicit KnownNames(AtomTable& atoms);

    // What is known of an element's name; none for a name that is not HTML's.
    ElementTraits TraitsOf(Atom name) const
    {
        return name < traits_.size() ? traits_[name] : ElementTraits{};
    }

    Atom classAttribute = kNoAtom;
    Atom styleAttribute = kNoAtom;
    Atom idAttribute = kNoAtom;
    Atom disabledAttribute = kNoAtom;

private:
    // By atom: a fresh table numbers its atoms in the order in which they come.
    std::vector<ElementTraits> traits_;
};

}  // namespace HtmlEngine::Internal
