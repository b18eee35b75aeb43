// What the list shows for each annotation subtype: the key of its display name and the class that
// gives it an icon. Built once, at module start-up, keyed by the atom of the subtype. [any-thread]
#pragma once

#include "service-common/Atom.h"

struct SubtypeEntry {
    const char* subtype;         // as the PDF library names it
    const wchar_t* displayName;  // key and default text
    const wchar_t* className;    // attribute text such as L".highlight"; empty: no icon
};

// The entry of a subtype, or null for one that is outside the table.
const SubtypeEntry* FindSubtype(Atom subtype);
