// The control object holds two framework windows: the control's own and the
// browser dialog's, one per base. Each window's WM_CREATE, WM_SIZE and
// PreTranslateMessage must reach the handlers of its own side, once: the
// dialog's resize moves its anchored children, the control's runs the size
// rule; a key walks up through gallery, dialog and control and meets the
// keyboard map once. The control here has the real dialog (template 202).
#include <vector>

#include "ControlTestEnvironment.h"
#include "browser/BrowserIds.h"
#include "control/LumbrelIds.h"
#include "framework/win32/Application.h"
#include "framework/win32/Window.h"

namespace controltest {
namespace {

using framework::win32::Window;

// The control with counters on its three window hooks.
class ProbeControl : public CLumbrelCtrl {
public:
    int creates = 0;
    int sizes = 0;
    std::vector<WPARAM> keys;  // WM_KEYDOWN offered to the keyboard map

protected:
    int OnControlCreate(CREATESTRUCTA* create) override {
        ++creates;
        return CLumbrelCtrl::OnControlCreate(create);
    }
    void OnControlSize(UINT type, int cx, int cy) override {
        ++sizes;
        CLumbrelCtrl::OnControlSize(type, cx, cy);
    }
    BOOL PreTranslateControlMessage(MSG* msg) override {
        if (msg != nullptr && msg->message == WM_KEYDOWN) keys.push_back(msg->wParam);
        return CLumbrelCtrl::PreTranslateControlMessage(msg);
    }
};

class WindowSidesTest : public ::testing::Test {
protected:
    void SetUp() override {
        control = new ProbeControl();
        site = new TestSite();
        ASSERT_EQ(S_OK, Embed(Unknown(), site, OLEIVERB_UIACTIVATE));
        window = control->ControlWindow().Handle();
        dialog = control->BrowserWindow();
        ASSERT_NE(nullptr, window);
        ASSERT_NE(nullptr, dialog);
        gallery = ::GetDlgItem(dialog, IDC_GALLERY);
        tree = ::GetDlgItem(dialog, IDC_FOLDER_TREE);
        ASSERT_NE(nullptr, gallery);
        ASSERT_NE(nullptr, tree);
    }
    void TearDown() override {
        Unembed(Unknown());
        control->Release();
        site->Release();
        EXPECT_EQ(0, framework::ole::ObjectCount());
    }

    IUnknown* Unknown() const { return static_cast<IOleObject*>(control); }
    // A child's rectangle in the dialog's client coordinates.
    RECT ChildRect(int id) const {
        RECT rect = {};
        ::GetWindowRect(::GetDlgItem(dialog, id), &rect);
        ::MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&rect), 2);
        return rect;
    }
    void PlaceControl(int width, int height) {
        const RECT position = {10, 10, 10 + width, 10 + height};
        ComPtr<IOleInPlaceObject> inPlace;
        ASSERT_EQ(S_OK, Unknown()->QueryInterface(IID_IOleInPlaceObject, inPlace.PutVoid()));
        ASSERT_EQ(S_OK, inPlace->SetObjectRects(&position, &position));
    }
    static MSG KeyDown(HWND target, WPARAM key) {
        MSG msg = {};
        msg.hwnd = target;
        msg.message = WM_KEYDOWN;
        msg.wParam = key;
        msg.lParam = 1;
        return msg;
    }

    ProbeControl* control = nullptr;
    TestSite* site = nullptr;
    HWND window = nullptr;
    HWND dialog = nullptr;
    HWND gallery = nullptr;
    HWND tree = nullptr;
};

TEST_F(WindowSidesTest, EachWindowIsBoundToItsOwnSide) {
    Window* const controlSide = &control->ControlWindow();
    Window* const dialogSide = &control->DialogWindow();
    EXPECT_NE(controlSide, dialogSide);
    EXPECT_EQ(controlSide, Window::FromHandle(window));
    EXPECT_EQ(dialogSide, Window::FromHandle(dialog));
}

TEST_F(WindowSidesTest, CreationMakesTheDialogOnceAndTheDialogBuildsItself) {
    // The control's WM_CREATE ran the control's hook once; the dialog's
    // WM_CREATE did not reach it (it would have made a dialog inside the
    // dialog).
    EXPECT_EQ(1, control->creates);
    EXPECT_EQ(window, ::GetParent(dialog));
    EXPECT_EQ(dialog, ::GetWindow(window, GW_CHILD));
    EXPECT_EQ(nullptr, ::GetWindow(dialog, GW_HWNDNEXT)) << "the dialog is the control's only child";
    EXPECT_EQ(nullptr, ::FindWindowExA(dialog, nullptr, "#32770", nullptr)) << "no dialog inside the dialog";
    // The dialog's own start-up ran on the dialog side.
    EXPECT_EQ(window, control->parentWindow);
    EXPECT_EQ(BST_CHECKED, ::SendMessageA(::GetDlgItem(dialog, IDC_LARGE_THUMBNAILS), BM_GETCHECK, 0, 0));
}

TEST_F(WindowSidesTest, AResizeRunsTheControlsRuleOnceAndMovesTheDialogsAnchors) {
    PlaceControl(600, 400);
    const RECT galleryBefore = ChildRect(IDC_GALLERY);
    const RECT treeBefore = ChildRect(IDC_FOLDER_TREE);
    const RECT radioBefore = ChildRect(IDC_LARGE_THUMBNAILS);
    const RECT comboBefore = ChildRect(IDC_DRIVE_COMBO);
    control->sizes = 0;

    PlaceControl(700, 520);
    // Only the control's WM_SIZE ran the control's rule; the dialog's own
    // WM_SIZE, which that rule set off by moving the dialog, did not.
    EXPECT_EQ(1, control->sizes);
    RECT client = {};
    ::GetClientRect(dialog, &client);
    EXPECT_EQ(700, client.right);
    EXPECT_EQ(520, client.bottom);

    // The dialog's handler moved each anchored child by the change, once.
    const RECT galleryAfter = ChildRect(IDC_GALLERY);
    EXPECT_EQ(galleryBefore.left, galleryAfter.left);
    EXPECT_EQ(galleryBefore.top, galleryAfter.top);
    EXPECT_EQ(galleryBefore.right + 100, galleryAfter.right);
    EXPECT_EQ(galleryBefore.bottom + 120, galleryAfter.bottom);
    const RECT treeAfter = ChildRect(IDC_FOLDER_TREE);
    EXPECT_EQ(treeBefore.right, treeAfter.right);
    EXPECT_EQ(treeBefore.top, treeAfter.top);
    EXPECT_EQ(treeBefore.bottom + 120, treeAfter.bottom);
    const RECT radioAfter = ChildRect(IDC_LARGE_THUMBNAILS);
    EXPECT_EQ(radioBefore.left, radioAfter.left);
    EXPECT_EQ(radioBefore.top + 120, radioAfter.top);
    EXPECT_EQ(radioBefore.bottom + 120, radioAfter.bottom);
    const RECT comboAfter = ChildRect(IDC_DRIVE_COMBO);
    EXPECT_TRUE(::EqualRect(&comboBefore, &comboAfter));
}

TEST_F(WindowSidesTest, TheDialogsOwnResizeDoesNotReachTheControl) {
    control->sizes = 0;
    const RECT galleryBefore = ChildRect(IDC_GALLERY);
    RECT dialogRect = {};
    ::GetClientRect(dialog, &dialogRect);
    ::MoveWindow(dialog, 0, 0, dialogRect.right + 30, dialogRect.bottom + 20, TRUE);
    EXPECT_EQ(0, control->sizes);
    const RECT galleryAfter = ChildRect(IDC_GALLERY);
    EXPECT_EQ(galleryBefore.right + 30, galleryAfter.right);
    EXPECT_EQ(galleryBefore.bottom + 20, galleryAfter.bottom);
}

TEST_F(WindowSidesTest, TheWalkThroughTheParentsMeetsTheKeyboardMapOnce) {
    ::SetFocus(gallery);
    control->keys.clear();
    // Gallery, dialog, control: F6 on the gallery moves the focus to the
    // tree and lets the key go on. A second run of the map would find the
    // tree focused and take the focus back to the gallery.
    MSG msg = KeyDown(gallery, VK_F6);
    EXPECT_FALSE(framework::win32::PreTranslateThroughParents(&msg));
    EXPECT_EQ(std::vector<WPARAM>{VK_F6}, control->keys);
    EXPECT_EQ(tree, ::GetFocus());
}

TEST_F(WindowSidesTest, TheDialogsPreTranslateMessageIsTheDialogs) {
    // F5 is a row of the control's map, which handles it; the dialog's
    // PreTranslateMessage knows no keys.
    ::SetFocus(gallery);
    control->keys.clear();
    MSG msg = KeyDown(gallery, VK_F5);
    EXPECT_FALSE(control->DialogWindow().PreTranslateMessage(&msg));
    EXPECT_TRUE(control->keys.empty());
    EXPECT_TRUE(control->ControlWindow().PreTranslateMessage(&msg));
    EXPECT_EQ(std::vector<WPARAM>{VK_F5}, control->keys);
}

TEST_F(WindowSidesTest, AKeyThroughTheFrameworksMessageLoopMeetsTheMapOnce) {
    // The framework's loop walks the parents, and the thread's message filter
    // offers the same key before: the map still sees it once.
    ::SetFocus(gallery);
    PumpMessages();
    control->keys.clear();
    ::PostMessageA(gallery, WM_KEYDOWN, 'X', 1);
    framework::win32::PumpWaitingMessages();
    EXPECT_EQ(std::vector<WPARAM>{'X'}, control->keys);

    control->keys.clear();
    ::SetFocus(gallery);
    ::PostMessageA(gallery, WM_KEYDOWN, VK_F6, 1);
    framework::win32::PumpWaitingMessages();
    EXPECT_EQ(std::vector<WPARAM>{VK_F6}, control->keys);
    EXPECT_EQ(tree, ::GetFocus());
}

TEST_F(WindowSidesTest, CommandsOfTheDialogGoToTheDialog) {
    // The size radio buttons are the dialog's commands: a click on "small"
    // reaches CGraphicDlg through the dialog's window object and the
    // control's window object knows nothing of it.
    Window* const dialogSide = Window::FromHandle(dialog);
    ASSERT_NE(nullptr, dialogSide);
    EXPECT_FALSE(control->ControlWindow().OnCmdMsg(IDC_SMALL_THUMBNAILS, BN_CLICKED, nullptr, nullptr));
    EXPECT_TRUE(dialogSide->OnCmdMsg(IDC_SMALL_THUMBNAILS, BN_CLICKED, nullptr, nullptr));
}

}  // namespace
}  // namespace controltest
