// Entry routine of the library on Linux: its static objects come with the library and go with it.
#include "platform/ModuleInstance.h"

#include <dlfcn.h>

namespace {

struct LibraryEntry {
    LibraryEntry()
    {
        // Found by an address of its own: an exported name may resolve to a symbol of the host.
        Dl_info info{};
        if (dladdr(this, &info) != 0) {
            Platform::SetCurrentModuleInstance(info.dli_fbase);
        }
    }
    ~LibraryEntry() { Platform::SetCurrentModuleInstance(nullptr); }
};

const LibraryEntry g_entry;

}  // namespace
