// Self-registration of Lumbrel.ocx, directly and through regsvr32, and the
// control as a registered class: created by ProgID and by CLSID, embedded,
// driven by name. Each test leaves the registry as it found it.
#include <windows.h>

#include <ocidl.h>
#include <ole2.h>

#include <commctrl.h>
#include <olectl.h>

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"
#include "OleTestSupport.h"
#include "control/LumbrelIds.h"
#include "framework/ole/Dispatch.h"
#include "framework/ole/Strings.h"

namespace controltest {
namespace {

const std::string kControlKey = "CLSID\\{E59C4B46-C3EF-11D3-BC14-006097BFE3D4}";
const std::string kPageKey = "CLSID\\{E59C4B47-C3EF-11D3-BC14-006097BFE3D4}";

class RegistrationTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(nullptr, ocx.module);
        before = RegistrySnapshot();
        ASSERT_FALSE(KeyExists(kControlKey)) << "an earlier run left the control registered";
    }
    void TearDown() override {
        if (KeyExists(kControlKey) || KeyExists("TypeLib\\{E59C4B43-C3EF-11D3-BC14-006097BFE3D4}"))
            ocx.unregisterServer();
        EXPECT_EQ(before, RegistrySnapshot()) << "the registry differs from what the test found";
    }
    OcxModule ocx;
    std::vector<std::string> before;
};

TEST_F(RegistrationTest, WritesTheEntriesOfAControlAndItsPage) {
    ASSERT_EQ(S_OK, ocx.registerServer());
    const std::string path = OcxPath();
    EXPECT_EQ("Lumbrel Control", DefaultValue(kControlKey));
    EXPECT_EQ(path, DefaultValue(kControlKey + "\\InprocServer32"));
    EXPECT_EQ("Apartment", NamedValue(kControlKey + "\\InprocServer32", "ThreadingModel"));
    EXPECT_EQ("LUMBREL.LumbrelCtrl.1", DefaultValue(kControlKey + "\\ProgID"));
    EXPECT_EQ("LUMBREL.LumbrelCtrl", DefaultValue(kControlKey + "\\VersionIndependentProgID"));
    EXPECT_TRUE(KeyExists(kControlKey + "\\Control"));
    EXPECT_EQ(path + ", 3", DefaultValue(kControlKey + "\\ToolboxBitmap32"));
    EXPECT_EQ("131473", DefaultValue(kControlKey + "\\MiscStatus"));
    EXPECT_EQ("131473", DefaultValue(kControlKey + "\\MiscStatus\\1"));
    EXPECT_EQ("{E59C4B43-C3EF-11D3-BC14-006097BFE3D4}", DefaultValue(kControlKey + "\\TypeLib"));
    EXPECT_EQ("1.0", DefaultValue(kControlKey + "\\Version"));
    EXPECT_FALSE(KeyExists(kControlKey + "\\Insertable"));
    EXPECT_FALSE(KeyExists(kControlKey + "\\Implemented Categories")) << "not safe for scripting";
    EXPECT_EQ("{E59C4B46-C3EF-11D3-BC14-006097BFE3D4}", DefaultValue("LUMBREL.LumbrelCtrl.1\\CLSID"));
    EXPECT_EQ("LUMBREL.LumbrelCtrl.1", DefaultValue("LUMBREL.LumbrelCtrl\\CurVer"));
    EXPECT_EQ("Lumbrel Property Page", DefaultValue(kPageKey));
    EXPECT_EQ(path, DefaultValue(kPageKey + "\\InprocServer32"));
    EXPECT_EQ("Apartment", NamedValue(kPageKey + "\\InprocServer32", "ThreadingModel"));
    EXPECT_EQ("LUMBREL.LumbrelPropPage.1", DefaultValue(kPageKey + "\\ProgID"));
    EXPECT_EQ("{E59C4B47-C3EF-11D3-BC14-006097BFE3D4}", DefaultValue("LUMBREL.LumbrelPropPage.1\\CLSID"));
    EXPECT_FALSE(KeyExists(kPageKey + "\\Control")) << "a page is no control";

    // What OLE reads back from them.
    DWORD status = 0;
    ASSERT_EQ(S_OK, ::OleRegGetMiscStatus(CLSID_Lumbrel, DVASPECT_CONTENT, &status));
    EXPECT_EQ(0x20191u, status);
    CLSID classId = {};
    ASSERT_EQ(S_OK, ::CLSIDFromProgID(L"LUMBREL.LumbrelCtrl.1", &classId));
    EXPECT_TRUE(IsEqualCLSID(CLSID_Lumbrel, classId));
    ASSERT_EQ(S_OK, ::CLSIDFromProgID(L"LUMBREL.LumbrelCtrl", &classId));
    EXPECT_TRUE(IsEqualCLSID(CLSID_Lumbrel, classId));
    ComPtr<ITypeLib> library;
    ASSERT_EQ(S_OK, ::LoadRegTypeLib(LIBID_LUMBRELLib, 1, 0, LOCALE_USER_DEFAULT, library.Put()));
}

TEST_F(RegistrationTest, UnregistrationLeavesNoKeyBehind) {
    ASSERT_EQ(S_OK, ocx.registerServer());
    EXPECT_NE(before, RegistrySnapshot());
    ASSERT_EQ(S_OK, ocx.unregisterServer());
    EXPECT_EQ(before, RegistrySnapshot());
    // Nothing is left to unregister: the type library is the first to say so.
    EXPECT_EQ(static_cast<HRESULT>(0x80040200), ocx.unregisterServer());
}

TEST_F(RegistrationTest, RegisteringTwiceIsHarmless) {
    ASSERT_EQ(S_OK, ocx.registerServer());
    const auto once = RegistrySnapshot();
    ASSERT_EQ(S_OK, ocx.registerServer());
    EXPECT_EQ(once, RegistrySnapshot());
}

TEST_F(RegistrationTest, Regsvr32RegistersAndUnregisters) {
    std::string output, errors;
    ASSERT_EQ(0, RunProcess("regsvr32.exe /s \"" + OcxPath() + "\"", &output, &errors)) << errors;
    EXPECT_EQ(OcxPath(), DefaultValue(kControlKey + "\\InprocServer32"));
    ASSERT_EQ(0, RunProcess("regsvr32.exe /u /s \"" + OcxPath() + "\"", &output, &errors)) << errors;
    EXPECT_EQ(before, RegistrySnapshot());
}

class RegisteredControlTest : public RegistrationTest {
protected:
    void SetUp() override {
        RegistrationTest::SetUp();
        ASSERT_EQ(S_OK, ocx.registerServer());
    }
    static DISPID IdOf(IDispatch* dispatch, const wchar_t* name) {
        LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
        DISPID id = DISPID_UNKNOWN;
        dispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
        return id;
    }
};

TEST_F(RegisteredControlTest, IsCreatedByProgIdAndByClsid) {
    for (const wchar_t* progId : {L"LUMBREL.LumbrelCtrl.1", L"LUMBREL.LumbrelCtrl"}) {
        CLSID classId = {};
        ASSERT_EQ(S_OK, ::CLSIDFromProgID(progId, &classId));
        ComPtr<IOleObject> object;
        ASSERT_EQ(S_OK, ::CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IOleObject,
                                           object.PutVoid()));
        DWORD status = 0;
        object->GetMiscStatus(DVASPECT_CONTENT, &status);
        EXPECT_EQ(0x20191u, status);
    }
    ComPtr<IDispatch> dispatch;
    ASSERT_EQ(S_OK, ::CoCreateInstance(CLSID_Lumbrel, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                       dispatch.PutVoid()));
    EXPECT_EQ(S_FALSE, ocx.canUnloadNow()) << "an object is alive";
    dispatch.Reset();
    EXPECT_EQ(S_OK, ocx.canUnloadNow());
}

TEST_F(RegisteredControlTest, IsEmbeddedAndDrivenByName) {
    ComPtr<IUnknown> object;
    ASSERT_EQ(S_OK, ::CoCreateInstance(CLSID_Lumbrel, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                       object.PutVoid()));
    ComPtr<IPersistStreamInit> persist;
    ASSERT_EQ(S_OK, object->QueryInterface(IID_IPersistStreamInit, persist.PutVoid()));
    ASSERT_EQ(S_OK, persist->InitNew());
    TestSite* site = new TestSite();
    ASSERT_EQ(S_OK, Embed(object.Get(), site));
    ComPtr<IOleWindow> window;
    ASSERT_EQ(S_OK, object->QueryInterface(IID_IOleWindow, window.PutVoid()));
    HWND handle = nullptr;
    ASSERT_EQ(S_OK, window->GetWindow(&handle));
    EXPECT_EQ(site->Frame(), ::GetParent(handle));

    std::vector<RecordedEvent> events;
    auto* sink = new EventRecorder(&events, "sink");
    HRESULT advised = E_FAIL;
    const DWORD cookie = AdviseEvents(object.Get(), sink, &advised);
    EXPECT_EQ(S_OK, advised);

    ComPtr<IDispatch> dispatch;
    ASSERT_EQ(S_OK, object->QueryInterface(IID_IDispatch, dispatch.PutVoid()));
    const DISPID aspect = IdOf(dispatch.Get(), L"AspectRatio");
    EXPECT_EQ(1, aspect);
    framework::ole::Variant value;
    DISPPARAMS none = {nullptr, nullptr, 0, 0};
    ASSERT_EQ(S_OK, dispatch->Invoke(aspect, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                                     value.Get(), nullptr, nullptr));
    EXPECT_EQ(VT_BOOL, value.Type());
    framework::ole::Bstr path(L"C:\\art\\cats");
    VARIANT arguments[2];
    arguments[1].vt = VT_BSTR;
    arguments[1].bstrVal = path.Get();
    arguments[0].vt = VT_I4;
    arguments[0].lVal = 3;
    DISPPARAMS call = {arguments, nullptr, 2, 0};
    EXPECT_EQ(S_OK, dispatch->Invoke(IdOf(dispatch.Get(), L"SetItemPath"), IID_NULL, LOCALE_USER_DEFAULT,
                                     DISPATCH_METHOD, &call, nullptr, nullptr, nullptr));
    EXPECT_EQ(S_OK, dispatch->Invoke(IdOf(dispatch.Get(), L"RefreshControl"), IID_NULL, LOCALE_USER_DEFAULT,
                                     DISPATCH_METHOD, &none, nullptr, nullptr, nullptr));

    EXPECT_EQ(S_OK, UnadviseEvents(object.Get(), cookie));
    sink->Release();
    Unembed(object.Get());
    EXPECT_FALSE(::IsWindow(handle));
    dispatch.Reset();
    window.Reset();
    persist.Reset();
    object.Reset();
    site->Release();
    EXPECT_EQ(S_OK, ocx.canUnloadNow());
}

// Looks into the property frame from inside its modal loop, then cancels it.
struct PropertyFrameCheck {
    static PropertyFrameCheck* current;
    bool seen = false;
    std::string note;
    std::string tab;

    static BOOL CALLBACK Find(HWND window, LPARAM parameter) {
        auto* check = reinterpret_cast<PropertyFrameCheck*>(parameter);
        char text[256] = {};
        char name[64] = {};
        ::GetClassNameA(window, name, sizeof name);
        if (::GetDlgCtrlID(window) == 1003) {
            ::GetWindowTextA(window, text, sizeof text);
            check->note = text;
        } else if (::lstrcmpiA(name, "SysTabControl32") == 0) {
            TCITEMA item = {};
            item.mask = TCIF_TEXT;
            item.pszText = text;
            item.cchTextMax = sizeof text;
            if (::SendMessageA(window, TCM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item))) check->tab = text;
        }
        return TRUE;
    }
    static void CALLBACK OnTimer(HWND, UINT, UINT_PTR id, DWORD) {
        const HWND frame = ::GetActiveWindow();
        if (frame != nullptr && !current->seen) {
            current->seen = true;
            ::EnumChildWindows(frame, &Find, reinterpret_cast<LPARAM>(current));
            ::PostMessageA(frame, WM_COMMAND, IDCANCEL, 0);
        }
        ::KillTimer(nullptr, id);
    }
};
PropertyFrameCheck* PropertyFrameCheck::current = nullptr;

TEST_F(RegisteredControlTest, ThePropertiesVerbShowsTheGeneralPage) {
    ComPtr<IOleObject> object;
    ASSERT_EQ(S_OK, ::CoCreateInstance(CLSID_Lumbrel, nullptr, CLSCTX_INPROC_SERVER, IID_IOleObject,
                                       object.PutVoid()));
    TestSite* site = new TestSite();
    ASSERT_EQ(S_OK, Embed(object.Get(), site));
    PropertyFrameCheck check;
    PropertyFrameCheck::current = &check;
    ::SetTimer(nullptr, 0, 200, &PropertyFrameCheck::OnTimer);
    RECT rect = site->position;
    EXPECT_EQ(S_OK, object->DoVerb(OLEIVERB_PROPERTIES, nullptr, site, 0, site->Frame(), &rect));
    EXPECT_TRUE(check.seen);
    EXPECT_EQ("General", check.tab);
    EXPECT_EQ("The Lumbrel control has no settings to change here.", check.note);
    Unembed(object.Get());
    object.Reset();
    site->Release();
    EXPECT_EQ(S_OK, ocx.canUnloadNow());
}

}  // namespace
}  // namespace controltest
