// The entry points of Lumbrel.ocx.
#include <windows.h>

#include <objbase.h>

#include "control/ControlModule.h"
#include "framework/win32/Window.h"

namespace {
HMODULE g_module = nullptr;
}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    switch (reason) {
        case DLL_PROCESS_ATTACH:
            g_module = instance;
            framework::win32::SetResourceModule(instance);
            control::StartModule();
            break;
        case DLL_PROCESS_DETACH:
            // Unloaded from a process that goes on (reserved null): give back
            // the window classes and the shared drawing objects. At process
            // exit (reserved non-null) the other threads have been stopped
            // wherever they were, perhaps inside the heap or GDI, so freeing
            // anything here could hang or crash; the system reclaims the
            // objects with the process, which is where they end.
            // DllCanUnloadNow is no place for it: saying yes does not unload
            // the module, and a host may create a control again afterwards.
            if (reserved == nullptr) control::StopModule();
            break;
        default: break;
    }
    return TRUE;
}

STDAPI DllCanUnloadNow() {
    return control::CanUnloadNow();
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, LPVOID* object) {
    return control::GetClassObject(classId, iid, object);
}

STDAPI DllRegisterServer() {
    return control::RegisterServer(g_module);
}

STDAPI DllUnregisterServer() {
    return control::UnregisterServer();
}
