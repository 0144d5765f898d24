// The control object as a container meets it: its interfaces, identity,
// size, misc status, activation in place, the WM_CREATE and WM_SIZE rules
// and its (empty) drawing.
#include <objsafe.h>

#include <algorithm>

#include "ControlTestEnvironment.h"
#include "control/LumbrelIds.h"
#include "framework/ole/Strings.h"

namespace controltest {
namespace {

class ControlObjectTest : public ControlFixture {};

SIZEL ExpectedHimetric(int cx, int cy) {
    HDC screen = ::GetDC(nullptr);
    const int dpiX = ::GetDeviceCaps(screen, LOGPIXELSX);
    const int dpiY = ::GetDeviceCaps(screen, LOGPIXELSY);
    ::ReleaseDC(nullptr, screen);
    return SIZEL{::MulDiv(cx, 2540, dpiX), ::MulDiv(cy, 2540, dpiY)};
}

TEST_F(ControlObjectTest, AnswersTheInterfacesOfAControl) {
    const IID interfaces[] = {IID_IOleObject,
                              IID_IOleInPlaceObject,
                              IID_IOleInPlaceActiveObject,
                              IID_IOleControl,
                              IID_IViewObject,
                              IID_IViewObject2,
                              IID_IPersistStreamInit,
                              IID_IPersistPropertyBag,
                              IID_IDispatch,
                              DIID__DLumbrel,
                              IID_IConnectionPointContainer,
                              IID_IProvideClassInfo,
                              IID_IProvideClassInfo2,
                              IID_ISpecifyPropertyPages,
                              IID_IOleWindow,
                              IID_IPersist};
    ComPtr<IUnknown> identity = As<IUnknown>(IID_IUnknown);
    for (const IID& iid : interfaces) {
        ComPtr<IUnknown> pointer;
        ASSERT_EQ(S_OK, Unknown()->QueryInterface(iid, pointer.PutVoid()));
        ComPtr<IUnknown> back;
        ASSERT_EQ(S_OK, pointer->QueryInterface(IID_IUnknown, back.PutVoid()));
        EXPECT_EQ(identity.Get(), back.Get()) << "IUnknown identity";
    }
}

TEST_F(ControlObjectTest, IsNotMarkedSafeForScriptingOrInitialization) {
    ComPtr<IUnknown> safety;
    EXPECT_EQ(E_NOINTERFACE, Unknown()->QueryInterface(IID_IObjectSafety, safety.PutVoid()));
}

TEST_F(ControlObjectTest, RefusesNullOutPointers) {
    EXPECT_EQ(E_POINTER, Unknown()->QueryInterface(IID_IOleObject, nullptr));
    auto ole = As<IOleObject>(IID_IOleObject);
    EXPECT_EQ(E_POINTER, ole->GetExtent(DVASPECT_CONTENT, nullptr));
    EXPECT_EQ(E_POINTER, ole->GetMiscStatus(DVASPECT_CONTENT, nullptr));
    EXPECT_EQ(E_POINTER, ole->GetUserType(USERCLASSTYPE_FULL, nullptr));
    EXPECT_EQ(E_POINTER, ole->GetUserClassID(nullptr));
    auto pages = As<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages);
    EXPECT_EQ(E_POINTER, pages->GetPages(nullptr));
    auto info = As<IProvideClassInfo2>(IID_IProvideClassInfo2);
    EXPECT_EQ(E_POINTER, info->GetClassInfo(nullptr));
    EXPECT_EQ(E_POINTER, info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, nullptr));
    auto active = As<IOleInPlaceActiveObject>(IID_IOleInPlaceActiveObject);
    EXPECT_EQ(E_INVALIDARG, active->TranslateAccelerator(nullptr));
}

TEST_F(ControlObjectTest, StartsAt540By354PixelsInHimetric) {
    const SIZEL expected = ExpectedHimetric(540, 354);
    SIZEL extent = {};
    ASSERT_EQ(S_OK, As<IOleObject>(IID_IOleObject)->GetExtent(DVASPECT_CONTENT, &extent));
    EXPECT_EQ(expected.cx, extent.cx);
    EXPECT_EQ(expected.cy, extent.cy);
    SIZEL viewExtent = {};
    ASSERT_EQ(S_OK,
              As<IViewObject2>(IID_IViewObject2)->GetExtent(DVASPECT_CONTENT, -1, nullptr, &viewExtent));
    EXPECT_EQ(expected.cx, viewExtent.cx);
    EXPECT_EQ(expected.cy, viewExtent.cy);
    EXPECT_EQ(DV_E_DVASPECT, As<IOleObject>(IID_IOleObject)->GetExtent(DVASPECT_ICON, &extent));
}

TEST_F(ControlObjectTest, DescribesItself) {
    auto ole = As<IOleObject>(IID_IOleObject);
    DWORD status = 0;
    ASSERT_EQ(S_OK, ole->GetMiscStatus(DVASPECT_CONTENT, &status));
    EXPECT_EQ(0x20191u, status);
    EXPECT_EQ(static_cast<DWORD>(OLEMISC_SETCLIENTSITEFIRST | OLEMISC_ACTIVATEWHENVISIBLE |
                                 OLEMISC_INSIDEOUT | OLEMISC_CANTLINKINSIDE | OLEMISC_RECOMPOSEONRESIZE),
              status);

    LPOLESTR name = nullptr;
    ASSERT_EQ(S_OK, ole->GetUserType(USERCLASSTYPE_FULL, &name));
    EXPECT_STREQ(L"Lumbrel Control", name);
    ::CoTaskMemFree(name);

    CLSID classId = {};
    ASSERT_EQ(S_OK, ole->GetUserClassID(&classId));
    EXPECT_TRUE(IsEqualCLSID(CLSID_Lumbrel, classId));
    ASSERT_EQ(S_OK, As<IPersistStreamInit>(IID_IPersistStreamInit)->GetClassID(&classId));
    EXPECT_TRUE(IsEqualCLSID(CLSID_Lumbrel, classId));

    CAUUID pages = {};
    ASSERT_EQ(S_OK, As<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages)->GetPages(&pages));
    ASSERT_EQ(1u, pages.cElems);
    EXPECT_TRUE(IsEqualCLSID(control::kLumbrelPropPageClassId, pages.pElems[0]));
    ::CoTaskMemFree(pages.pElems);

    auto classInfo = As<IProvideClassInfo2>(IID_IProvideClassInfo2);
    GUID events = {};
    ASSERT_EQ(S_OK, classInfo->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events));
    EXPECT_TRUE(IsEqualIID(DIID__DLumbrelEvents, events));
    EXPECT_EQ(E_INVALIDARG, classInfo->GetGUID(12345, &events));
    ComPtr<ITypeInfo> coclass;
    ASSERT_EQ(S_OK, classInfo->GetClassInfo(coclass.Put()));
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, coclass->GetTypeAttr(&attributes));
    EXPECT_TRUE(IsEqualCLSID(CLSID_Lumbrel, attributes->guid));
    EXPECT_EQ(TKIND_COCLASS, attributes->typekind);
    coclass->ReleaseTypeAttr(attributes);
}

TEST_F(ControlObjectTest, ActivatesInPlaceAndCreatesTheBrowserInItsWindow) {
    Activate();
    const HWND window = ControlWindow();
    ASSERT_NE(nullptr, window);
    EXPECT_EQ(site->Frame(), ::GetParent(window));
    EXPECT_TRUE(::GetWindowLongA(window, GWL_STYLE) & WS_CHILD);
    RECT rect = {};
    ::GetWindowRect(window, &rect);
    ::MapWindowPoints(nullptr, site->Frame(), reinterpret_cast<POINT*>(&rect), 2);
    EXPECT_EQ(site->position.left, rect.left);
    EXPECT_EQ(site->position.top, rect.top);
    EXPECT_EQ(site->position.right, rect.right);
    EXPECT_EQ(site->position.bottom, rect.bottom);

    // WM_CREATE made the dialog as the control's child.
    EXPECT_EQ(1u, control->Count("CreateBrowserWindow"));
    ASSERT_NE(nullptr, control->BrowserWindow());
    EXPECT_EQ(window, ::GetParent(control->BrowserWindow()));

    const std::vector<std::string> expected = {"CanInPlaceActivate", "OnInPlaceActivate", "GetWindowContext"};
    EXPECT_EQ(expected, site->calls);
    EXPECT_TRUE(control->IsInPlaceActive());
    EXPECT_FALSE(control->IsUIActive());

    HWND reported = nullptr;
    EXPECT_EQ(S_OK, As<IOleInPlaceObject>(IID_IOleInPlaceObject)->GetWindow(&reported));
    EXPECT_EQ(window, reported);
}

TEST_F(ControlObjectTest, CreationOfTheWindowSucceedsWhenTheDialogDoesNot) {
    control->createFails = true;
    Activate();
    EXPECT_NE(nullptr, ControlWindow());
    EXPECT_EQ(nullptr, control->BrowserWindow());
}

TEST_F(ControlObjectTest, UIActivationMakesItTheFramesActiveObject) {
    Activate(OLEIVERB_UIACTIVATE);
    EXPECT_TRUE(control->IsUIActive());
    ASSERT_TRUE(site->activeObject);
    ComPtr<IUnknown> active;
    site->activeObject->QueryInterface(IID_IUnknown, active.PutVoid());
    EXPECT_EQ(As<IUnknown>(IID_IUnknown).Get(), active.Get());
    EXPECT_EQ(L"Lumbrel Control", site->activeObjectName);

    ASSERT_EQ(S_OK, As<IOleInPlaceObject>(IID_IOleInPlaceObject)->UIDeactivate());
    EXPECT_FALSE(control->IsUIActive());
    EXPECT_FALSE(site->activeObject);
    EXPECT_EQ(1u, std::count(site->calls.begin(), site->calls.end(), std::string("OnUIDeactivate")));
}

TEST_F(ControlObjectTest, RefusedActivationLeavesNoWindow) {
    site->refuseActivation = true;
    EXPECT_TRUE(FAILED(Embed(Unknown(), site)));
    EXPECT_EQ(nullptr, ControlWindow());
    EXPECT_FALSE(control->IsInPlaceActive());
}

TEST_F(ControlObjectTest, ActivationWithoutASiteFails) {
    RECT rect = {0, 0, 10, 10};
    EXPECT_EQ(E_UNEXPECTED, As<IOleObject>(IID_IOleObject)
                                ->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, nullptr, 0, nullptr, &rect));
}

TEST_F(ControlObjectTest, DeactivationDestroysWindowAndDialog) {
    Activate();
    const HWND window = ControlWindow();
    const HWND dialog = control->BrowserWindow();
    ASSERT_EQ(S_OK, As<IOleInPlaceObject>(IID_IOleInPlaceObject)->InPlaceDeactivate());
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_FALSE(::IsWindow(dialog));
    EXPECT_EQ(nullptr, ControlWindow());
    EXPECT_EQ("OnInPlaceDeactivate", site->calls.back());
    // A second activation makes both again.
    Activate();
    EXPECT_NE(nullptr, ControlWindow());
    EXPECT_EQ(2u, control->Count("CreateBrowserWindow"));
}

TEST_F(ControlObjectTest, CloseDeactivatesAndSavesWhenAsked) {
    Activate();
    control->SetThumbNailState(TRUE);  // makes the state dirty
    ASSERT_EQ(S_OK, As<IOleObject>(IID_IOleObject)->Close(OLECLOSE_SAVEIFDIRTY));
    EXPECT_EQ(nullptr, ControlWindow());
    EXPECT_EQ(1u, std::count(site->calls.begin(), site->calls.end(), std::string("SaveObject")));
}

TEST_F(ControlObjectTest, SizeRuleMovesTheDialogForRestoredSizesOnly) {
    Activate();
    RECT position = {20, 30, 420, 330};
    ASSERT_EQ(S_OK, As<IOleInPlaceObject>(IID_IOleInPlaceObject)->SetObjectRects(&position, &position));
    RECT dialog = {};
    ::GetWindowRect(control->BrowserWindow(), &dialog);
    ::MapWindowPoints(nullptr, ControlWindow(), reinterpret_cast<POINT*>(&dialog), 2);
    EXPECT_EQ(0, dialog.left);
    EXPECT_EQ(0, dialog.top);
    EXPECT_EQ(400, dialog.right);
    EXPECT_EQ(300, dialog.bottom);
    SIZEL extent = control->Extent();
    const SIZEL expected = ExpectedHimetric(400, 300);
    EXPECT_EQ(expected.cx, extent.cx);
    EXPECT_EQ(expected.cy, extent.cy);

    // Any size type but the dialog's identifier (0, SIZE_RESTORED) leaves
    // dialog and extent alone.
    ::SendMessageA(ControlWindow(), WM_SIZE, SIZE_MAXIMIZED, MAKELPARAM(200, 100));
    ::GetWindowRect(control->BrowserWindow(), &dialog);
    EXPECT_EQ(400, dialog.right - dialog.left);
    EXPECT_EQ(expected.cx, control->Extent().cx);
    EXPECT_EQ(expected.cy, control->Extent().cy);

    // SIZE_RESTORED takes the size of the message as the control's size.
    ::SendMessageA(ControlWindow(), WM_SIZE, SIZE_RESTORED, MAKELPARAM(200, 100));
    const SIZEL restored = ExpectedHimetric(200, 100);
    EXPECT_EQ(restored.cx, control->Extent().cx);
    EXPECT_EQ(restored.cy, control->Extent().cy);
}

TEST_F(ControlObjectTest, DrawsNothing) {
    HDC screen = ::GetDC(nullptr);
    HDC dc = ::CreateCompatibleDC(screen);
    HBITMAP bitmap = ::CreateCompatibleBitmap(screen, 20, 20);
    ::ReleaseDC(nullptr, screen);
    HGDIOBJ old = ::SelectObject(dc, bitmap);
    RECT all = {0, 0, 20, 20};
    HBRUSH brush = ::CreateSolidBrush(RGB(12, 34, 56));
    ::FillRect(dc, &all, brush);
    const COLORREF before = ::GetPixel(dc, 10, 10);
    RECTL bounds = {0, 0, 20, 20};
    EXPECT_EQ(S_OK,
              As<IViewObject2>(IID_IViewObject2)
                  ->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, dc, &bounds, nullptr, nullptr, 0));
    EXPECT_EQ(before, ::GetPixel(dc, 10, 10));
    EXPECT_EQ(before, ::GetPixel(dc, 0, 0));
    EXPECT_EQ(E_INVALIDARG, As<IViewObject2>(IID_IViewObject2)
                                ->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, nullptr, &bounds,
                                       nullptr, nullptr, 0));
    ::SelectObject(dc, old);
    ::DeleteObject(brush);
    ::DeleteObject(bitmap);
    ::DeleteDC(dc);
}

TEST(ControlWithoutWindow, MembersOnlyStoreUntilTheDialogExists) {
    // The control as the module makes it, with the real dialog side, never
    // activated: no window, no dialog.
    auto* plain = new CLumbrelCtrl();
    ASSERT_EQ(nullptr, plain->BrowserWindow());
    plain->SetItemPath("C:\\art", 2);
    EXPECT_EQ("C:\\art", plain->itemPath);
    EXPECT_EQ(2, plain->initialPosition);
    // Nothing else may fail or make a window.
    plain->RefreshCombo("D:", TRUE);
    plain->RefreshControl();
    plain->RedrawBitmaps();
    plain->SetThumbNailState(FALSE);
    EXPECT_EQ(0, plain->largeThumbnails);
    plain->SetThumbNailState(TRUE);
    EXPECT_EQ(1, plain->largeThumbnails);
    plain->DoubleClickFlag(TRUE);
    EXPECT_EQ(1, plain->doubleClickFlag);
    EXPECT_FALSE(plain->GetAspectRatio());
    EXPECT_FALSE(plain->GetThumbNailState());
    EXPECT_EQ(nullptr, plain->BrowserWindow());
    EXPECT_EQ(nullptr, plain->ControlWindow().Handle());
    plain->Release();
    EXPECT_EQ(0, framework::ole::ObjectCount());
}

TEST_F(ControlObjectTest, ReleaseWhileActiveTearsDownCleanly) {
    Activate();
    const HWND window = ControlWindow();
    site->AddRef();
    ASSERT_EQ(S_OK, As<IOleObject>(IID_IOleObject)->SetClientSite(nullptr));
    EXPECT_FALSE(::IsWindow(window));
    site->Release();
}

}  // namespace
}  // namespace controltest
