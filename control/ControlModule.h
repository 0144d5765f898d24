// The work of the module's exported entry points, apart from the exports
// themselves (Module.cpp), so that tests can link it into a process of their
// own.
#pragma once

#include <windows.h>

namespace control {

// What the module registers when it is loaded: the common control classes
// that the browser's dialog uses.
void StartModule();
// What it takes back when it is unloaded: its window classes and the shared
// drawing objects. Run only when the module is unloaded from a process that
// goes on (FreeLibrary, after DllCanUnloadNow said yes), never at process
// exit; see Module.cpp.
void StopModule();

// DllGetClassObject: the factory of the control or of the property page,
// CLASS_E_CLASSNOTAVAILABLE for any other class.
HRESULT GetClassObject(REFCLSID classId, REFIID iid, void** object);
// DllCanUnloadNow.
HRESULT CanUnloadNow();
// DllRegisterServer for the module `module`: the type library (failure:
// SELFREG_E_TYPELIB), then both classes (failure: SELFREG_E_CLASS).
HRESULT RegisterServer(HMODULE module);
// DllUnregisterServer: the type library 1.0 (failure: SELFREG_E_TYPELIB),
// then both classes (failure: SELFREG_E_CLASS).
HRESULT UnregisterServer();

}  // namespace control
