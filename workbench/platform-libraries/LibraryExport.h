// Marks the definitions that a platform library exports, on systems where a symbol is hidden unless
// its definition says otherwise. The list of exports is the library's, in CMakeLists.txt.
#pragma once

#if defined(_WIN32)
#define LIBRARY_EXPORT
#else
#define LIBRARY_EXPORT [[gnu::visibility("default")]]
#endif
