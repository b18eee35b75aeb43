// Files that a module carries inside itself, found by type and name. On Windows they are resources
// of the library; on Linux a table that the library exports under the name
// UiDataEmbeddedResources. [any-thread]
#pragma once

#include "platform/ModuleInstance.h"

#include <cstdint>

namespace Platform {

// One embedded file. Type and name are zero-terminated ASCII; names are in upper case.
struct EmbeddedResource {
    const char* type;           // "UI-DATA", or "UI-DATA-TOC" of the table of contents
    const char* name;           // the path: "DOCUMENT-PANEL-COMMENTS/PANEL.HTM"
    const unsigned char* data;  // the file's bytes
    std::uint32_t size;         // bytes
};
static_assert(sizeof(EmbeddedResource) == 32);

// All files of a library, sorted by type, then name. Borrowed until the library is unloaded.
struct EmbeddedResourceTable {
    const EmbeddedResource* entries;  // the first one
    std::uint32_t count;              // number of entries
};
static_assert(sizeof(EmbeddedResourceTable) == 16);

// Bytes of an embedded file, borrowed for as long as the library is loaded.
struct ResourceBytes {
    const unsigned char* data = nullptr;  // null: there is no such file
    std::uint32_t size = 0;
};

// The file of that type and name ("UI-DATA", "DOCUMENT-PANEL-COMMENTS/PANEL.HTM"; case counts) in
// the library given. Empty when the library has no such file or is no library.
ResourceBytes FindEmbeddedResource(ModuleInstance library, const char* type, const char* name);

}  // namespace Platform

#if !defined(_WIN32)
// The table of the library's files. Linux only: on Windows the files are resources of the library.
extern "C" const Platform::EmbeddedResourceTable UiDataEmbeddedResources;
#endif
