#include "foundation/ResizableDialog.h"

#include <gtest/gtest.h>

#include "ResizableDialogTestIds.h"
#include "framework/win32/Window.h"

using foundation::CResizableDialog;

namespace {

class Host : public framework::win32::Window {
public:
    Host() {
        RECT rect = {0, 0, 700, 500};
        EXPECT_TRUE(CreateEx(0, RegisterWindowClass(0), "host", WS_OVERLAPPEDWINDOW, rect, nullptr, 0));
    }
};

class AnchoredDialog : public CResizableDialog {
public:
    AnchoredDialog() : CResizableDialog(IDD_RESIZABLE) {}

protected:
    BOOL OnInitDialog() override {
        CResizableDialog::OnInitDialog();
        AddAnchor(IDC_STAY, foundation::kAnchorStay, foundation::kAnchorStay);
        AddAnchor(IDC_STRETCH, foundation::kAnchorStretch, foundation::kAnchorStay);
        AddAnchor(IDC_MOVE, foundation::kAnchorMove, foundation::kAnchorMove);
        AddAnchor(IDC_BOTH, foundation::kAnchorStretch, foundation::kAnchorStretch, true);
        AddAnchor(IDC_PROPORTIONAL, foundation::kAnchorProportionalMove, foundation::kAnchorStay);
        return TRUE;
    }
};

RECT ChildRect(const CResizableDialog& dialog, int id) {
    RECT rect = {};
    HWND child = ::GetDlgItem(dialog.Handle(), id);
    ::GetWindowRect(child, &rect);
    ::MapWindowPoints(nullptr, dialog.Handle(), reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

void Resize(const CResizableDialog& dialog, int width, int height) {
    ::SetWindowPos(dialog.Handle(), nullptr, 0, 0, width, height, SWP_NOZORDER | SWP_NOMOVE);
}

SIZE WindowSize(const CResizableDialog& dialog) {
    RECT rect = {};
    ::GetWindowRect(dialog.Handle(), &rect);
    return SIZE{rect.right - rect.left, rect.bottom - rect.top};
}

// Counts the moves a child window is asked to make.
class MoveCounter {
public:
    explicit MoveCounter(HWND child) : child_(child) {
        ::SetPropA(child, "counter", this);
        original_ = reinterpret_cast<WNDPROC>(
            ::SetWindowLongPtrA(child, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Proc)));
    }
    ~MoveCounter() {
        ::SetWindowLongPtrA(child_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(original_));
        ::RemovePropA(child_, "counter");
    }
    int moves = 0;

private:
    static LRESULT CALLBACK Proc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* self = static_cast<MoveCounter*>(::GetPropA(hwnd, "counter"));
        if (message == WM_WINDOWPOSCHANGING) ++self->moves;
        return ::CallWindowProcA(self->original_, hwnd, message, wParam, lParam);
    }
    HWND child_;
    WNDPROC original_ = nullptr;
};

}  // namespace

TEST(ResizableDialog, InitialSizeIsTheMinimum) {
    Host host;
    AnchoredDialog dialog;
    ASSERT_TRUE(dialog.Create(host.Handle()));
    EXPECT_TRUE(dialog.IsInitialized());
    const SIZE size = WindowSize(dialog);
    EXPECT_EQ(dialog.MinSize().cx, size.cx);
    EXPECT_EQ(dialog.MinSize().cy, size.cy);
    ASSERT_EQ(dialog.Anchors().size(), 5u);
}

TEST(ResizableDialog, ASecondWindowRegistersItsAnchorsOnceAndTheyFollowIt) {
    Host host;
    AnchoredDialog dialog;
    ASSERT_TRUE(dialog.Create(host.Handle()));
    dialog.DestroyWindow();
    ASSERT_EQ(nullptr, dialog.Handle());
    ASSERT_TRUE(dialog.Create(host.Handle()));
    ASSERT_EQ(dialog.Anchors().size(), 5u) << "the first window's anchors are gone with it";
    const RECT move = ChildRect(dialog, IDC_MOVE);
    const RECT both = ChildRect(dialog, IDC_BOTH);
    const SIZE size = WindowSize(dialog);
    Resize(dialog, size.cx + 20, size.cy + 10);
    const RECT moveAfter = ChildRect(dialog, IDC_MOVE);
    EXPECT_EQ(moveAfter.left, move.left + 20);
    EXPECT_EQ(moveAfter.top, move.top + 10);
    const RECT bothAfter = ChildRect(dialog, IDC_BOTH);
    EXPECT_EQ(bothAfter.right - bothAfter.left, both.right - both.left + 20);
    EXPECT_EQ(bothAfter.bottom - bothAfter.top, both.bottom - both.top + 10);
}

TEST(ResizableDialog, ChildrenFollowTheirModes) {
    Host host;
    AnchoredDialog dialog;
    ASSERT_TRUE(dialog.Create(host.Handle()));
    const RECT stay = ChildRect(dialog, IDC_STAY);
    const RECT stretch = ChildRect(dialog, IDC_STRETCH);
    const RECT move = ChildRect(dialog, IDC_MOVE);
    const RECT both = ChildRect(dialog, IDC_BOTH);
    const SIZE size = WindowSize(dialog);
    Resize(dialog, size.cx + 40, size.cy + 30);
    const RECT stayAfter = ChildRect(dialog, IDC_STAY);
    EXPECT_TRUE(::EqualRect(&stay, &stayAfter));
    const RECT stretchAfter = ChildRect(dialog, IDC_STRETCH);
    EXPECT_EQ(stretchAfter.left, stretch.left);
    EXPECT_EQ(stretchAfter.right, stretch.right + 40);
    EXPECT_EQ(stretchAfter.top, stretch.top);
    EXPECT_EQ(stretchAfter.bottom, stretch.bottom);
    const RECT moveAfter = ChildRect(dialog, IDC_MOVE);
    EXPECT_EQ(moveAfter.left, move.left + 40);
    EXPECT_EQ(moveAfter.top, move.top + 30);
    EXPECT_EQ(moveAfter.right - moveAfter.left, move.right - move.left);
    const RECT bothAfter = ChildRect(dialog, IDC_BOTH);
    EXPECT_EQ(bothAfter.right, both.right + 40);
    EXPECT_EQ(bothAfter.bottom, both.bottom + 30);
}

TEST(ResizableDialog, ProportionalMovePlacesTheNearEdgeByItsRatio) {
    Host host;
    AnchoredDialog dialog;
    ASSERT_TRUE(dialog.Create(host.Handle()));
    const RECT before = ChildRect(dialog, IDC_PROPORTIONAL);
    const SIZE size = WindowSize(dialog);
    const double ratio = static_cast<double>(before.left) / (size.cx - before.left);
    Resize(dialog, size.cx * 2, size.cy);
    const RECT after = ChildRect(dialog, IDC_PROPORTIONAL);
    EXPECT_EQ(after.left, static_cast<int>(size.cx * 2 * ratio / (1.0 + ratio)));
    EXPECT_EQ(after.right - after.left, before.right - before.left);
}

TEST(ResizableDialog, UnchangedChildrenAreLeftOutOfTheBatch) {
    Host host;
    AnchoredDialog dialog;
    ASSERT_TRUE(dialog.Create(host.Handle()));
    MoveCounter stay(::GetDlgItem(dialog.Handle(), IDC_STAY));
    MoveCounter stretch(::GetDlgItem(dialog.Handle(), IDC_STRETCH));
    const SIZE size = WindowSize(dialog);
    Resize(dialog, size.cx, size.cy + 25);  // no change in width
    EXPECT_EQ(stay.moves, 0);
    EXPECT_EQ(stretch.moves, 0) << "stretching sideways with no change in width moves nothing";
}

TEST(ResizableDialog, ChildMovedElsewhereJumpsBackAtTheNextResize) {
    Host host;
    AnchoredDialog dialog;
    ASSERT_TRUE(dialog.Create(host.Handle()));
    const RECT move = ChildRect(dialog, IDC_MOVE);
    ::SetWindowPos(::GetDlgItem(dialog.Handle(), IDC_MOVE), nullptr, 3, 3, 10, 10, SWP_NOZORDER);
    const SIZE size = WindowSize(dialog);
    Resize(dialog, size.cx + 10, size.cy);
    const RECT after = ChildRect(dialog, IDC_MOVE);
    EXPECT_EQ(after.left, move.left + 10);
    EXPECT_EQ(after.top, move.top);
}

TEST(ResizableDialog, HostMaySizeBelowTheMinimumAndChildrenGoNegative) {
    Host host;
    AnchoredDialog dialog;
    ASSERT_TRUE(dialog.Create(host.Handle()));
    const RECT stretch = ChildRect(dialog, IDC_STRETCH);
    const SIZE size = WindowSize(dialog);
    const int shrink = stretch.right - stretch.left + 20;
    Resize(dialog, size.cx - shrink, size.cy);
    EXPECT_EQ(WindowSize(dialog).cx, size.cx - shrink);
    const auto& anchor = dialog.Anchors()[1];
    EXPECT_EQ(anchor.rect.right, stretch.right - shrink);
    EXPECT_LT(anchor.rect.right - anchor.rect.left, 0) << "the stored width goes negative";
}

TEST(ResizableDialog, DialogWithoutAnchorsKeepsItsLastRectangle) {
    CResizableDialog dialog(IDD_EMPTY);
    ASSERT_TRUE(dialog.Create(nullptr));
    Resize(dialog, 400, 300);
    RECT window = {};
    ::GetWindowRect(dialog.Handle(), &window);
    EXPECT_TRUE(::EqualRect(&window, &dialog.LastRect()));
}

TEST(ResizableDialog, MinimumTrackSizeAfterInitialization) {
    CResizableDialog dialog(IDD_EMPTY);
    ASSERT_TRUE(dialog.Create(nullptr));
    MINMAXINFO info = {};
    info.ptMaxSize = {5000, 5000};
    info.ptMaxTrackSize = {6000, 6000};
    dialog.Send(WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&info));
    EXPECT_EQ(info.ptMinTrackSize.x, dialog.MinSize().cx);
    EXPECT_EQ(info.ptMinTrackSize.y, dialog.MinSize().cy);
    EXPECT_EQ(info.ptMaxTrackSize.x, 6000);
    dialog.SetResizable(false, true);
    dialog.Send(WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&info));
    EXPECT_EQ(info.ptMaxSize.x, dialog.MinSize().cx);
    EXPECT_EQ(info.ptMaxTrackSize.x, dialog.MinSize().cx);
    EXPECT_EQ(info.ptMaxTrackSize.y, 6000);
}

TEST(ResizableDialog, NothingIsImposedBeforeInitialization) {
    CResizableDialog dialog(IDD_EMPTY);
    MINMAXINFO info = {};
    info.ptMinTrackSize = {7, 8};
    // Not created yet: the handler must leave the record alone.
    struct Probe : CResizableDialog {
        using CResizableDialog::CResizableDialog;
        void Ask(MINMAXINFO* i) { OnGetMinMaxInfo(i); }
    } probe(IDD_EMPTY);
    probe.Ask(&info);
    EXPECT_EQ(info.ptMinTrackSize.x, 7);
    EXPECT_EQ(info.ptMinTrackSize.y, 8);
}

TEST(ResizableDialog, EraseLeavesClippedChildrenAlone) {
    Host host;
    AnchoredDialog dialog;
    ASSERT_TRUE(dialog.Create(host.Handle()));
    const RECT client = dialog.GetClientRect();
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), client.right, -client.bottom, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HDC dc = ::CreateCompatibleDC(nullptr);
    HBITMAP bitmap = ::CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ old = ::SelectObject(dc, bitmap);
    auto* pixels = static_cast<uint32_t*>(bits);
    const size_t count = static_cast<size_t>(client.right) * static_cast<size_t>(client.bottom);
    for (size_t i = 0; i < count; ++i) pixels[i] = 0x00123456;
    dialog.Send(WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0);
    ::GdiFlush();
    const RECT list = dialog.Anchors()[3].rect;  // clipped on erase
    const RECT edit = dialog.Anchors()[1].rect;  // not clipped
    auto at = [&](int x, int y) { return pixels[static_cast<size_t>(y) * client.right + x] & 0xFFFFFF; };
    EXPECT_EQ(at(list.left + 2, list.top + 2), 0x123456u) << "the clipped child's area is kept";
    EXPECT_NE(at(edit.left + 2, edit.top + 2), 0x123456u) << "the rest is erased";
    ::SelectObject(dc, old);
    ::DeleteObject(bitmap);
    ::DeleteDC(dc);
}

namespace {

// The proportional modes on both axes, and an anchor for a control that the
// template does not have.
class ProportionalDialog : public CResizableDialog {
public:
    ProportionalDialog() : CResizableDialog(IDD_RESIZABLE) {}

protected:
    BOOL OnInitDialog() override {
        CResizableDialog::OnInitDialog();
        AddAnchor(IDC_PROPORTIONAL, foundation::kAnchorProportionalStretch,
                  foundation::kAnchorProportionalMove);
        AddAnchor(IDC_MISSING, foundation::kAnchorMove, foundation::kAnchorMove, true);
        AddAnchor(IDC_MOVE, foundation::kAnchorMove, foundation::kAnchorStay);
        return TRUE;
    }
};

}  // namespace

TEST(ResizableDialog, ProportionalStretchTakesItsRatioAsAProportionalMoveDoes) {
    Host host;
    ProportionalDialog dialog;
    ASSERT_TRUE(dialog.Create(host.Handle()));
    const RECT before = ChildRect(dialog, IDC_PROPORTIONAL);
    const SIZE size = WindowSize(dialog);
    const double ratioX = static_cast<double>(before.left) / (size.cx - before.left);
    const double ratioY = static_cast<double>(before.top) / (size.cy - before.top);
    EXPECT_DOUBLE_EQ(ratioX, dialog.Anchors()[0].ratioX);
    EXPECT_DOUBLE_EQ(ratioY, dialog.Anchors()[0].ratioY);
    Resize(dialog, size.cx * 2, size.cy * 3);
    const RECT after = ChildRect(dialog, IDC_PROPORTIONAL);
    EXPECT_EQ(static_cast<int>(size.cx * 2 * ratioX / (1.0 + ratioX)), after.left);
    EXPECT_EQ(before.right + size.cx, after.right) << "the far edge follows the change";
    EXPECT_EQ(static_cast<int>(size.cy * 3 * ratioY / (1.0 + ratioY)), after.top);
    EXPECT_EQ(before.bottom - before.top, after.bottom - after.top) << "a proportional move keeps the size";
}

TEST(ResizableDialog, AnAnchorWithoutItsControlMovesNothingElse) {
    Host host;
    ProportionalDialog dialog;
    ASSERT_TRUE(dialog.Create(host.Handle()));
    const RECT empty = {};
    EXPECT_TRUE(::EqualRect(&empty, &dialog.Anchors()[1].rect)) << "a missing control has no rectangle";
    const RECT move = ChildRect(dialog, IDC_MOVE);
    const SIZE size = WindowSize(dialog);
    Resize(dialog, size.cx + 15, size.cy + 5);
    const RECT after = ChildRect(dialog, IDC_MOVE);
    EXPECT_EQ(move.left + 15, after.left) << "the batch goes on past the missing control";
    EXPECT_EQ(move.top, after.top);
    const RECT missing = {15, 5, 15, 5};
    EXPECT_TRUE(::EqualRect(&missing, &dialog.Anchors()[1].rect)) << "its rectangle is kept all the same";
    // Erasing with a clipped empty rectangle still erases.
    const HDC dc = ::GetDC(dialog.Handle());
    EXPECT_EQ(0, dialog.Send(WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0));
    ::ReleaseDC(dialog.Handle(), dc);
}
