// Lumbrel.ocx through its exports, before and without registration: the
// class factories and the module's unload rule.
#include <windows.h>

#include <ocidl.h>
#include <ole2.h>

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ModuleTestSupport.h"
#include "OleTestSupport.h"
#include "browser/BrowserIds.h"
#include "control/LumbrelIds.h"
#include "control/resource.h"
#include "foundation/FoundationStrings.h"
#include "gallery/BrowserGalleryWindow.h"
#include "thumbnails/KeyedObject.h"

namespace controltest {
namespace {

class OleEnvironment : public ::testing::Environment {
public:
    void SetUp() override { ASSERT_TRUE(SUCCEEDED(::OleInitialize(nullptr))); }
    void TearDown() override { ::OleUninitialize(); }
};
const auto* const g_environment = ::testing::AddGlobalTestEnvironment(new OleEnvironment);

class ModuleTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(nullptr, ocx.module) << OcxPath();
        ASSERT_NE(nullptr, ocx.canUnloadNow);
        ASSERT_NE(nullptr, ocx.getClassObject);
        ASSERT_NE(nullptr, ocx.registerServer);
        ASSERT_NE(nullptr, ocx.unregisterServer);
    }
    ComPtr<IClassFactory> Factory(const CLSID& classId) {
        ComPtr<IClassFactory> factory;
        EXPECT_EQ(S_OK, ocx.getClassObject(classId, IID_IClassFactory, factory.PutVoid()));
        return factory;
    }
    OcxModule ocx;
};

TEST_F(ModuleTest, ExportsTheFourEntryPointsOnly) {
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(ocx.module);
    const auto* nt =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(reinterpret_cast<const BYTE*>(ocx.module) + dos->e_lfanew);
    const auto& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    ASSERT_NE(0u, directory.VirtualAddress);
    const auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(
        reinterpret_cast<const BYTE*>(ocx.module) + directory.VirtualAddress);
    EXPECT_EQ(4u, exports->NumberOfNames);
}

TEST_F(ModuleTest, HasAFactoryForEachOfItsClasses) {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(S_OK, ocx.getClassObject(CLSID_Lumbrel, IID_IClassFactory, factory.PutVoid()));
    EXPECT_EQ(S_OK,
              ocx.getClassObject(control::kLumbrelPropPageClassId, IID_IClassFactory, factory.PutVoid()));
    EXPECT_EQ(S_OK, ocx.getClassObject(CLSID_Lumbrel, IID_IUnknown, factory.PutVoid()));
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
              ocx.getClassObject(DIID__DLumbrel, IID_IClassFactory, factory.PutVoid()));
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
              ocx.getClassObject(CLSID_NULL, IID_IClassFactory, factory.PutVoid()));
    EXPECT_EQ(E_POINTER, ocx.getClassObject(CLSID_Lumbrel, IID_IClassFactory, nullptr));
    EXPECT_EQ(E_NOINTERFACE, ocx.getClassObject(CLSID_Lumbrel, IID_IDispatch, factory.PutVoid()));
}

TEST_F(ModuleTest, FactoriesMakeTheirObjects) {
    auto controlFactory = Factory(CLSID_Lumbrel);
    ComPtr<IOleObject> object;
    ASSERT_EQ(S_OK, controlFactory->CreateInstance(nullptr, IID_IOleObject, object.PutVoid()));
    CLSID classId = {};
    object->GetUserClassID(&classId);
    EXPECT_TRUE(IsEqualCLSID(CLSID_Lumbrel, classId));
    ComPtr<IUnknown> aggregated;
    EXPECT_EQ(CLASS_E_NOAGGREGATION,
              controlFactory->CreateInstance(object.Get(), IID_IUnknown, aggregated.PutVoid()));
    EXPECT_EQ(E_NOINTERFACE,
              controlFactory->CreateInstance(nullptr, IID_IPropertyPage, aggregated.PutVoid()));
    EXPECT_EQ(E_POINTER, controlFactory->CreateInstance(nullptr, IID_IUnknown, nullptr));

    ComPtr<IPropertyPage> page;
    ASSERT_EQ(S_OK, Factory(control::kLumbrelPropPageClassId)
                        ->CreateInstance(nullptr, IID_IPropertyPage, page.PutVoid()));
    PROPPAGEINFO info = {};
    ASSERT_EQ(S_OK, page->GetPageInfo(&info));
    EXPECT_STREQ(L"General", info.pszTitle);
    ::CoTaskMemFree(info.pszTitle);
}

TEST_F(ModuleTest, CanUnloadOnlyWithoutObjectsAndLocks) {
    EXPECT_EQ(S_OK, ocx.canUnloadNow());
    {
        auto factory = Factory(CLSID_Lumbrel);
        EXPECT_EQ(S_FALSE, ocx.canUnloadNow()) << "a factory is held";
        ASSERT_EQ(S_OK, factory->LockServer(TRUE));
        factory.Reset();
        EXPECT_EQ(S_FALSE, ocx.canUnloadNow()) << "a lock is held";
        Factory(CLSID_Lumbrel)->LockServer(FALSE);
    }
    EXPECT_EQ(S_OK, ocx.canUnloadNow());
    ComPtr<IOleObject> object;
    ASSERT_EQ(S_OK, Factory(CLSID_Lumbrel)->CreateInstance(nullptr, IID_IOleObject, object.PutVoid()));
    EXPECT_EQ(S_FALSE, ocx.canUnloadNow()) << "an object is alive";
    // An embedded, activated object still goes completely at its release.
    TestSite* site = new TestSite();
    ASSERT_EQ(S_OK, Embed(object.Get(), site));
    ComPtr<IConnectionPoint> point;
    ComPtr<IConnectionPointContainer> container;
    object->QueryInterface(IID_IConnectionPointContainer, container.PutVoid());
    container->FindConnectionPoint(DIID__DLumbrelEvents, point.Put());
    point.Reset();
    container.Reset();
    Unembed(object.Get());
    object.Reset();
    site->Release();
    EXPECT_EQ(S_OK, ocx.canUnloadNow());
}

// Every string that the module's code loads from its own table is there, in
// the module a host loads; the two that it asks for on purpose without
// holding them stay out, so that they keep giving the empty text.
TEST_F(ModuleTest, HoldsEveryStringItsCodeAsksFor) {
    const struct {
        UINT id;
        const char* user;
    } asked[] = {
        {IDS_LUMBREL, "user type name"},
        {IDS_LUMBREL_PPG, "property page name"},
        {IDS_LUMBREL_PPG_CAPTION, "property page caption"},
        {IDS_MY_COMPUTER, "drive list"},
        {IDS_DESKTOP, "drive list"},
        {IDS_LOCAL_HAR, "drive list"},
        {IDS_PRODUCT_ENTRY, "drive list"},
        {IDS_DIRECTORIES_KEY, "primary folder"},
        {IDS_PRIMARY_FOLDER_VALUE, "primary folder"},
        {IDS_BRACKET_FIRST, "bracket names"},
        {IDS_BRACKET_SECOND, "bracket names"},
        {IDS_BRACKET_THIRD, "bracket names"},
        {IDS_ASSERT_WITH_FILE, "assertion message"},
        {IDS_ASSERT_WITHOUT_FILE, "assertion message"},
        {IDS_STD_FONT_FACE, "shared fonts"},
        {IDS_STD_FONT_FIXED_FACE, "shared fonts"},
    };
    for (const auto& string : asked) {
        char text[512] = {};
        EXPECT_GT(::LoadStringA(ocx.module, string.id, text, sizeof text), 0)
            << "string " << string.id << " (" << string.user << ")";
    }
    for (const UINT absent : {static_cast<UINT>(thumbnails::kKeyedObjectKeyString),
                              gallery::CBrowserGalleryWindow::kConfirmCommandPrompt}) {
        char text[512] = {};
        EXPECT_EQ(0, ::LoadStringA(ocx.module, absent, text, sizeof text)) << "string " << absent;
    }
}

// A host that frees the module (as CoFreeUnusedLibraries does once
// DllCanUnloadNow says yes) and loads it again. The system keeps a module's
// window classes after it is unloaded; the module must take back its own.
struct ActivatedControl {
    std::vector<std::string> classNames;  // control, dialog's gallery
    bool made = false;
};

ActivatedControl MakeActivateAndRelease(HMODULE module) {
    ActivatedControl result;
    HRESULT(STDAPICALLTYPE * getClassObject)(REFCLSID, REFIID, LPVOID*) = nullptr;
    getClassObject = reinterpret_cast<decltype(getClassObject)>(
        reinterpret_cast<void*>(::GetProcAddress(module, "DllGetClassObject")));
    if (getClassObject == nullptr) return result;
    ComPtr<IClassFactory> factory;
    if (FAILED(getClassObject(CLSID_Lumbrel, IID_IClassFactory, factory.PutVoid()))) return result;
    ComPtr<IOleObject> object;
    if (FAILED(factory->CreateInstance(nullptr, IID_IOleObject, object.PutVoid()))) return result;
    factory.Reset();
    TestSite* site = new TestSite();
    if (SUCCEEDED(Embed(object.Get(), site))) {
        ComPtr<IOleWindow> window;
        HWND control = nullptr;
        if (SUCCEEDED(object->QueryInterface(IID_IOleWindow, window.PutVoid()))) window->GetWindow(&control);
        const HWND dialog = control != nullptr ? ::GetWindow(control, GW_CHILD) : nullptr;
        const HWND gallery = dialog != nullptr ? ::GetDlgItem(dialog, control::kGalleryId) : nullptr;
        if (control != nullptr && gallery != nullptr) {
            for (HWND each : {control, gallery}) {
                char name[128] = {};
                ::GetClassNameA(each, name, sizeof name);
                result.classNames.emplace_back(name);
            }
            // The windows run on the procedures of this load of the module.
            const auto procedure = static_cast<uintptr_t>(::GetClassLongPtrA(gallery, GCLP_WNDPROC));
            const auto base = reinterpret_cast<uintptr_t>(module);
            const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
            const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
            result.made = procedure >= base && procedure < base + nt->OptionalHeader.SizeOfImage;
        }
    }
    Unembed(object.Get());
    object.Reset();
    site->Release();
    PumpMessages();
    return result;
}

TEST(ModuleReloadTest, AFreedModuleTakesBackItsWindowClassesAndALoadAgainMakesWorkingControls) {
    const std::string path = OcxPath();
    // What COM loaded for the tests before (creation by class) goes first,
    // as a host's call gives it back.
    ::CoFreeUnusedLibrariesEx(0, 0);
    ASSERT_EQ(nullptr, ::GetModuleHandleA(path.c_str())) << "nothing else in the process holds the module";
    HMODULE module = ::LoadLibraryA(path.c_str());
    ASSERT_NE(nullptr, module) << path;
    const ActivatedControl first = MakeActivateAndRelease(module);
    ASSERT_TRUE(first.made);
    ASSERT_EQ(2u, first.classNames.size());
    for (const std::string& name : first.classNames) {
        WNDCLASSA info = {};
        EXPECT_TRUE(::GetClassInfoA(module, name.c_str(), &info)) << name << " is registered while loaded";
    }
    ASSERT_TRUE(::FreeLibrary(module));
    ASSERT_EQ(nullptr, ::GetModuleHandleA(path.c_str())) << "the module is gone from the process";
    for (const std::string& name : first.classNames) {
        WNDCLASSA info = {};
        EXPECT_FALSE(::GetClassInfoA(module, name.c_str(), &info)) << name << " outlived the module";
    }

    module = ::LoadLibraryA(path.c_str());
    ASSERT_NE(nullptr, module);
    const ActivatedControl second = MakeActivateAndRelease(module);
    EXPECT_TRUE(second.made);
    EXPECT_EQ(first.classNames.size(), second.classNames.size());
    ::FreeLibrary(module);
}

}  // namespace
}  // namespace controltest
