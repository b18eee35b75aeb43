// The classes that give the list's items their icons, by annotation subtype. [any-thread]
#pragma once

#include "service-common/Atom.h"

#include <span>
#include <string_view>

struct SubtypeEntry {
    const char*
        subtype;  // as the PDF library names it; also the key and default of its display name
    const wchar_t*
        className;  // attribute text such as L".highlight"; the icon is a rule of panel.css
};
std::span<const SubtypeEntry> SubtypeTable();

// The class of a subtype; empty for one without an icon. Looked up by atom; the first call, at
// module start-up, resolves the atoms of the table, and later ones those that were refused.
std::wstring_view ClassNameOf(Atom subtype);
