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
            // At process exit (reserved non-null) the classes go with the process.
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
