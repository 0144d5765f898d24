// The gallery's pointer input: selection, the press timer and its latch, the
// state machine, dragging, the drop target, the wheel, the popup menu and
// the commands of the browser's gallery.
#include <gtest/gtest.h>

#include "GalleryTestSupport.h"
#include "gallery/GalleryQuestion.h"

using namespace gallerytest;
using testsupport::ExpectedMessage;
using testsupport::MessageRecord;
using testsupport::MessageSequence;

namespace {

template <class G>
void Press(G& g, int x, int y, UINT flags = MK_LBUTTON) {
    g.Send(WM_LBUTTONDOWN, flags, Point(x, y));
}
template <class G>
void Release(G& g, int x, int y) {
    g.Send(WM_LBUTTONUP, 0, Point(x, y));
}
template <class G>
void Move(G& g, int x, int y, UINT flags = MK_LBUTTON) {
    g.Send(WM_MOUSEMOVE, flags, Point(x, y));
}
template <class G>
void Tick(G& g) {
    g.Send(WM_TIMER, CThumbnailGalleryWindow::kPressTimerId, 0);
}

POINT ToScreen(const Window& window, int x, int y) {
    POINT point = {x, y};
    ::ClientToScreen(window.Handle(), &point);
    return point;
}

bool HasUpdateRegion(const Window& window) {
    return ::GetUpdateRect(window.Handle(), nullptr, FALSE) != FALSE;
}

struct ListenerCall {
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
};

class Listener : public gallery::GalleryDragListener {
public:
    std::vector<ListenerCall> calls;
    void OnDragMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        calls.push_back({message, wParam, lParam});
    }
};

// A screen that keeps its pixels: the drag draws here instead of on the
// platform's screen, which a headless display does not keep.
class FakeScreen {
public:
    FakeScreen() : canvas_(1024, 768) {
        for (int y = 0; y < canvas_.Height(); ++y)
            for (int x = 0; x < canvas_.Width(); ++x)
                canvas_.Pixels()[y * canvas_.Width() + x] = Background(x, y);
        current_ = this;
        gallery::GalleryDrawingFunctions functions;
        functions.getScreenDc = [] { return current_->canvas_.Dc(); };
        functions.releaseScreenDc = [](HDC) {};
        functions.windowFromPoint = OwnWindowFromPoint;
        functions.bitBlt = [](HDC target, int x, int y, int w, int h, HDC source, int sx, int sy, DWORD rop) {
            if (target == current_->canvas_.Dc()) ++current_->blitsToScreen;
            if (source == current_->canvas_.Dc()) ++current_->blitsFromScreen;
            return ::BitBlt(target, x, y, w, h, source, sx, sy, rop);
        };
        scope_ = std::make_unique<DrawingFunctionsScope>(functions);
    }
    ~FakeScreen() { current_ = nullptr; }

    // The window under a point as if this process's windows were the only
    // ones on the desktop: tests running beside this one put theirs on the
    // same screen, at any place and above ours.
    static HWND OwnWindowFromPoint(POINT screenPoint) {
        for (HWND top = ::GetTopWindow(nullptr); top != nullptr; top = ::GetWindow(top, GW_HWNDNEXT)) {
            DWORD process = 0;
            ::GetWindowThreadProcessId(top, &process);
            RECT rect{};
            if (process != ::GetCurrentProcessId() || !::IsWindowVisible(top) ||
                !::GetWindowRect(top, &rect) || !::PtInRect(&rect, screenPoint))
                continue;
            HWND window = top;
            for (;;) {
                POINT client = screenPoint;
                ::ScreenToClient(window, &client);
                const HWND child = ::ChildWindowFromPointEx(window, client, CWP_SKIPINVISIBLE);
                if (child == nullptr || child == window) return window;
                window = child;
            }
        }
        return nullptr;
    }

    static uint32_t Background(int x, int y) {
        return static_cast<uint32_t>(((x * 7) & 0xFF) << 16 | ((y * 5) & 0xFF) << 8 | 0x40);
    }
    COLORREF BackgroundColour(int x, int y) const {
        const uint32_t v = Background(x, y);
        return RGB((v >> 16) & 0xFF, (v >> 8) & 0xFF, v & 0xFF);
    }
    bool ShowsBackground(const RECT& rect) const {
        for (int y = std::max<LONG>(rect.top, 0); y < std::min<LONG>(rect.bottom, 768); ++y)
            for (int x = std::max<LONG>(rect.left, 0); x < std::min<LONG>(rect.right, 1024); ++x)
                if (canvas_.Pixel(x, y) != BackgroundColour(x, y)) return false;
        return true;
    }
    const Canvas& Pixels() const { return canvas_; }

    int blitsToScreen = 0;
    int blitsFromScreen = 0;

private:
    static FakeScreen* current_;
    Canvas canvas_;
    std::unique_ptr<DrawingFunctionsScope> scope_;
};
FakeScreen* FakeScreen::current_ = nullptr;

// Records the gallery's mouse, capture and timer messages and the owner's commands in one sequence.
bool Interesting(const MessageRecord& r) {
    switch (r.message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONUP:
        case WM_MOUSEMOVE:
        case WM_CAPTURECHANGED:
        case WM_TIMER:
        case WM_COMMAND:
        case WM_RBUTTONDOWN: return true;
        default: return false;
    }
}

}  // namespace

// ---- Selection by a click -----------------------------------------------------------------

TEST(GallerySelection, PressAndReleaseOnACellNotifiesOnce) {
    Fixture<> f(500, 400);
    f.gallery.Fill(10);
    MessageSequence sequence;
    f.gallery.sequence = &sequence;
    f.host.sequence = &sequence;
    Press(f.gallery, 150, 10);
    EXPECT_EQ(f.gallery.selectedIndex, 1);
    EXPECT_EQ(f.gallery.currentIndex, 1);
    EXPECT_EQ(f.gallery.selectedItem, f.gallery.GetItem(1));
    EXPECT_EQ(f.gallery.mouseState, 1);
    EXPECT_TRUE(f.gallery.buttonDown);
    EXPECT_EQ(f.gallery.pressPoint.x, 150);
    EXPECT_EQ(f.gallery.pressPoint.y, 10);
    EXPECT_EQ(f.gallery.pressReleased, 0);
    EXPECT_EQ(f.gallery.timerRunning, 1);
    EXPECT_EQ(f.gallery.timerId, CThumbnailGalleryWindow::kPressTimerId);
    EXPECT_EQ(f.gallery.pressedAnywhere, 1);
    EXPECT_EQ(::GetCapture(), f.gallery.Handle());
    EXPECT_TRUE(f.host.commands.empty()) << "the press only selects";
    Release(f.gallery, 150, 10);
    ASSERT_EQ(f.host.commands.size(), 1u);
    const Command& command = f.host.commands[0];
    EXPECT_EQ(command.id, kGalleryId);
    EXPECT_EQ(command.code, 0);
    EXPECT_EQ(command.notifying, &f.gallery);
    EXPECT_EQ(command.lastAction, 1);
    EXPECT_EQ(command.currentIndex, 1);
    EXPECT_EQ(gallery::GetNotifyingControl(), nullptr);
    EXPECT_EQ(f.gallery.mouseState, 0);
    EXPECT_FALSE(f.gallery.buttonDown);
    EXPECT_EQ(f.gallery.pressPoint.x, -1);
    EXPECT_EQ(f.gallery.pressPoint.y, -1);
    EXPECT_EQ(f.gallery.pressReleased, 1);
    EXPECT_EQ(f.gallery.timerRunning, 0);
    EXPECT_FALSE(f.gallery.dragActive);
    EXPECT_EQ(f.gallery.selectedIndex, 1) << "the highlight stays";
    EXPECT_NE(::GetCapture(), f.gallery.Handle());
    f.gallery.sequence = nullptr;
    EXPECT_TRUE(sequence.Filtered(Interesting)
                    .Matches({
                        {WM_LBUTTONDOWN, ExpectedMessage::kLParam, 0, MAKELPARAM(150, 10)},
                        {WM_LBUTTONUP},
                        {WM_CAPTURECHANGED},
                        {WM_COMMAND, ExpectedMessage::kWParam, CommandParam(kGalleryId, 0)},
                    }));
}

TEST(GallerySelection, TheTimerIsKilledAtTheRelease) {
    Fixture<> f(500, 400);
    f.gallery.Fill(3);
    Press(f.gallery, 10, 10);
    Release(f.gallery, 10, 10);
    PumpFor(700);
    EXPECT_FALSE(f.gallery.dragActive) << "no tick after the release";
    EXPECT_EQ(f.host.commands.size(), 1u);
}

TEST(GallerySelection, PressOnAnEmptySpotClearsTheSelectionAndItsReleaseTellsNobody) {
    Fixture<> f(500, 400);
    f.gallery.Fill(4);
    f.gallery.SetSelection(2);
    Press(f.gallery, 300, 200);  // row 1, column 2: item 5 does not exist
    EXPECT_EQ(f.gallery.selectedIndex, -1);
    EXPECT_EQ(f.gallery.currentIndex, -1);
    EXPECT_EQ(f.gallery.selectedItem, nullptr);
    Release(f.gallery, 300, 200);
    EXPECT_TRUE(f.host.commands.empty());
    EXPECT_EQ(f.gallery.mouseState, 0);
}

TEST(GallerySelection, PressOnTheSelectedCellChangesNothingAndStillNotifies) {
    Fixture<> f(500, 400);
    f.gallery.Fill(4);
    f.gallery.SetSelection(1);
    f.gallery.currentIndex = 3;
    ::ValidateRect(f.gallery.Handle(), nullptr);
    Press(f.gallery, 150, 10);
    EXPECT_FALSE(HasUpdateRegion(f.gallery)) << "no cell was invalidated";
    EXPECT_EQ(f.gallery.currentIndex, 3) << "SetSelection returned at once";
    Release(f.gallery, 150, 10);
    ASSERT_EQ(f.host.commands.size(), 1u);
    EXPECT_EQ(f.host.commands[0].lastAction, 1);
    EXPECT_EQ(f.host.commands[0].currentIndex, 1);
}

TEST(GallerySelection, AClickInTheStripSelectsTheFirstCellOfTheNextRow) {
    Fixture<> f(500, 400);
    f.gallery.Fill(9);
    Press(f.gallery, 450, 10);
    Release(f.gallery, 450, 10);
    ASSERT_EQ(f.host.commands.size(), 1u);
    EXPECT_EQ(f.host.commands[0].currentIndex, 3);
}

TEST(GallerySelection, SetSelectionInvalidatesTheTwoCellsOnly) {
    Fixture<> f(500, 400);
    f.gallery.Fill(9);
    f.gallery.SetSelection(0);
    ::ValidateRect(f.gallery.Handle(), nullptr);
    f.gallery.SetSelection(4);
    const HRGN region = ::CreateRectRgn(0, 0, 0, 0);
    ::GetUpdateRgn(f.gallery.Handle(), region, FALSE);
    EXPECT_TRUE(::PtInRegion(region, 10, 10));
    EXPECT_TRUE(::PtInRegion(region, 150, 190));
    EXPECT_FALSE(::PtInRegion(region, 300, 10));
    EXPECT_FALSE(::PtInRegion(region, 10, 190));
    ::DeleteObject(region);
    EXPECT_EQ(f.gallery.selectedItem, f.gallery.GetItem(4));
    f.gallery.SetSelection(9);
    EXPECT_EQ(f.gallery.selectedIndex, 9);
    EXPECT_EQ(f.gallery.currentIndex, 9);
    EXPECT_EQ(f.gallery.selectedItem, nullptr) << "past the items";
}

TEST(GallerySelection, SetSelectionDrawsTheFrameAtOnce) {
    Fixture<> f(500, 400);
    f.gallery.Fill(3);
    ::UpdateWindow(f.host.Handle());
    ::UpdateWindow(f.gallery.Handle());
    f.gallery.SetSelection(1);
    const HDC dc = ::GetDC(f.gallery.Handle());
    EXPECT_EQ(Hex(::GetPixel(dc, 147, 2)), Hex(::GetSysColor(COLOR_HIGHLIGHT))) << "before any repaint";
    ::ReleaseDC(f.gallery.Handle(), dc);
}

// ---- The press timer and its latch ------------------------------------------------------------

TEST(GalleryPressTimer, HeldOnAnEmptySpotLatchesTheSelectionForGood) {
    Fixture<Gallery> f(500, 400, kLargeCell, TRUE);
    f.gallery.Fill(4);
    f.gallery.SetSelection(0);
    const ULONGLONG pressed = ::GetTickCount64();
    Press(f.gallery, 300, 200);
    EXPECT_EQ(f.gallery.selectedIndex, -1);
    ASSERT_TRUE(PumpUntil([&] { return f.gallery.dragActive != FALSE; }, 3000)) << "the real timer ticks";
    EXPECT_GE(::GetTickCount64() - pressed, 450u);
    EXPECT_EQ(f.gallery.timerRunning, 0);
    EXPECT_EQ(f.gallery.mouseState, 1) << "no drag without dragging";
    EXPECT_EQ(::GetCapture(), f.gallery.Handle());
    Release(f.gallery, 300, 200);
    EXPECT_TRUE(f.host.commands.empty());
    EXPECT_TRUE(f.gallery.dragActive) << "a release without a selection does not clear it";
    // From now on nothing selects: not the pointer, not the owner, not the right button.
    Press(f.gallery, 10, 10);
    Release(f.gallery, 10, 10);
    f.gallery.SetSelection(2);
    f.gallery.Send(WM_RBUTTONDOWN, MK_RBUTTON, Point(10, 10));
    EXPECT_EQ(f.gallery.selectedIndex, -1);
    EXPECT_TRUE(f.host.commands.empty());
    EXPECT_TRUE(f.gallery.updateMenuCalls.empty());
}

TEST(GalleryPressTimer, HeldOnACellWithDraggingOffNotifiesNormally) {
    Fixture<> f(500, 400);
    f.gallery.Fill(4);
    Press(f.gallery, 150, 10);
    ASSERT_TRUE(PumpUntil([&] { return f.gallery.dragActive != FALSE; }, 3000));
    EXPECT_EQ(f.gallery.mouseState, 1);
    Release(f.gallery, 150, 10);
    EXPECT_FALSE(f.gallery.dragActive);
    ASSERT_EQ(f.host.commands.size(), 1u);
    EXPECT_EQ(f.host.commands[0].lastAction, 1);
    EXPECT_EQ(f.host.commands[0].currentIndex, 1);
}

TEST(GalleryPressTimer, OtherTimersAreIgnored) {
    Fixture<> f(500, 400);
    f.gallery.Fill(4);
    Press(f.gallery, 150, 10);
    f.gallery.Send(WM_TIMER, 501, 0);
    EXPECT_EQ(f.gallery.timerRunning, 1);
    EXPECT_FALSE(f.gallery.dragActive);
    Release(f.gallery, 150, 10);
}

TEST(GalleryPressTimer, TickOnACellWithDraggingOnBeginsTheDragUnderThePointer) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Fill(4, kLargeCell, SIZE{100, 80});
    Listener listener;
    f.gallery.SetDragListener(&listener);
    FakeScreen screen;
    Press(f.gallery, 150, 10);
    const POINT cursor = ToScreen(f.gallery, 300, 60);
    ASSERT_TRUE(::SetCursorPos(cursor.x, cursor.y));
    Tick(f.gallery);
    EXPECT_EQ(f.gallery.mouseState, 2);
    EXPECT_TRUE(f.gallery.dragActive);
    EXPECT_EQ(f.gallery.timerRunning, 0);
    EXPECT_EQ(f.gallery.pressedAnywhere, 1) << "the tick stopped the timer before the drag began";
    EXPECT_EQ(f.gallery.selectedItem, f.gallery.GetItem(1)) << "the pressed cell is dragged";
    EXPECT_EQ(f.gallery.dragRect.left, cursor.x - 50);
    EXPECT_EQ(f.gallery.dragRect.top, cursor.y - 40);
    EXPECT_EQ(f.gallery.dragRect.right, cursor.x + 50);
    EXPECT_EQ(f.gallery.dragRect.bottom, cursor.y + 40);
    ASSERT_EQ(listener.calls.size(), 1u);
    EXPECT_EQ(listener.calls[0].message, static_cast<UINT>(WM_MOUSEMOVE));
    EXPECT_EQ(listener.calls[0].wParam, 500u);
    EXPECT_EQ(listener.calls[0].lParam, Point(300, 60)) << "the client point";
    Release(f.gallery, 300, 60);
}

TEST(GalleryPressTimer, TickOffTheCellsOnlyLatches) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Fill(4);
    Listener listener;
    f.gallery.SetDragListener(&listener);
    FakeScreen screen;
    Press(f.gallery, 150, 10);
    const POINT cursor = ToScreen(f.gallery, 300, 200);
    ASSERT_TRUE(::SetCursorPos(cursor.x, cursor.y));
    Tick(f.gallery);
    EXPECT_EQ(f.gallery.mouseState, 1);
    EXPECT_TRUE(f.gallery.dragActive);
    EXPECT_EQ(screen.blitsToScreen, 0);
    ASSERT_EQ(listener.calls.size(), 1u) << "the listener hears of the tick anyway";
    Release(f.gallery, 150, 10);
    ASSERT_EQ(f.host.commands.size(), 1u);
    EXPECT_FALSE(f.gallery.dragActive);
}

// ---- The state machine and dragging -------------------------------------------------------------

TEST(GalleryDrag, MovingWithinThePressedCellStartsNothing) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Fill(4);
    FakeScreen screen;
    Press(f.gallery, 10, 10);
    Move(f.gallery, 100, 100);
    Move(f.gallery, 143, 177);
    EXPECT_EQ(f.gallery.mouseState, 1);
    EXPECT_FALSE(f.gallery.dragActive);
    EXPECT_EQ(f.gallery.timerRunning, 1);
    EXPECT_EQ(screen.blitsToScreen, 0);
    Release(f.gallery, 10, 10);
    EXPECT_EQ(f.host.commands.size(), 1u);
}

TEST(GalleryDrag, WithDraggingOffMovesNeverDrag) {
    Fixture<> f(500, 400);
    f.gallery.Fill(4);
    Press(f.gallery, 10, 10);
    Move(f.gallery, 300, 10);
    EXPECT_EQ(f.gallery.mouseState, 1);
    EXPECT_FALSE(f.gallery.dragActive);
    Release(f.gallery, 300, 10);
    ASSERT_EQ(f.host.commands.size(), 1u);
    EXPECT_EQ(f.host.commands[0].currentIndex, 0) << "the pressed cell, not the one released over";
}

TEST(GalleryDrag, LeavingTheCellBeginsTheDragAtThePressPoint) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Fill(4, kLargeCell, SIZE{100, 80});
    FakeScreen screen;
    Press(f.gallery, 20, 30);
    Move(f.gallery, 200, 30);
    EXPECT_EQ(f.gallery.mouseState, 2);
    EXPECT_TRUE(f.gallery.dragActive);
    EXPECT_EQ(f.gallery.timerRunning, 0) << "the drag kills the press timer";
    EXPECT_EQ(f.gallery.pressedAnywhere, 0);
    const POINT press = ToScreen(f.gallery, 20, 30);
    const RECT begun = f.gallery.dragRect;
    EXPECT_EQ(begun.left, press.x - 50) << "centred by the picture's size";
    EXPECT_EQ(begun.top, press.y - 40);
    EXPECT_EQ(begun.right - begun.left, 100);
    EXPECT_EQ(begun.bottom - begun.top, 80);
    // The image on the screen: the picture, framed in black.
    const SolidItem* item = f.gallery.Solid(0);
    ASSERT_FALSE(item->calls.empty());
    const DrawCall& drawn = item->calls.back();
    EXPECT_TRUE(drawn.dragImage);
    EXPECT_EQ(drawn.rop, static_cast<DWORD>(SRCCOPY));
    EXPECT_EQ(drawn.rect.left, begun.left);
    EXPECT_EQ(drawn.rect.top, begun.top);
    EXPECT_EQ(Hex(screen.Pixels().Pixel(begun.left, begun.top)), Hex(RGB(0, 0, 0)));
    EXPECT_EQ(Hex(screen.Pixels().Pixel(begun.right - 1, begun.bottom - 1)), Hex(RGB(0, 0, 0)));
    EXPECT_EQ(Hex(screen.Pixels().Pixel(begun.left + 1, begun.top + 1)), Hex(ItemColour(0)));
    EXPECT_TRUE(screen.ShowsBackground(RECT{begun.left - 20, begun.top - 20, begun.left, begun.bottom}));
    Release(f.gallery, 200, 30);
    EXPECT_TRUE(screen.ShowsBackground(begun)) << "the saved background goes back at the end";
}

TEST(GalleryDrag, MovesCentreByTheCellAndTouchTheScreenOnce) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Fill(4, kLargeCell, SIZE{100, 80});
    Listener listener;
    f.gallery.SetDragListener(&listener);
    FakeScreen screen;
    Press(f.gallery, 20, 30);
    Move(f.gallery, 200, 30);
    const RECT begun = f.gallery.dragRect;
    EXPECT_TRUE(listener.calls.empty()) << "the move that begins the drag is not passed on";
    screen.blitsToScreen = 0;
    Move(f.gallery, 260, 120, MK_LBUTTON | MK_SHIFT);
    EXPECT_EQ(screen.blitsToScreen, 1) << "one exchange through the off-screen bitmap";
    const POINT at = ToScreen(f.gallery, 260, 120);
    const RECT moved = f.gallery.dragRect;
    EXPECT_EQ(moved.left, at.x - 72) << "centred by the cell's size";
    EXPECT_EQ(moved.top, at.y - 89);
    EXPECT_EQ(moved.right - moved.left, 100) << "of the picture's size";
    EXPECT_EQ(moved.bottom - moved.top, 80);
    ASSERT_EQ(listener.calls.size(), 1u);
    EXPECT_EQ(listener.calls[0].message, static_cast<UINT>(WM_MOUSEMOVE));
    EXPECT_EQ(listener.calls[0].wParam, static_cast<WPARAM>(MK_LBUTTON | MK_SHIFT));
    EXPECT_EQ(listener.calls[0].lParam, Point(at.x, at.y)) << "the screen point";
    // The old place shows the background again, the new one the image.
    RECT uncovered = begun;
    if (uncovered.right > moved.left && uncovered.bottom > moved.top) uncovered.bottom = moved.top;
    EXPECT_TRUE(screen.ShowsBackground(uncovered));
    EXPECT_EQ(Hex(screen.Pixels().Pixel(moved.left, moved.top)), Hex(RGB(0, 0, 0)));
    EXPECT_EQ(Hex(screen.Pixels().Pixel(moved.left + 5, moved.top + 5)), Hex(ItemColour(0)));
    const DrawCall& drawn = f.gallery.Solid(0)->calls.back();
    EXPECT_TRUE(drawn.dragImage);
    EXPECT_NE(drawn.dc, screen.Pixels().Dc()) << "drawn off-screen first";
    Move(f.gallery, 300, 300);
    Release(f.gallery, 300, 300);
    EXPECT_TRUE(screen.ShowsBackground(RECT{0, 0, 1024, 768})) << "no trace of the drag is left";
}

TEST(GalleryDrag, ADropElsewhereTellsNobody) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Fill(4);
    Host target(RECT{850, 400, 1020, 600});
    CThumbnailGalleryWindow::SetDropTarget(&target);
    Listener listener;
    f.gallery.SetDragListener(&listener);
    FakeScreen screen;
    Press(f.gallery, 20, 30);
    Move(f.gallery, 200, 30);
    Release(f.gallery, 200, 40);
    CThumbnailGalleryWindow::SetDropTarget(nullptr);
    EXPECT_TRUE(f.host.commands.empty());
    EXPECT_TRUE(target.commands.empty());
    EXPECT_FALSE(f.gallery.dragActive);
    EXPECT_EQ(f.gallery.mouseState, 0);
    EXPECT_EQ(f.gallery.currentIndex, 0);
    EXPECT_EQ(f.gallery.selectedIndex, 0) << "the highlight stays";
    EXPECT_EQ(f.gallery.dropPoint.x, 200);
    EXPECT_EQ(f.gallery.dropPoint.y, 40);
    EXPECT_EQ(f.gallery.pressPoint.x, -1);
    for (const auto& call : listener.calls) EXPECT_NE(call.message, static_cast<UINT>(WM_LBUTTONUP));
}

TEST(GalleryDrag, ADropOnTheTargetNotifiesThenTellsTheListener) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Fill(4);
    Host target(RECT{850, 100, 1020, 300});
    CThumbnailGalleryWindow::SetDropTarget(&target);
    Listener listener;
    f.gallery.SetDragListener(&listener);
    f.host.onCommand = [&](const Command&) {
        EXPECT_TRUE(listener.calls.empty() || listener.calls.back().message != WM_LBUTTONUP)
            << "the owner hears first";
    };
    FakeScreen screen;
    MessageSequence sequence;
    f.gallery.sequence = &sequence;
    f.host.sequence = &sequence;
    Press(f.gallery, 160, 30);
    Move(f.gallery, 20, 30);
    RECT targetRect = target.GetWindowRect();
    POINT drop = {(targetRect.left + targetRect.right) / 2, (targetRect.top + targetRect.bottom) / 2};
    ::ScreenToClient(f.gallery.Handle(), &drop);
    Move(f.gallery, drop.x, drop.y);
    Release(f.gallery, drop.x, drop.y);
    f.gallery.sequence = nullptr;
    CThumbnailGalleryWindow::SetDropTarget(nullptr);
    ASSERT_EQ(f.host.commands.size(), 1u);
    EXPECT_EQ(f.host.commands[0].lastAction, 2);
    EXPECT_EQ(f.host.commands[0].currentIndex, 1);
    EXPECT_EQ(f.host.commands[0].notifying, &f.gallery);
    ASSERT_FALSE(listener.calls.empty());
    EXPECT_EQ(listener.calls.back().message, static_cast<UINT>(WM_LBUTTONUP));
    EXPECT_EQ(listener.calls.back().wParam, 0u);
    EXPECT_EQ(listener.calls.back().lParam, 0);
    EXPECT_FALSE(f.gallery.dragActive);
    EXPECT_EQ(f.gallery.mouseState, 0);
    EXPECT_EQ(f.gallery.selectedIndex, 1);
    EXPECT_EQ(f.gallery.dropPoint.x, drop.x);
    EXPECT_TRUE(sequence.Filtered(Interesting)
                    .Matches({
                        {WM_LBUTTONDOWN},
                        {WM_MOUSEMOVE},
                        {WM_MOUSEMOVE},
                        {WM_LBUTTONUP},
                        {WM_CAPTURECHANGED},
                        {WM_COMMAND, ExpectedMessage::kWParam, CommandParam(kGalleryId, 0)},
                    }));
}

TEST(GalleryDrag, ReleaseWithDraggingSwitchedOffMidwayNotifiesAndKeepsTheState) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Fill(4);
    FakeScreen screen;
    Press(f.gallery, 20, 30);
    Move(f.gallery, 200, 30);
    ASSERT_EQ(f.gallery.mouseState, 2);
    const RECT image = f.gallery.dragRect;
    f.gallery.SetDragEnabled(FALSE);
    Move(f.gallery, 250, 30);
    EXPECT_EQ(f.gallery.dragRect.left, image.left) << "no moves without dragging";
    Release(f.gallery, 250, 30);
    ASSERT_EQ(f.host.commands.size(), 1u);
    EXPECT_EQ(f.host.commands[0].lastAction, 1);
    EXPECT_EQ(f.host.commands[0].selectedIndex, -1) << "the selection was cleared first";
    EXPECT_EQ(f.host.commands[0].currentIndex, -1);
    EXPECT_FALSE(f.gallery.dragActive);
    EXPECT_EQ(f.gallery.mouseState, 2) << "the state stays";
    EXPECT_EQ(f.gallery.pressPoint.x, 20);
    EXPECT_EQ(f.gallery.pressReleased, 0);
    EXPECT_FALSE(screen.ShowsBackground(image)) << "the image is not taken away";
    // A later press starts afresh from any state.
    Press(f.gallery, 10, 10);
    EXPECT_EQ(f.gallery.mouseState, 1);
    Release(f.gallery, 10, 10);
}

TEST(GalleryDrag, ACaptureTakenDuringTheDragIsTakenBack) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Fill(4);
    FakeScreen screen;
    Press(f.gallery, 20, 30);
    Move(f.gallery, 200, 30);
    ::SetCapture(f.host.Handle());
    Move(f.gallery, 210, 30);
    EXPECT_EQ(::GetCapture(), f.gallery.Handle());
    Release(f.gallery, 210, 30);
}

TEST(GalleryDrag, APatternBrushScreensTheImage) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Fill(4);
    const HBRUSH pattern = ::CreateHatchBrush(HS_DIAGCROSS, RGB(0, 0, 0));
    f.gallery.dragPatternBrush = pattern;
    FakeScreen screen;
    Press(f.gallery, 20, 30);
    Move(f.gallery, 200, 30);
    EXPECT_EQ(f.gallery.Solid(0)->calls.back().rop, CThumbnailGalleryWindow::kScreenedDragRop);
    Move(f.gallery, 220, 40);
    EXPECT_EQ(f.gallery.Solid(0)->calls.back().rop, CThumbnailGalleryWindow::kScreenedDragRop);
    Release(f.gallery, 220, 40);
    f.gallery.dragPatternBrush = nullptr;
    ::DeleteObject(pattern);
}

TEST(GalleryDrag, AnEmptyGalleryNeverDrags) {
    Fixture<BrowserGallery> f(500, 400);
    FakeScreen screen;
    Press(f.gallery, 20, 30);
    Move(f.gallery, 200, 30);
    EXPECT_EQ(f.gallery.mouseState, 1);
    Release(f.gallery, 200, 30);
}

// ---- Locked input and stray releases ----------------------------------------------------

TEST(GalleryInputLock, LockedInputIgnoresTheLeftButton) {
    Fixture<> f(500, 400);
    f.gallery.Fill(4);
    f.gallery.inputLocked = 1;
    Press(f.gallery, 150, 10);
    EXPECT_EQ(f.gallery.mouseState, 0);
    EXPECT_EQ(f.gallery.selectedIndex, -1);
    EXPECT_NE(::GetCapture(), f.gallery.Handle());
    f.gallery.buttonDown = TRUE;
    Release(f.gallery, 150, 10);
    EXPECT_TRUE(f.gallery.buttonDown) << "the release is ignored too";
    EXPECT_TRUE(f.host.commands.empty());
}

TEST(GalleryInputLock, AReleaseWithoutAPressDoesNothing) {
    Fixture<> f(500, 400);
    f.gallery.Fill(4);
    f.gallery.SetSelection(1);
    Release(f.gallery, 150, 10);
    EXPECT_TRUE(f.host.commands.empty());
    EXPECT_EQ(f.gallery.pressReleased, 1);
}

// ---- Focus -------------------------------------------------------------------------------

TEST(GalleryFocus, AMoveOverTheGalleryTakesTheFocus) {
    Fixture<> f(500, 400);
    const HWND list = ::CreateWindowExA(0, "LISTBOX", "", WS_CHILD | WS_VISIBLE, 520, 10, 100, 100,
                                        f.host.Handle(), reinterpret_cast<HMENU>(2000), nullptr, nullptr);
    ASSERT_NE(list, nullptr);
    ::SetFocus(list);
    ASSERT_EQ(::GetFocus(), list);
    Move(f.gallery, 50, 50, 0);
    EXPECT_EQ(::GetFocus(), f.gallery.Handle());
    EXPECT_EQ(f.gallery.mouseState, 0);
    ::DestroyWindow(list);
}

// ---- Right button and menu -------------------------------------------------------------------

TEST(GalleryRightButton, WithoutAMenuItIsIgnored) {
    Fixture<> f(500, 400);
    f.gallery.Fill(4);
    f.gallery.SetSelection(0);
    f.gallery.Send(WM_RBUTTONDOWN, MK_RBUTTON, Point(150, 10));
    EXPECT_EQ(f.gallery.selectedIndex, 0);
    EXPECT_TRUE(f.gallery.updateMenuCalls.empty());
}

TEST(GalleryRightButton, SelectsUpdatesTheMenuTracksAndClears) {
    Fixture<Gallery> f(500, 400, kLargeCell, TRUE);
    f.gallery.Fill(4);
    f.gallery.Send(WM_RBUTTONDOWN, MK_RBUTTON, Point(300, 10));
    ASSERT_EQ(f.gallery.updateMenuCalls.size(), 1u);
    EXPECT_EQ(f.gallery.updateMenuCalls[0], 2);
    EXPECT_EQ(f.gallery.selectedIndex, -1) << "cleared after the menu";
    EXPECT_EQ(f.gallery.currentIndex, -1);
    EXPECT_TRUE(f.host.commands.empty());
}

namespace {
std::function<void()> g_whileTracking;
// Closes the menu that the right button opened, after looking at the gallery.
void CALLBACK EndMenuSoon(HWND, UINT, UINT_PTR, DWORD) {
    if (g_whileTracking) g_whileTracking();
    ::EndMenu();
}
}  // namespace

namespace {
struct TrackedMenu {
    int calls = 0;
    HMENU menu = nullptr;
    UINT flags = 0;
    POINT at = {};
    HWND owner = nullptr;
    int selectedDuringMenu = -2;
    const gallery::CThumbnailGalleryWindow* gallery = nullptr;
};
TrackedMenu g_trackedMenu;
}  // namespace

// The menu is asked for centred on the press, in screen coordinates, with
// the right button able to choose, on behalf of the gallery's window.
TEST(GalleryRightButton, TheMenuIsCentredOnThePressOnTheScreen) {
    Fixture<Gallery> f(500, 400, kLargeCell, TRUE);
    f.gallery.Fill(6);
    g_trackedMenu = TrackedMenu();
    g_trackedMenu.gallery = &f.gallery;
    gallery::GalleryDrawingFunctions functions;
    functions.trackPopupMenu = [](HMENU menu, UINT flags, int x, int y, HWND owner) -> BOOL {
        ++g_trackedMenu.calls;
        g_trackedMenu.menu = menu;
        g_trackedMenu.flags = flags;
        g_trackedMenu.at = POINT{x, y};
        g_trackedMenu.owner = owner;
        g_trackedMenu.selectedDuringMenu = g_trackedMenu.gallery->SelectedIndex();
        return TRUE;
    };
    DrawingFunctionsScope scope(functions);
    f.gallery.Send(WM_RBUTTONDOWN, MK_RBUTTON, Point(150, 200));
    POINT screen = {150, 200};
    ::ClientToScreen(f.gallery.Handle(), &screen);
    ASSERT_EQ(g_trackedMenu.calls, 1);
    EXPECT_EQ(g_trackedMenu.menu, f.gallery.popupMenu.Get());
    EXPECT_EQ(g_trackedMenu.flags, 6u) << "TPM_CENTERALIGN | TPM_RIGHTBUTTON";
    EXPECT_EQ(g_trackedMenu.at.x, screen.x);
    EXPECT_EQ(g_trackedMenu.at.y, screen.y);
    EXPECT_NE(screen.x, 150) << "the gallery does not stand at the screen's corner";
    EXPECT_EQ(g_trackedMenu.owner, f.gallery.Handle());
    EXPECT_EQ(g_trackedMenu.selectedDuringMenu, 4);
    EXPECT_EQ(f.gallery.selectedIndex, -1);
}

TEST(GalleryRightButton, AMenuWithItemsRunsModallyAndReturns) {
    Fixture<BrowserGallery> f(500, 400, kLargeCell, TRUE);
    f.gallery.Fill(6);
    for (UINT id = 4; id <= 7; ++id)
        ::AppendMenuA(f.gallery.popupMenu.Get(), MF_STRING | MF_GRAYED, id, "command");
    int selectedDuringMenu = -2;
    g_whileTracking = [&] { selectedDuringMenu = f.gallery.selectedIndex; };
    const UINT_PTR timer = ::SetTimer(nullptr, 0, 100, &EndMenuSoon);
    f.gallery.Send(WM_RBUTTONDOWN, MK_RBUTTON, Point(150, 200));
    ::KillTimer(nullptr, timer);
    g_whileTracking = nullptr;
    EXPECT_EQ(selectedDuringMenu, 4) << "the cell under the pointer is selected while the menu is up";
    ASSERT_EQ(f.gallery.updateMenuCalls.size(), 1u);
    EXPECT_EQ(f.gallery.updateMenuCalls[0], 4);
    for (UINT id = 4; id <= 7; ++id)
        EXPECT_EQ(::GetMenuState(f.gallery.popupMenu.Get(), id, MF_BYCOMMAND) & (MF_GRAYED | MF_DISABLED), 0u)
            << id;
    EXPECT_EQ(f.gallery.selectedIndex, -1);
}

TEST(GalleryRightButton, ACaptureOfAnotherWindowIsReleased) {
    Fixture<Gallery> f(500, 400, kLargeCell, TRUE);
    f.gallery.Fill(4);
    ::SetCapture(f.host.Handle());
    f.gallery.Send(WM_RBUTTONDOWN, MK_RBUTTON, Point(10, 10));
    EXPECT_EQ(::GetCapture(), nullptr);
}

// ---- The browser gallery's commands -------------------------------------------------------------

TEST(BrowserGalleryCommands, FourToSevenGoToTheOwner) {
    Fixture<BrowserGallery> f(500, 400);
    for (WPARAM id = 4; id <= 7; ++id) {
        if (id == 5) continue;
        EXPECT_EQ(f.gallery.OnCommand(id, 0), TRUE);
        ASSERT_FALSE(f.host.commands.empty());
        EXPECT_EQ(f.host.commands.back().lastAction, static_cast<int>(id));
        EXPECT_EQ(f.host.commands.back().id, kGalleryId);
        EXPECT_EQ(f.host.commands.back().code, 0);
    }
    EXPECT_EQ(f.host.commands.size(), 3u);
}

TEST(BrowserGalleryCommands, OthersAreRefusedWithoutTheBase) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.lastAction = 1;
    for (WPARAM id : {WPARAM{0}, WPARAM{3}, WPARAM{8}, WPARAM{1000}, MAKEWPARAM(4, 1)})
        EXPECT_EQ(f.gallery.OnCommand(id, 0), FALSE) << id;
    EXPECT_TRUE(f.host.commands.empty());
    EXPECT_EQ(f.gallery.lastAction, 1);
}

TEST(BrowserGalleryCommands, FiveAsksFirst) {
    Fixture<BrowserGallery> f(500, 400);
    std::vector<std::pair<UINT, UINT>> asked;
    int answer = IDNO;
    gallery::ScopedQuestionHandler handler([&](UINT id, UINT type) {
        asked.emplace_back(id, type);
        return answer;
    });
    f.gallery.lastAction = 1;
    EXPECT_EQ(f.gallery.OnCommand(5, 0), FALSE);
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0].first, 1198u);
    EXPECT_EQ(asked[0].second, static_cast<UINT>(MB_YESNO));
    EXPECT_EQ(f.gallery.lastAction, 1) << "No changes nothing";
    EXPECT_TRUE(f.host.commands.empty());
    answer = IDYES;
    EXPECT_EQ(f.gallery.OnCommand(5, 0), TRUE);
    ASSERT_EQ(f.host.commands.size(), 1u);
    EXPECT_EQ(f.host.commands[0].lastAction, 5);
    EXPECT_EQ(asked.size(), 2u);
    EXPECT_EQ(f.gallery.OnCommand(6, 0), TRUE);
    EXPECT_EQ(asked.size(), 2u) << "only five asks";
}

TEST(BrowserGalleryCommands, ArriveAsMenuCommandMessages) {
    Fixture<BrowserGallery> f(500, 400);
    f.gallery.Send(WM_COMMAND, MAKEWPARAM(6, 0), 0);
    ASSERT_EQ(f.host.commands.size(), 1u);
    EXPECT_EQ(f.host.commands[0].lastAction, 6);
    f.gallery.Send(WM_COMMAND, MAKEWPARAM(9, 0), 0);
    EXPECT_EQ(f.host.commands.size(), 1u);
}

TEST(BrowserGalleryCommands, UpdateMenuEnablesFourToSevenWhateverTheIndex) {
    BrowserGallery gallery(kLargeCell, TRUE, 3);
    Host host;
    ASSERT_TRUE(gallery.Create(host.Handle(), RectForClient(300, 200)));
    for (UINT id = 3; id <= 8; ++id)
        ::AppendMenuA(gallery.popupMenu.Get(), MF_STRING | MF_GRAYED, id, "command");
    gallery.UpdateMenu(-1);
    for (UINT id = 4; id <= 7; ++id)
        EXPECT_EQ(::GetMenuState(gallery.popupMenu.Get(), id, MF_BYCOMMAND) & MF_GRAYED, 0u) << id;
    EXPECT_NE(::GetMenuState(gallery.popupMenu.Get(), 3, MF_BYCOMMAND) & MF_GRAYED, 0u);
    EXPECT_NE(::GetMenuState(gallery.popupMenu.Get(), 8, MF_BYCOMMAND) & MF_GRAYED, 0u);
}

// ---- The wheel -------------------------------------------------------------------------------

namespace {

// Takes the scroll messages posted to the gallery off the queue, unanswered.
std::vector<MSG> TakePostedScrolls(const Window& gallery) {
    std::vector<MSG> posted;
    MSG msg;
    while (::PeekMessageA(&msg, gallery.Handle(), WM_VSCROLL, WM_VSCROLL, PM_REMOVE)) posted.push_back(msg);
    return posted;
}

LRESULT Wheel(const Window& gallery, int delta, UINT keys = 0) {
    return gallery.Send(WM_MOUSEWHEEL, MAKEWPARAM(keys, static_cast<WORD>(static_cast<short>(delta))),
                        Point(60, 60));
}

void ExpectScrolls(const std::vector<MSG>& posted, size_t count, WPARAM code) {
    ASSERT_EQ(posted.size(), count);
    for (const MSG& msg : posted) {
        EXPECT_EQ(msg.wParam, code);
        EXPECT_EQ(msg.lParam, 0);
    }
}

}  // namespace

TEST(GalleryWheel, ThreeLinesANotch) {
    WheelSettingGuard setting;
    setting.Set("3");
    Fixture<> f(290, 537);
    ASSERT_EQ(f.gallery.wheelScrollLines, 3);
    Wheel(f.gallery, 120);
    ExpectScrolls(TakePostedScrolls(f.gallery), 3, SB_LINEUP);
    Wheel(f.gallery, -240);
    ExpectScrolls(TakePostedScrolls(f.gallery), 6, SB_LINEDOWN);
    Wheel(f.gallery, 30);
    ExpectScrolls(TakePostedScrolls(f.gallery), 0, SB_LINEDOWN);
}

TEST(GalleryWheel, ShiftOrControlDoesNothingAndReportsZero) {
    WheelSettingGuard setting;
    setting.Set("3");
    Fixture<> f(290, 537);
    EXPECT_EQ(Wheel(f.gallery, 120, MK_SHIFT), 0);
    EXPECT_EQ(Wheel(f.gallery, -120, MK_CONTROL), 0);
    EXPECT_TRUE(TakePostedScrolls(f.gallery).empty());
}

TEST(GalleryWheel, PageMode) {
    WheelSettingGuard setting;
    setting.Set("-1");
    Fixture<> f(290, 537);
    ASSERT_EQ(f.gallery.wheelScrollLines, -1);
    Wheel(f.gallery, -120);
    ExpectScrolls(TakePostedScrolls(f.gallery), 1, SB_PAGEDOWN);
    Wheel(f.gallery, 240);
    ExpectScrolls(TakePostedScrolls(f.gallery), 2, SB_PAGEUP);
    Wheel(f.gallery, -100);
    ExpectScrolls(TakePostedScrolls(f.gallery), 0, SB_PAGEDOWN);
}

TEST(GalleryWheel, PostedStepsScrollWhenTheyArrive) {
    WheelSettingGuard setting;
    setting.Set("3");
    Fixture<> f(290, 537);
    f.gallery.Fill(30);
    MessageSequence sequence;
    f.gallery.sequence = &sequence;
    Wheel(f.gallery, -240);
    EXPECT_EQ(f.gallery.topRow, 0) << "nothing moves before the steps arrive";
    framework::win32::PumpWaitingMessages();
    f.gallery.sequence = nullptr;
    EXPECT_EQ(f.gallery.topRow, 6);
    EXPECT_EQ(f.gallery.GetTopRow(), 6);
    const auto scrolls = sequence.Filtered(
        [](const MessageRecord& r) { return r.message == WM_MOUSEWHEEL || r.message == WM_VSCROLL; });
    const ExpectedMessage down{WM_VSCROLL, ExpectedMessage::kBoth, SB_LINEDOWN, 0};
    EXPECT_TRUE(scrolls.Matches({{WM_MOUSEWHEEL}, down, down, down, down, down, down}));
}

TEST(GalleryWheel, LinesFromTheRegistryAreRows) {
    WheelSettingGuard setting;
    setting.Set("1");
    Fixture<> f(290, 537);
    f.gallery.Fill(30);
    Wheel(f.gallery, -120);
    framework::win32::PumpWaitingMessages();
    EXPECT_EQ(f.gallery.topRow, 1);
}

// ---- Nested notifications ----------------------------------------------------------------------

TEST(GalleryNotifications, NestedNotificationsUnwind) {
    Fixture<> f(500, 400);
    f.gallery.Fill(6);
    Window* notifyingAfterInner = nullptr;
    f.host.onCommand = [&](const Command&) {
        if (f.host.commands.size() != 1) return;
        // The owner answers the first selection with a click of its own.
        Press(f.gallery, 300, 200);
        Release(f.gallery, 300, 200);
        notifyingAfterInner = gallery::GetNotifyingControl();
    };
    Press(f.gallery, 10, 10);
    Release(f.gallery, 10, 10);
    ASSERT_EQ(f.host.commands.size(), 2u);
    EXPECT_EQ(f.host.commands[0].currentIndex, 0);
    EXPECT_EQ(f.host.commands[1].currentIndex, 5);
    EXPECT_EQ(f.host.commands[1].notifying, &f.gallery);
    EXPECT_EQ(notifyingAfterInner, &f.gallery) << "the inner call put the outer one back";
    EXPECT_EQ(gallery::GetNotifyingControl(), nullptr);
    EXPECT_EQ(f.gallery.selectedIndex, 5);
    EXPECT_EQ(f.gallery.mouseState, 0);
}

TEST(GalleryNotifications, TheOwnerMaySetTheSelectionWhileNotified) {
    Fixture<> f(500, 400);
    f.gallery.Fill(6);
    f.host.onCommand = [&](const Command& command) { f.gallery.SetSelection(command.currentIndex + 1); };
    Press(f.gallery, 10, 10);
    Release(f.gallery, 10, 10);
    ASSERT_EQ(f.host.commands.size(), 1u);
    EXPECT_EQ(f.gallery.selectedIndex, 1);
    EXPECT_EQ(f.gallery.currentIndex, 1);
}
