// The module: a library that is loaded by its path.
#pragma once

#if defined(_WIN32)
#include <windows.h>
inline HMODULE LoadModule(const char* path) { return LoadLibraryA(path); }
inline void* FindExport(HMODULE module, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(module, name));
}
inline bool UnloadModule(HMODULE module) { return FreeLibrary(module) != 0; }
#else
#include <dlfcn.h>
inline void* LoadModule(const char* path) { return dlopen(path, RTLD_NOW); }
inline void* FindExport(void* module, const char* name) { return dlsym(module, name); }
inline bool UnloadModule(void* module) { return dlclose(module) == 0; }
#endif
