// The keyboard map and the double click: every row of the tables through
// PreTranslateMessage, and the plumbing that brings the messages there
// whatever the host's loop does (the thread's message filter, and
// TranslateAccelerator without a second offer).
#include <cstring>

#include "ControlTestEnvironment.h"
#include "browser/GraphicItemInfo.h"
#include "control/LumbrelIds.h"
#include "framework/ole/MessageFilter.h"
#include "framework/win32/Window.h"

namespace controltest {
namespace {

// Records the keyboard and mouse messages that reach a window.
class MessageLog : public framework::win32::Window {
public:
    std::vector<UINT> messages;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if ((message >= WM_KEYFIRST && message <= WM_KEYLAST) ||
            (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST))
            messages.push_back(message);
        return Window::WindowProc(message, wParam, lParam);
    }
};

class KeyboardTest : public ControlFixture {
protected:
    void SetUp() override {
        ControlFixture::SetUp();
        Activate(OLEIVERB_UIACTIVATE);
        gallery = control->Item(control::kGalleryId);
        tree = control->Item(control::kTreeId);
        ASSERT_NE(nullptr, gallery);
        ASSERT_NE(nullptr, tree);
        control->galleryPosition = browser::GalleryPosition{10, 2, 2, 3, 4};
        control->ClearCalls();
        sink = new EventRecorder(&events, "sink");
        cookie = AdviseEvents(Unknown(), sink);
    }
    void TearDown() override {
        UnadviseEvents(Unknown(), cookie);
        sink->Release();
        ControlFixture::TearDown();
    }

    BOOL Key(UINT message, WPARAM key, HWND focus) {
        if (focus != nullptr) ::SetFocus(focus);
        MSG msg = {};
        msg.hwnd = ::GetFocus();
        msg.message = message;
        msg.wParam = key;
        msg.lParam = message == WM_SYSKEYDOWN ? (1 | (1 << 29)) : 1;
        return PreTranslate(&msg);
    }
    BOOL KeyDown(WPARAM key, HWND focus) { return Key(WM_KEYDOWN, key, focus); }
    BOOL Alt(char key) { return Key(WM_SYSKEYDOWN, static_cast<WPARAM>(key), gallery); }
    BOOL DoubleClickAt(HWND window, POINT point) {
        MSG msg = {};
        msg.hwnd = window;
        msg.message = WM_LBUTTONDBLCLK;
        msg.pt = point;
        return PreTranslate(&msg);
    }
    BOOL DoubleClickAt(HWND window) {
        RECT rect = {};
        ::GetWindowRect(window, &rect);
        return DoubleClickAt(window, POINT{(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2});
    }
    LRESULT Check(int id) const { return ::SendMessageA(control->Item(id), BM_GETCHECK, 0, 0); }
    std::vector<std::string> Moves(int to) const {
        return {"SetGalleryCurrentIndex(" + std::to_string(to) + ")",
                "SetGallerySelection(" + std::to_string(to) + ")", "OnGalleryCommand"};
    }

    HWND gallery = nullptr;
    HWND tree = nullptr;
    std::vector<RecordedEvent> events;
    EventRecorder* sink = nullptr;
    DWORD cookie = 0;
};

// ---- WM_KEYDOWN --------------------------------------------------------------------------

TEST_F(KeyboardTest, F6OnTheGalleryGoesToTheTreeAndOn) {
    EXPECT_FALSE(KeyDown(VK_F6, gallery));
    EXPECT_EQ(tree, ::GetFocus());
    EXPECT_TRUE(control->calls.empty());
}

TEST_F(KeyboardTest, F6OnTheTreeGoesToTheGalleryAtItsFirstCell) {
    control->cellsVisible = false;
    EXPECT_FALSE(KeyDown(VK_F6, tree));
    EXPECT_EQ(gallery, ::GetFocus());
    EXPECT_EQ((std::vector<std::string>{"SetGallerySelection(0)", "EnsureGalleryCellVisible(0)",
                                        "SetGalleryTopRow(0,repaint)"}),
              control->calls);
}

TEST_F(KeyboardTest, F6ElsewhereGoesToTheTree) {
    EXPECT_FALSE(KeyDown(VK_F6, ControlWindow()));
    EXPECT_EQ(tree, ::GetFocus());
}

TEST_F(KeyboardTest, TabOnTheTreeIsF6AndHandled) {
    EXPECT_TRUE(KeyDown(VK_TAB, tree));
    EXPECT_EQ(gallery, ::GetFocus());
    EXPECT_EQ((std::vector<std::string>{"SetGallerySelection(0)", "SetGalleryTopRow(0,repaint)"}),
              control->calls);
}

TEST_F(KeyboardTest, TabFromTheTreeSelectsItemZeroEvenOfAnEmptyGallery) {
    control->galleryPosition = browser::GalleryPosition{0, -1, -1, 0, 0};
    EXPECT_TRUE(KeyDown(VK_TAB, tree));
    EXPECT_EQ(gallery, ::GetFocus());
    EXPECT_EQ(1u, control->Count("SetGallerySelection(0)"));
}

TEST_F(KeyboardTest, TabOnTheGalleryGoesToTheTree) {
    EXPECT_TRUE(KeyDown(VK_TAB, gallery));
    EXPECT_EQ(tree, ::GetFocus());
}

TEST_F(KeyboardTest, TabElsewhereIsLeftAlone) {
    EXPECT_FALSE(KeyDown(VK_TAB, ControlWindow()));
    EXPECT_EQ(ControlWindow(), ::GetFocus());
    EXPECT_TRUE(control->calls.empty());
}

TEST_F(KeyboardTest, RightMovesByTheOddRule) {
    // 10 cells, selected 2, 3 rows, 4 columns: 3 / 3 = 1 < 4.
    EXPECT_TRUE(KeyDown(VK_RIGHT, gallery));
    EXPECT_EQ(Moves(3), control->calls);

    // 8 / 2 = 4 is not less than 4 columns: no move, although 8 < 10.
    control->ClearCalls();
    control->galleryPosition = browser::GalleryPosition{10, 7, 7, 2, 4};
    EXPECT_TRUE(KeyDown(VK_RIGHT, gallery));
    EXPECT_TRUE(control->calls.empty());

    // Not beyond the last cell.
    control->galleryPosition = browser::GalleryPosition{10, 9, 9, 1, 40};
    EXPECT_TRUE(KeyDown(VK_RIGHT, gallery));
    EXPECT_TRUE(control->calls.empty());

    // A gallery without rows moves nowhere.
    control->galleryPosition = browser::GalleryPosition{10, 0, 0, 0, 4};
    EXPECT_TRUE(KeyDown(VK_RIGHT, gallery));
    EXPECT_TRUE(control->calls.empty());
}

TEST_F(KeyboardTest, MovesEnsureVisibilityOnlyWhenNeeded) {
    control->cellsVisible = false;
    EXPECT_TRUE(KeyDown(VK_RIGHT, gallery));
    EXPECT_EQ((std::vector<std::string>{"SetGalleryCurrentIndex(3)", "SetGallerySelection(3)",
                                        "EnsureGalleryCellVisible(3)", "OnGalleryCommand"}),
              control->calls);
}

TEST_F(KeyboardTest, AMoveStaysHandledWhenTellingTheHostFails) {
    for (bool badAlloc : {false, true}) {
        control->ClearCalls();
        control->galleryPosition = browser::GalleryPosition{10, 2, 2, 3, 4};
        control->failingCall = "OnGalleryCommand";
        control->failWithBadAlloc = badAlloc;
        EXPECT_TRUE(KeyDown(VK_RIGHT, gallery));
        EXPECT_EQ(Moves(3), control->calls);
        EXPECT_EQ(3, control->galleryPosition.selectedIndex);
    }
}

TEST_F(KeyboardTest, LeftStopsAtTheFirstCell) {
    control->galleryPosition.selectedIndex = 5;
    EXPECT_TRUE(KeyDown(VK_LEFT, gallery));
    EXPECT_EQ(Moves(4), control->calls);
    control->ClearCalls();
    control->galleryPosition.selectedIndex = 0;
    EXPECT_TRUE(KeyDown(VK_LEFT, gallery));
    EXPECT_TRUE(control->calls.empty());
}

TEST_F(KeyboardTest, DownMovesByARowWithoutWrapping) {
    EXPECT_TRUE(KeyDown(VK_DOWN, gallery));
    EXPECT_EQ(Moves(6), control->calls);
    control->ClearCalls();
    control->galleryPosition.selectedIndex = 7;
    EXPECT_TRUE(KeyDown(VK_DOWN, gallery));
    EXPECT_TRUE(control->calls.empty());
}

TEST_F(KeyboardTest, UpMovesByARowWithoutWrapping) {
    control->galleryPosition.selectedIndex = 5;
    EXPECT_TRUE(KeyDown(VK_UP, gallery));
    EXPECT_EQ(Moves(1), control->calls);
    control->ClearCalls();
    control->galleryPosition.selectedIndex = 2;
    EXPECT_TRUE(KeyDown(VK_UP, gallery));
    EXPECT_TRUE(control->calls.empty());
}

TEST_F(KeyboardTest, ArrowsElsewhereAreLeftAlone) {
    for (WPARAM key : {VK_RIGHT, VK_LEFT, VK_DOWN, VK_UP}) {
        EXPECT_FALSE(KeyDown(key, tree));
        EXPECT_FALSE(KeyDown(key, ControlWindow()));
    }
    EXPECT_TRUE(control->calls.empty());
}

TEST_F(KeyboardTest, F5RefreshesWhereverTheFocusIs) {
    for (HWND focus : {gallery, tree, ControlWindow()}) {
        control->ClearCalls();
        EXPECT_TRUE(KeyDown(VK_F5, focus));
        EXPECT_EQ((std::vector<std::string>{"RebuildFromDriveCombo", "ClearGallery"}), control->calls);
    }
}

TEST_F(KeyboardTest, OtherKeysAreLeftAlone) {
    EXPECT_FALSE(KeyDown('X', gallery));
    EXPECT_FALSE(KeyDown(VK_RETURN, tree));
    EXPECT_TRUE(control->calls.empty());
}

// ---- WM_SYSKEYDOWN ---------------------------------------------------------------------------

TEST_F(KeyboardTest, AltAToggleTheAspectRatioBox) {
    EXPECT_TRUE(Alt('A'));
    EXPECT_EQ(BST_CHECKED, Check(control::kAspectRatioBox));
    EXPECT_TRUE(Alt('A'));
    EXPECT_EQ(BST_UNCHECKED, Check(control::kAspectRatioBox));
}

TEST_F(KeyboardTest, AltLAndAltSSwitchTheThumbnailSize) {
    EXPECT_TRUE(Alt('L'));
    EXPECT_EQ(BST_CHECKED, Check(control::kLargeThumbnailsRadio));
    EXPECT_EQ(BST_UNCHECKED, Check(control::kSmallThumbnailsRadio));
    EXPECT_EQ((std::vector<std::string>{"OnLargeThumbnails"}), control->calls);
    control->ClearCalls();
    EXPECT_TRUE(Alt('S'));
    EXPECT_EQ(BST_CHECKED, Check(control::kSmallThumbnailsRadio));
    EXPECT_EQ(BST_UNCHECKED, Check(control::kLargeThumbnailsRadio));
    EXPECT_EQ((std::vector<std::string>{"OnSmallThumbnails"}), control->calls);
}

TEST_F(KeyboardTest, AltRRefreshes) {
    EXPECT_TRUE(Alt('R'));
    EXPECT_EQ((std::vector<std::string>{"RebuildFromDriveCombo", "ClearGallery"}), control->calls);
}

TEST_F(KeyboardTest, OtherAltKeysAreLeftAlone) {
    EXPECT_FALSE(Alt('X'));
    EXPECT_TRUE(control->calls.empty());
}

// ---- The double click ---------------------------------------------------------------------------

TEST_F(KeyboardTest, DoubleClickInTheGalleryFiresItemSelThenItemDBClick) {
    control->itemInfo = SampleRecord();
    EXPECT_FALSE(DoubleClickAt(gallery)) << "the click goes on to the gallery";
    ASSERT_EQ(2u, events.size());
    EXPECT_EQ(control::kDispidItemSel, events[0].dispid);
    EXPECT_EQ(0x4000, events[0].argumentType);
    EXPECT_EQ(static_cast<void*>(&control->itemInfo), events[0].reference);
    EXPECT_EQ(0, std::memcmp(&control->itemInfo, &events[0].record, 532));
    EXPECT_EQ(control::kDispidItemDBClick, events[1].dispid);
}

struct CallBack {
    IUnknown* control;
    bool called = false;
    HRESULT aspect = E_FAIL;
    HRESULT setItemPath = E_FAIL;
};

TEST_F(KeyboardTest, TheHostMayCallTheControlFromInsideItemSel) {
    CallBack back = {Unknown()};
    sink->context = &back;
    sink->onEvent = [](EventRecorder*, void* context) {
        auto* b = static_cast<CallBack*>(context);
        if (b->called) return;
        b->called = true;
        ComPtr<IDispatch> dispatch;
        b->control->QueryInterface(IID_IDispatch, dispatch.PutVoid());
        VARIANT value;
        ::VariantInit(&value);
        DISPPARAMS none = {nullptr, nullptr, 0, 0};
        b->aspect = dispatch->Invoke(control::kDispidAspectRatio, IID_NULL, LOCALE_USER_DEFAULT,
                                     DISPATCH_PROPERTYGET, &none, &value, nullptr, nullptr);
        BSTR path = ::SysAllocString(L"C:\\elsewhere");
        VARIANT arguments[2];
        arguments[1].vt = VT_BSTR;
        arguments[1].bstrVal = path;
        arguments[0].vt = VT_I4;
        arguments[0].lVal = 4;
        DISPPARAMS call = {arguments, nullptr, 2, 0};
        b->setItemPath = dispatch->Invoke(control::kDispidSetItemPath, IID_NULL, LOCALE_USER_DEFAULT,
                                          DISPATCH_METHOD, &call, nullptr, nullptr, nullptr);
        ::SysFreeString(path);
    };
    control->itemInfo = SampleRecord();
    EXPECT_FALSE(DoubleClickAt(gallery));
    EXPECT_TRUE(back.called);
    EXPECT_EQ(S_OK, back.aspect);
    EXPECT_EQ(S_OK, back.setItemPath);
    EXPECT_EQ(1u, control->Count("NavigateToPath(C:\\elsewhere,4)"));
    ASSERT_EQ(2u, events.size());
    EXPECT_EQ(control::kDispidItemSel, events[0].dispid);
    EXPECT_EQ(control::kDispidItemDBClick, events[1].dispid);
}

TEST_F(KeyboardTest, DoubleClickInTheGalleryWithoutSelectionFiresNothing) {
    control->galleryPosition.currentIndex = -1;
    EXPECT_FALSE(DoubleClickAt(gallery));
    EXPECT_TRUE(events.empty());
}

TEST_F(KeyboardTest, DoubleClickOnATreeDirectoryFiresNothing) {
    char directory[MAX_PATH] = {};
    ::GetTempPathA(MAX_PATH, directory);
    control->hasSelectedPath = true;
    control->selectedPath = directory;
    control->preparedItemNumber = 0;
    EXPECT_FALSE(DoubleClickAt(tree));
    EXPECT_EQ(1u, control->Count("PrepareDoubleClick("));
    EXPECT_TRUE(events.empty());
}

TEST_F(KeyboardTest, DoubleClickOnATreePictureFiresBothEvents) {
    char file[MAX_PATH] = {};
    char directory[MAX_PATH] = {};
    ::GetTempPathA(MAX_PATH, directory);
    ::GetTempFileNameA(directory, "lum", 0, file);
    control->hasSelectedPath = true;
    control->selectedPath = file;
    control->preparedItemNumber = 1;
    EXPECT_FALSE(DoubleClickAt(tree));
    ::DeleteFileA(file);
    EXPECT_EQ(1u, control->Count(std::string("PrepareDoubleClick(") + file));
    ASSERT_EQ(2u, events.size());
    EXPECT_EQ(control::kDispidItemSel, events[0].dispid);
    EXPECT_EQ(1, events[0].record.itemNumber);
    EXPECT_EQ(control::kDispidItemDBClick, events[1].dispid);
}

TEST_F(KeyboardTest, DoubleClickOnAMissingTreePathPreparesNothing) {
    control->hasSelectedPath = true;
    control->selectedPath = "Q:\\no\\such\\place.bmp";
    EXPECT_FALSE(DoubleClickAt(tree));
    EXPECT_EQ(0u, control->Count("PrepareDoubleClick"));
    EXPECT_TRUE(events.empty());
}

TEST_F(KeyboardTest, DoubleClickElsewhereStopsAtOnce) {
    // The control's bottom right corner: neither gallery nor tree.
    RECT rect = {};
    ::GetWindowRect(ControlWindow(), &rect);
    RECT galleryRect = {}, treeRect = {};
    ::GetWindowRect(gallery, &galleryRect);
    ::GetWindowRect(tree, &treeRect);
    const POINT corner = {rect.right - 2, rect.bottom - 2};
    ASSERT_FALSE(::PtInRect(&galleryRect, corner));
    ASSERT_FALSE(::PtInRect(&treeRect, corner));
    EXPECT_FALSE(DoubleClickAt(ControlWindow(), corner));
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(0u, control->Count("GetSelectedPath"));
}

// ---- The plumbing ------------------------------------------------------------------------------

TEST_F(KeyboardTest, TheFilterLivesWithTheWindow) {
    EXPECT_TRUE(framework::ole::IsMessageFilterInstalled());
    ASSERT_EQ(S_OK, As<IOleInPlaceObject>(IID_IOleInPlaceObject)->InPlaceDeactivate());
    EXPECT_FALSE(framework::ole::IsMessageFilterInstalled());
}

TEST_F(KeyboardTest, KeysReachTheMapThroughAPlainMessageLoop) {
    MessageLog log;
    ASSERT_TRUE(log.SubclassWindow(gallery));
    ::SetFocus(gallery);
    ::PostMessageA(gallery, WM_KEYDOWN, VK_F5, 1);
    ::PostMessageA(gallery, WM_KEYDOWN, 'X', 1);
    PumpMessages();
    // F5 was handled before dispatch and never reached the gallery; X went on.
    EXPECT_EQ((std::vector<std::string>{"RebuildFromDriveCombo", "ClearGallery"}), control->calls);
    ASSERT_FALSE(log.messages.empty());
    EXPECT_EQ(std::vector<UINT>({WM_KEYDOWN, WM_CHAR}), log.messages);
    log.UnsubclassWindow();
}

TEST_F(KeyboardTest, AltKeysReachTheMapThroughAPlainMessageLoop) {
    ::SetFocus(gallery);
    ::PostMessageA(gallery, WM_SYSKEYDOWN, 'A', 1 | (1 << 29));
    PumpMessages();
    EXPECT_EQ(BST_CHECKED, Check(control::kAspectRatioBox));
}

TEST_F(KeyboardTest, TheDoubleClickReachesTheMapThroughAPlainMessageLoop) {
    RECT rect = {};
    ::GetWindowRect(gallery, &rect);
    const POINT center = {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
    ::SetCursorPos(center.x, center.y);
    POINT cursor = {};
    ::GetCursorPos(&cursor);
    if (cursor.x != center.x || cursor.y != center.y) GTEST_SKIP() << "this display cannot place the cursor";
    // The gallery notes how many events the host had heard when the
    // double click reached it.
    struct Arrival : MessageLog {
        const std::vector<RecordedEvent>* heard = nullptr;
        size_t heardAtDoubleClick = 99;
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
            if (message == WM_LBUTTONDBLCLK) heardAtDoubleClick = heard->size();
            return MessageLog::WindowProc(message, wParam, lParam);
        }
    } arrival;
    arrival.heard = &events;
    ASSERT_TRUE(arrival.SubclassWindow(gallery));
    ::PostMessageA(gallery, WM_LBUTTONDBLCLK, MK_LBUTTON, MAKELPARAM(5, 5));
    PumpMessages();
    arrival.UnsubclassWindow();
    ASSERT_EQ(2u, events.size());
    EXPECT_EQ(control::kDispidItemSel, events[0].dispid);
    EXPECT_EQ(control::kDispidItemDBClick, events[1].dispid);
    EXPECT_EQ(2u, arrival.heardAtDoubleClick) << "both events go out before the gallery has the click";
}

TEST_F(KeyboardTest, TranslateAcceleratorDoesNotOfferAMessageTwice) {
    auto active = As<IOleInPlaceActiveObject>(IID_IOleInPlaceActiveObject);
    ::SetFocus(tree);
    ::PostMessageA(tree, WM_KEYDOWN, VK_F6, 1);
    MSG msg = {};
    ASSERT_TRUE(::PeekMessageA(&msg, tree, WM_KEYDOWN, WM_KEYDOWN, PM_REMOVE));
    // The filter saw it and let it go on (F6 continues to default processing).
    EXPECT_EQ(WM_KEYDOWN, msg.message);
    EXPECT_EQ(1u, control->Count("SetGallerySelection(0)"));
    // A host that also calls TranslateAccelerator does not run it again.
    EXPECT_EQ(S_FALSE, active->TranslateAccelerator(&msg));
    EXPECT_EQ(1u, control->Count("SetGallerySelection(0)"));
}

TEST_F(KeyboardTest, TranslateAcceleratorRunsTheMapForMessagesTheFilterDidNotSee) {
    auto active = As<IOleInPlaceActiveObject>(IID_IOleInPlaceActiveObject);
    MSG msg = {};
    msg.hwnd = gallery;
    msg.message = WM_KEYDOWN;
    msg.wParam = VK_F5;
    msg.time = 12345;
    EXPECT_EQ(S_OK, active->TranslateAccelerator(&msg));
    EXPECT_EQ(1u, control->Count("RebuildFromDriveCombo"));
    msg.wParam = 'Q';
    msg.time = 12346;
    EXPECT_EQ(S_FALSE, active->TranslateAccelerator(&msg));
}

}  // namespace
}  // namespace controltest
