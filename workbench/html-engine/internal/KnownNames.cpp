#include "html-engine/internal/KnownNames.h"

namespace HtmlEngine::Internal {

KnownNames::KnownNames(AtomTable& atoms)
{
    for (std::size_t place = 0; place < KnownElementCount(); ++place) {
        const Atom name = atoms.Acquire(ElementAt(place).name);
        traits_.resize(name + std::size_t{1});
        traits_[name] = ElementAt(place).traits;
    }
    classAttribute = atoms.Acquire("class");
    styleAttribute = atoms.Acquire("style");
    idAttribute = atoms.Acquire("id");
    disabledAttribute = atoms.Acquire("disabled");
}

}  // namespace HtmlEngine::Internal
