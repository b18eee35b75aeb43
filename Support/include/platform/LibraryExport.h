// Marks what a library exports, on systems where a symbol is hidden unless its declaration says
// otherwise. Which symbols leave the library is listed in CMake (export_only).
#pragma once

#if defined(_WIN32)
#define LIBRARY_EXPORT
#else
#define LIBRARY_EXPORT [[gnu::visibility("default")]]
#endif
