#include "control/ControlModule.h"

#include <commctrl.h>
#include <oleauto.h>

#include <iterator>
#include <new>

#include "control/LumbrelCtrl.h"
#include "control/LumbrelIds.h"
#include "control/LumbrelPropPage.h"
#include "control/resource.h"
#include "foundation/Stdobj.h"
#include "framework/ole/Barrier.h"
#include "framework/ole/ClassFactory.h"
#include "framework/ole/ModuleLock.h"
#include "framework/ole/OleControl.h"
#include "framework/ole/Registration.h"
#include "framework/ole/Strings.h"
#include "framework/win32/Window.h"
#include "thumbnails/Imaging.h"

namespace control {

namespace {

HRESULT CreateControl(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    try {
        CLumbrelCtrl* created = new CLumbrelCtrl();
        const HRESULT hr = created->QueryInterface(iid, object);
        created->Release();
        return hr;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

HRESULT CreatePropPage(REFIID iid, void** object) {
    return framework::ole::CreateComObject<CLumbrelPropPage>(iid, object);
}

framework::ole::ClassFactory g_controlFactory(CLSID_Lumbrel, &CreateControl);
framework::ole::ClassFactory g_propPageFactory(kLumbrelPropPageClassId, &CreatePropPage);
framework::ole::ClassFactory* const g_factories[] = {&g_controlFactory, &g_propPageFactory};

std::string LoadText(HMODULE module, UINT id) {
    char text[256] = {};
    const int length = ::LoadStringA(module, id, text, static_cast<int>(sizeof text));
    return std::string(text, length > 0 ? static_cast<size_t>(length) : 0);
}

#ifdef _WIN64
constexpr SYSKIND kSysKind = SYS_WIN64;
#else
constexpr SYSKIND kSysKind = SYS_WIN32;
#endif

}  // namespace

void StartModule() {
    INITCOMMONCONTROLSEX classes = {};
    classes.dwSize = sizeof classes;
    classes.dwICC = ICC_STANDARD_CLASSES | ICC_TREEVIEW_CLASSES | ICC_USEREX_CLASSES | ICC_BAR_CLASSES;
    ::InitCommonControlsEx(&classes);
}

void StopModule() {
    // The system keeps a module's window classes after it is unloaded, their
    // procedures pointing where its code was.
    framework::ole::UnregisterControlWindowClass();
    framework::win32::Window::UnregisterWindowClasses();
    // The shared brushes, pens, fonts and palette live in this module's
    // tables: a module that is unloaded while the process goes on must give
    // them back, or each load and unload would leak them.
    foundation::ReleaseStdObjects();
    // The imaging layer's per-thread state ends with a callback in this
    // module, which must not outlive it.
    imaging::ReleaseImagingThreads();
}

HRESULT GetClassObject(REFCLSID classId, REFIID iid, void** object) {
    return framework::ole::GetClassObject(g_factories, std::size(g_factories), classId, iid, object);
}

HRESULT CanUnloadNow() {
    return framework::ole::CanUnloadModule() ? S_OK : S_FALSE;
}

HRESULT RegisterServer(HMODULE module) {
    return framework::ole::ComBarrier([&] {
        const std::string path = framework::ole::ModulePath(module);
        if (path.empty()) return kSelfRegTypeLibError;
        std::wstring widePath = framework::ole::AnsiToWide(path);
        framework::win32::ComPtr<ITypeLib> library;
        if (FAILED(::LoadTypeLibEx(widePath.c_str(), REGKIND_NONE, library.Put())) ||
            FAILED(::RegisterTypeLib(library.Get(), &widePath[0], nullptr)))
            return kSelfRegTypeLibError;

        framework::ole::ControlRegistration control = {};
        control.classId = CLSID_Lumbrel;
        control.progId = kControlProgId;
        control.versionIndependentProgId = kControlVersionIndependentProgId;
        control.userTypeName = LoadText(module, IDS_LUMBREL);
        control.modulePath = path;
        control.toolboxBitmapId = IDB_LUMBREL;
        control.miscStatus = kMiscStatus;
        control.typeLibId = LIBID_LUMBRELLib;
        control.typeLibVersion = kTypeLibVersionText;
        if (framework::ole::RegisterControlClass(control) != ERROR_SUCCESS) return kSelfRegClassError;

        framework::ole::ClassRegistration page = {};
        page.classId = kLumbrelPropPageClassId;
        page.progId = kPropPageProgId;
        page.userTypeName = LoadText(module, IDS_LUMBREL_PPG);
        page.modulePath = path;
        if (framework::ole::RegisterApartmentClass(page) != ERROR_SUCCESS) return kSelfRegClassError;
        return S_OK;
    });
}

HRESULT UnregisterServer() {
    return framework::ole::ComBarrier([&] {
        if (FAILED(::UnRegisterTypeLib(LIBID_LUMBRELLib, kTypeLibMajor, kTypeLibMinor, 0, kSysKind)))
            return kSelfRegTypeLibError;
        const LONG controlStatus =
            framework::ole::UnregisterClass(CLSID_Lumbrel, kControlProgId, kControlVersionIndependentProgId);
        const LONG pageStatus = framework::ole::UnregisterClass(kLumbrelPropPageClassId, kPropPageProgId);
        if (controlStatus != ERROR_SUCCESS || pageStatus != ERROR_SUCCESS) return kSelfRegClassError;
        return S_OK;
    });
}

}  // namespace control
