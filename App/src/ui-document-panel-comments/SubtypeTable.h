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

// The class of a subtype; empty for one without an icon. Looked up by atom, in a map that is built
// once, at module start-up.
std::wstring_view ClassNameOf(Atom subtype);
