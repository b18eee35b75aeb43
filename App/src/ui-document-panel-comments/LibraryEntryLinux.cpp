// Entry routine of the library on Linux: its static objects come with the library and go with it.
#include "platform/EmbeddedResources.h"
#include "platform/ModuleInstance.h"

#include <dlfcn.h>

namespace {

struct LibraryEntry {
    LibraryEntry()
    {
        Dl_info info{};
        if (dladdr(&UiDataEmbeddedResources, &info) != 0) {
            Platform::SetCurrentModuleInstance(info.dli_fbase);
        }
    }
    ~LibraryEntry() { Platform::SetCurrentModuleInstance(nullptr); }
};

const LibraryEntry g_entry;

}  // namespace
