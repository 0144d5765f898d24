// The browser inside the real control, embedded as a host embeds it: the
// control is its own browser dialog (its second base), the host's members
// drive it, and the double click — which the control's message filter turns
// into events — fires ItemSel and ItemDBClick through the real event
// interface, each record compared in full. What the dialog fires itself
// reaches the host once, through the control's connection point.
#include <ole2.h>

#include <cstring>

#include "ArtLayout.h"
#include "BrowserTestSupport.h"
#include "EmbeddedControlTest.h"
#include "OleTestSupport.h"
#include "browser/GraphicDlg.h"
#include "control/ControlModule.h"
#include "control/LumbrelCtrl.h"
#include "control/LumbrelIds.h"
#include "framework/ole/ModuleLock.h"
#include "framework/win32/Window.h"

namespace browsertest {
namespace {

using controltest::RecordedEvent;
using controltest::TestSite;

// Activated UI-active, its browser showing the primary folder, and nothing
// heard yet.
class ControlBrowserTest : public EmbeddedControlTest {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(EmbeddedControlTest::SetUp());
        dialog->ResetDriveCombo("");
        dialog->RebuildFromDriveCombo();
        Events().clear();
    }

    std::vector<RecordedEvent>& Events() { return host->Events(); }
    HWND Item(int id) const { return host->Item(id); }
    HTREEITEM Find(HTREEITEM parent, const std::string& text) const { return host->TreeItem(text, parent); }
    BOOL DoubleClickAt(HWND window) {
        RECT rect = {};
        ::GetWindowRect(window, &rect);
        MSG msg = {};
        msg.hwnd = window;
        msg.message = WM_LBUTTONDBLCLK;
        msg.pt = POINT{(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
        return control->ControlWindow().PreTranslateMessage(&msg);
    }
    std::vector<GraphicItemInfo> Records() const { return host->Records(); }
    std::vector<DISPID> Kinds() const { return host->Kinds(); }
};

TEST(ControlModuleBrowser, TheModulesControlComesWithTheBrowserDialog) {
    ScopedPrimaryFolder primary{SharedLayout().Primary()};
    controltest::ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, control::GetClassObject(CLSID_Lumbrel, IID_IClassFactory, factory.PutVoid()));
    controltest::ComPtr<IUnknown> object;
    ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IUnknown, object.PutVoid()));
    TestSite* site = new TestSite();
    ASSERT_EQ(S_OK, controltest::Embed(object.Get(), site, OLEIVERB_INPLACEACTIVATE));
    controltest::ComPtr<IOleWindow> window;
    ASSERT_EQ(S_OK, object->QueryInterface(IID_IOleWindow, window.PutVoid()));
    HWND control = nullptr;
    ASSERT_EQ(S_OK, window->GetWindow(&control));
    // The control's window holds the dialog, and the dialog its tree, which
    // shows the primary folder.
    const HWND dialog = ::GetWindow(control, GW_CHILD);
    ASSERT_NE(nullptr, dialog);
    const HWND tree = ::GetDlgItem(dialog, IDC_FOLDER_TREE);
    ASSERT_NE(nullptr, tree);
    EXPECT_GT(::SendMessageA(tree, TVM_GETCOUNT, 0, 0), 0);
    EXPECT_NE(nullptr, ::GetDlgItem(dialog, IDC_GALLERY));
    window.Reset();
    controltest::Unembed(object.Get());
    object.Reset();
    factory.Reset();
    site->Release();
    EXPECT_EQ(0, framework::ole::ObjectCount());
}

TEST_F(ControlBrowserTest, TheDialogFillsTheControlsWindow) {
    const HWND window = control->ControlWindow().Handle();
    EXPECT_EQ(window, ::GetParent(dialog->Handle()));
    EXPECT_EQ(window, dialog->parentWindow);
    EXPECT_EQ(dialog->Handle(), control->BrowserWindow());
    EXPECT_NE(nullptr, Item(control::kGalleryId));
    EXPECT_TRUE(control->GetThumbNailState()) << "radio 1087 is checked at start";
}

TEST_F(ControlBrowserTest, ADoubleClickOnAPictureInTheTreeTellsTheHostThreeTimes) {
    const HTREEITEM types = Find(TVI_ROOT, "Types");
    ASSERT_NE(nullptr, types);
    dialog->tree.Expand(types, TVE_EXPAND);
    dialog->tree.SelectItem(Find(types, "photo.jpg"));
    Events().clear();
    EXPECT_FALSE(DoubleClickAt(Item(control::kTreeId))) << "the message goes on to the tree";
    const std::string path = layout.Path("Types\\photo.jpg");
    EXPECT_EQ(
        (std::vector<DISPID>{control::kDispidItemSel, control::kDispidItemSel, control::kDispidItemDBClick}),
        Kinds());
    EXPECT_TRUE(SameRecords({Record(1, 0, path), Record(1, 1, path, "photo.jpg")}, Records()));
    ASSERT_EQ(3u, Events().size());
    EXPECT_EQ(VT_BYREF, Events()[1].argumentType);
    EXPECT_EQ(static_cast<void*>(&dialog->itemInfo), Events()[1].reference)
        << "the double click passes itemInfo itself";
}

TEST_F(ControlBrowserTest, ADoubleClickOnAFolderInTheTreeTellsNothing) {
    dialog->tree.SelectItem(Find(TVI_ROOT, "Empty"));
    Events().clear();
    DoubleClickAt(Item(control::kTreeId));
    EXPECT_TRUE(Events().empty());
    EXPECT_EQ(0, dialog->itemInfo.valid);
}

TEST_F(ControlBrowserTest, ADoubleClickOnAContainerInTheTreeTellsNothingByItself) {
    dialog->tree.SelectItem(Find(TVI_ROOT, "Animals"));
    Events().clear();
    DoubleClickAt(Item(control::kTreeId));
    EXPECT_TRUE(Events().empty());
    EXPECT_TRUE(SameRecords({Record(1, 1, layout.Path("Animals.QLT"))}, {dialog->itemInfo}));
}

TEST_F(ControlBrowserTest, ADoubleClickInTheGallerySendsTheLastRecordAgain) {
    dialog->tree.SelectItem(Find(TVI_ROOT, "Animals"));
    dialog->SetGalleryCurrentIndex(1);
    dialog->SetGallerySelection(1);
    dialog->OnGalleryCommand();
    Events().clear();
    DoubleClickAt(Item(control::kGalleryId));
    EXPECT_EQ((std::vector<DISPID>{control::kDispidItemSel, control::kDispidItemDBClick}), Kinds());
    EXPECT_TRUE(SameRecords({Record(1, 2, layout.Path("Animals.QLT"))}, Records()));
}

TEST_F(ControlBrowserTest, SetItemPathNavigatesAndTheHostHearsEveryStep) {
    const std::string path = layout.Path("lower\\cats");
    ASSERT_EQ(S_OK, host->SetItemPath(path, 2));
    const std::string container = path + ".QLT";
    EXPECT_TRUE(SameRecords(
        {NothingSelected(), NothingSelected(), Record(1, 1, container), Record(1, 2, container)}, Records()));
    EXPECT_EQ(1, dialog->gallery->SelectedIndex());
}

TEST_F(ControlBrowserTest, RefreshComboPutsTheDriveInAndNavigatesThere) {
    control->RefreshCombo("C:", TRUE);
    EXPECT_EQ("C:", dialog->driveCombo.GetCurrentText());
    EXPECT_FALSE(dialog->driveCombo.populated);
    ASSERT_FALSE(Records().empty());
    EXPECT_TRUE(SameRecords({NothingSelected()}, {Records().front()})) << "the tree was rebuilt";
    Events().clear();
    control->RefreshCombo("D:", FALSE);
    EXPECT_TRUE(Events().empty());
    EXPECT_EQ("C:", dialog->driveCombo.GetCurrentText());
}

TEST_F(ControlBrowserTest, TheSizeStateRedrawsTheGalleryInTheOtherSize) {
    dialog->tree.SelectItem(Find(TVI_ROOT, "Animals"));
    control->SetThumbNailState(FALSE);
    EXPECT_EQ(0, dialog->largeThumbnails);
    EXPECT_EQ(72, dialog->gallery->GetCellSize().cx);
    control->SetThumbNailState(TRUE);
    EXPECT_EQ(145, dialog->gallery->GetCellSize().cx);
    EXPECT_TRUE(control->GetThumbNailState());
}

TEST_F(ControlBrowserTest, AGalleryClickTellsTheHostOnce) {
    dialog->tree.SelectItem(Find(TVI_ROOT, "Animals"));
    dialog->SetGalleryCurrentIndex(2);
    dialog->SetGallerySelection(2);
    Events().clear();
    // The gallery's own road: a direct OnCmdMsg on its parent's window object.
    framework::win32::Window* parent = framework::win32::Window::FromHandle(dialog->Handle());
    ASSERT_EQ(&control->DialogWindow(), parent);
    EXPECT_TRUE(parent->OnCmdMsg(control::kGalleryId, 0, nullptr, nullptr));
    EXPECT_EQ((std::vector<DISPID>{control::kDispidItemSel}), Kinds());
    EXPECT_TRUE(SameRecords({Record(1, 3, layout.Path("Animals.QLT"))}, Records()));
    // And as a notification the dialog window receives.
    Events().clear();
    ::SendMessageA(dialog->Handle(), WM_COMMAND, MAKEWPARAM(control::kGalleryId, BN_CLICKED),
                   reinterpret_cast<LPARAM>(Item(control::kGalleryId)));
    EXPECT_EQ((std::vector<DISPID>{control::kDispidItemSel}), Kinds());
    // The control's own window object has no such command.
    Events().clear();
    EXPECT_FALSE(control->ControlWindow().OnCmdMsg(control::kGalleryId, 0, nullptr, nullptr));
    EXPECT_TRUE(Events().empty());
}

TEST_F(ControlBrowserTest, WhatTheDialogFiresReachesTheHostOnceWithTheRecordItself) {
    browser::GraphicItemInfo record = Record(1, 7, "C:\\x.QLT");
    dialog->FireItemSel(record);
    ASSERT_EQ(1u, Events().size());
    EXPECT_EQ(control::kDispidItemSel, Events()[0].dispid);
    EXPECT_EQ(static_cast<void*>(&record), Events()[0].reference);
    EXPECT_TRUE(SameRecords({record}, Records()));
}

TEST_F(ControlBrowserTest, TheDialogFollowsTheControlsSize) {
    ASSERT_EQ(S_OK, host->Grow(0, 0));
    RECT before = {};
    ::GetWindowRect(Item(control::kGalleryId), &before);
    ASSERT_EQ(S_OK, host->Grow(40, 30));
    RECT position = host->Site().position;
    position.right += 40;
    position.bottom += 30;
    RECT client = {};
    ::GetClientRect(dialog->Handle(), &client);
    EXPECT_EQ(position.right - position.left, client.right);
    EXPECT_EQ(position.bottom - position.top, client.bottom);
    RECT after = {};
    ::GetWindowRect(Item(control::kGalleryId), &after);
    EXPECT_EQ((before.right - before.left) + 40, after.right - after.left);
    EXPECT_EQ((before.bottom - before.top) + 30, after.bottom - after.top);
}

}  // namespace
}  // namespace browsertest
