// Entry routine of the library on Windows. Does nothing but keep the instance: no thread is
// started, joined or ended here.
#include "platform/ModuleInstance.h"

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) {
        Platform::SetCurrentModuleInstance(instance);
    } else if (reason == DLL_PROCESS_DETACH) {
        Platform::SetCurrentModuleInstance(nullptr);
    }
    return TRUE;
}
