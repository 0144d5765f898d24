// The property page "General": dialog 201 behind IPropertyPage.
#include "ControlTestEnvironment.h"
#include "control/LumbrelPropPage.h"
#include "framework/ole/Strings.h"

namespace controltest {
namespace {

TEST(PropertyPageTest, DescribesItselfAsGeneral) {
    auto* page = new CLumbrelPropPage();
    PROPPAGEINFO info = {};
    ASSERT_EQ(S_OK, page->GetPageInfo(&info));
    EXPECT_STREQ(L"General", info.pszTitle);
    EXPECT_GT(info.size.cx, 0);
    EXPECT_GT(info.size.cy, 0);
    EXPECT_GT(info.size.cx, info.size.cy) << "250 by 62 units";
    ::CoTaskMemFree(info.pszTitle);
    EXPECT_EQ(S_FALSE, page->IsPageDirty());
    EXPECT_EQ(S_OK, page->Apply());
    page->Release();
    EXPECT_EQ(0, framework::ole::ObjectCount());
}

TEST(PropertyPageTest, ActivatesAsAChildOfTheFrame) {
    TestSite* site = new TestSite();
    auto* page = new CLumbrelPropPage();
    CLumbrelCtrl* object = new CLumbrelCtrl();
    IUnknown* objects[] = {static_cast<IOleObject*>(object)};
    ASSERT_EQ(S_OK, page->SetObjects(1, objects));
    EXPECT_EQ(1u, page->ObjectCount());
    PROPPAGEINFO info = {};
    ASSERT_EQ(S_OK, page->GetPageInfo(&info));
    ::CoTaskMemFree(info.pszTitle);
    RECT rect = {5, 5, 400, 120};
    ASSERT_EQ(S_OK, page->Activate(site->Frame(), &rect, TRUE));
    const HWND window = page->PageWindow();
    ASSERT_NE(nullptr, window);
    EXPECT_EQ(site->Frame(), ::GetParent(window));
    EXPECT_TRUE(::GetWindowLongA(window, GWL_STYLE) & WS_CHILD);
    char text[128] = {};
    ::GetDlgItemTextA(window, 1003, text, sizeof text);
    EXPECT_STRNE("", text);

    // 250 by 62 dialog units of its font, MS Sans Serif 8, as the page
    // reported before it had a window.
    RECT units = {0, 0, 250, 62};
    ASSERT_TRUE(::MapDialogRect(window, &units));
    EXPECT_EQ(units.right, info.size.cx);
    EXPECT_EQ(units.bottom, info.size.cy);
    LOGFONTA font = {};
    const HFONT pageFont = reinterpret_cast<HFONT>(::SendMessageA(window, WM_GETFONT, 0, 0));
    ASSERT_NE(nullptr, pageFont);
    ASSERT_NE(0, ::GetObjectA(pageFont, sizeof font, &font));
    EXPECT_STREQ("MS Sans Serif", font.lfFaceName);
    // One static text and nothing else: no property is bound.
    int children = 0;
    for (HWND child = ::GetWindow(window, GW_CHILD); child != nullptr;
         child = ::GetWindow(child, GW_HWNDNEXT)) {
        char name[32] = {};
        ::GetClassNameA(child, name, sizeof name);
        EXPECT_STREQ("Static", name);
        ++children;
    }
    EXPECT_EQ(1, children);
    EXPECT_EQ(E_UNEXPECTED, page->Activate(site->Frame(), &rect, TRUE)) << "one window at a time";
    ASSERT_EQ(S_OK, page->Show(SW_SHOW));
    ASSERT_EQ(S_OK, page->Deactivate());
    EXPECT_FALSE(::IsWindow(window));
    ASSERT_EQ(S_OK, page->SetObjects(0, nullptr));
    page->Release();
    object->Release();
    site->Release();
    EXPECT_EQ(0, framework::ole::ObjectCount());
}

}  // namespace
}  // namespace controltest
