// The gallery window's creation, grid, scroll bar and hit testing.
#include <gtest/gtest.h>

#include <cstdlib>

#include "GalleryTestSupport.h"
#include "gallery/GalleryGrid.h"

using namespace gallerytest;
using testsupport::ExpectedMessage;
using testsupport::MessageSequence;

namespace {

SCROLLINFO ScrollInfo(const Window& window) {
    SCROLLINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = SIF_ALL;
    ::GetScrollInfo(window.Handle(), SB_VERT, &info);
    return info;
}

bool BarDisabled(const Window& window) {
    SCROLLBARINFO info = {};
    info.cbSize = sizeof info;
    ::GetScrollBarInfo(window.Handle(), OBJID_VSCROLL, &info);
    return (info.rgstate[0] & STATE_SYSTEM_UNAVAILABLE) != 0;
}

bool BarVisible(const Window& window) {
    SCROLLBARINFO info = {};
    info.cbSize = sizeof info;
    ::GetScrollBarInfo(window.Handle(), OBJID_VSCROLL, &info);
    return (info.rgstate[0] & STATE_SYSTEM_INVISIBLE) == 0;
}

// The highest position the bar takes: ask for far more and read it back.
int HighestBarPosition(Gallery& gallery) {
    const int saved = gallery.GetScrollPos(SB_VERT);
    gallery.SetScrollPos(SB_VERT, 1 << 20, false);
    const int highest = gallery.GetScrollPos(SB_VERT);
    gallery.SetScrollPos(SB_VERT, saved, false);
    return highest;
}

bool HasUpdateRegion(const Window& window) {
    return ::GetUpdateRect(window.Handle(), nullptr, FALSE) != FALSE;
}

void Validate(const Window& window) {
    ::ValidateRect(window.Handle(), nullptr);
}

}  // namespace

// ---- Creation ------------------------------------------------------------------------

TEST(GalleryCreate, ClassAndWindowStyles) {
    Host host;
    Gallery gallery;
    const HCURSOR cross = ::LoadCursor(nullptr, IDC_CROSS);
    ASSERT_TRUE(gallery.Create(host.Handle(), RectForClient(300, 200), cross, 11, 22));
    const HWND hwnd = gallery.Handle();
    EXPECT_EQ(::GetClassLongPtrA(hwnd, GCL_STYLE), static_cast<ULONG_PTR>(CS_DBLCLKS));
    EXPECT_EQ(::GetClassLongPtrA(hwnd, GCLP_HBRBACKGROUND), 16u) << "the button face plus one";
    EXPECT_EQ(reinterpret_cast<HCURSOR>(::GetClassLongPtrA(hwnd, GCLP_HCURSOR)), cross);
    EXPECT_EQ(::GetClassLongPtrA(hwnd, GCLP_HICON), 0u);
    EXPECT_EQ(static_cast<DWORD>(::GetWindowLongA(hwnd, GWL_STYLE)) & 0xFFFF0000u, 0x50200000u);
    EXPECT_TRUE(::GetWindowLongA(hwnd, GWL_EXSTYLE) & WS_EX_CLIENTEDGE);
    EXPECT_EQ(::GetWindowTextLengthA(hwnd), 0);
    EXPECT_EQ(::GetDlgCtrlID(hwnd), static_cast<int>(kGalleryId));
    EXPECT_EQ(::GetParent(hwnd), host.Handle());
    EXPECT_EQ(gallery.createParam1, 22u) << "the last two arguments are stored crosswise";
    EXPECT_EQ(gallery.createParam2, 11u);
    EXPECT_TRUE(gallery.IsCreated());
}

TEST(GalleryCreate, InitialStateBeforeAndAfter) {
    Host host;
    Gallery gallery(kLargeCell, FALSE, 3);
    EXPECT_EQ(gallery.visibleRows, 1);
    EXPECT_EQ(gallery.columns, 1);
    EXPECT_EQ(gallery.currentIndex, -1);
    EXPECT_EQ(gallery.selectedIndex, -1);
    EXPECT_EQ(gallery.pressReleased, 1);
    EXPECT_EQ(gallery.pressPoint.x, -1);
    EXPECT_EQ(gallery.pressPoint.y, -1);
    EXPECT_EQ(gallery.mouseState, 0);
    EXPECT_FALSE(gallery.dragEnabled);
    EXPECT_EQ(gallery.dragPatternBrush, nullptr);
    EXPECT_EQ(gallery.GetOwnerLink().OwnerKind(), 3);
    EXPECT_FALSE(gallery.popupMenu) << "no menu is made before the window";
    ASSERT_TRUE(gallery.Create(host.Handle(), RectForClient(500, 400)));
    // The platform's first WM_SIZE sets the real grid.
    EXPECT_EQ(gallery.columns, 3);
    EXPECT_EQ(gallery.visibleRows, 3);
    EXPECT_EQ(gallery.partialRow, 1);
}

TEST(GalleryCreate, MessagesOfCreation) {
    Host host;
    MessageSequence sequence;
    Gallery gallery;
    gallery.sequence = &sequence;
    ASSERT_TRUE(gallery.Create(host.Handle(), RectForClient(290, 358)));
    const auto relevant = sequence.Filtered([](const testsupport::MessageRecord& r) {
        return r.message == WM_NCCREATE || r.message == WM_CREATE || r.message == WM_SIZE;
    });
    EXPECT_TRUE(relevant.Matches({
        {WM_NCCREATE},
        {WM_CREATE},
        {WM_SIZE, ExpectedMessage::kLParam, 0, MAKELPARAM(290, 358)},
    }));
}

TEST(GalleryCreate, BarIsShownGreyedWhenEmpty) {
    Fixture<> f(290, 358);
    const SCROLLINFO info = ScrollInfo(f.gallery);
    EXPECT_EQ(info.nMin, 0);
    EXPECT_EQ(info.nMax, 0);
    EXPECT_EQ(info.nPos, 0);
    EXPECT_TRUE(BarVisible(f.gallery));
    EXPECT_TRUE(BarDisabled(f.gallery));
    EXPECT_EQ(f.gallery.totalRows, 0);
}

TEST(GalleryCreate, PopupMenuIsMadeAndBuiltAfterTheWindow) {
    Host host;
    Gallery gallery(kLargeCell, TRUE, 3);
    bool hadWindow = false;
    gallery.buildMenu = [&] { hadWindow = gallery.Handle() != nullptr && ::IsMenu(gallery.popupMenu.Get()); };
    ASSERT_TRUE(gallery.Create(host.Handle(), RectForClient(300, 200)));
    EXPECT_EQ(gallery.buildMenuCalls, 1);
    EXPECT_TRUE(hadWindow);
    EXPECT_EQ(::GetMenuItemCount(gallery.popupMenu.Get()), 0) << "nothing appends items";
    EXPECT_EQ(::GetDlgCtrlID(gallery.Handle()), static_cast<int>(kGalleryId))
        << "a child window cannot hold a menu; its id stays";
}

TEST(GalleryCreate, WithoutPopupMenuNothingIsBuilt) {
    Host host;
    Gallery gallery(kLargeCell, FALSE, 3);
    ASSERT_TRUE(gallery.Create(host.Handle(), RectForClient(300, 200)));
    EXPECT_EQ(gallery.buildMenuCalls, 0);
    EXPECT_FALSE(gallery.popupMenu);
}

TEST(GalleryCreate, FailureReturnsFalseAndDoesNothingMore) {
    Gallery gallery(kLargeCell, TRUE, 3);
    const HWND noWindow = reinterpret_cast<HWND>(static_cast<INT_PTR>(0x7FFF1234));
    EXPECT_FALSE(gallery.Create(noWindow, RectForClient(300, 200)));
    EXPECT_EQ(gallery.buildMenuCalls, 0);
    EXPECT_EQ(gallery.Handle(), nullptr);
}

TEST(GalleryCreate, RuntimeClasses) {
    Gallery plain;
    BrowserGallery browser;
    EXPECT_TRUE(plain.IsKindOf(gallery::CTPCtrlWnd::StaticRuntimeClass()));
    EXPECT_STREQ(plain.GetRuntimeClass()->Name(), "CThumbnailGalleryWindow");
    EXPECT_FALSE(plain.GetRuntimeClass()->CanCreate());
    EXPECT_STREQ(browser.GetRuntimeClass()->Name(), "CThumbnailGalleryWindow")
        << "the browser's gallery has no record of its own";
    EXPECT_FALSE(plain.dragEnabled);
    EXPECT_TRUE(browser.dragEnabled) << "the browser's gallery switches dragging on";
    EXPECT_TRUE(gallery::CTPGalleryItem::StaticRuntimeClass().IsDerivedFrom(
        &framework::Object::StaticRuntimeClass()));
}

TEST(GalleryCreate, ItemsAreDeletedWithTheGallery) {
    int destroyed = 0;
    {
        Fixture<> f;
        for (int i = 0; i < 5; ++i)
            f.gallery.AddItem(
                std::make_unique<SolidItem>(ItemColour(i), kLargeCell, SIZE{10, 10}, &destroyed), TRUE);
        EXPECT_EQ(destroyed, 0);
    }
    EXPECT_EQ(destroyed, 5);
}

// ---- The wheel setting ---------------------------------------------------------------

TEST(GalleryWheelSetting, ReadFromTheRegistryAtConstruction) {
    WheelSettingGuard guard;
    guard.Set("3");
    EXPECT_EQ(Gallery().wheelScrollLines, 3);
    guard.Set("-1");
    EXPECT_EQ(Gallery().wheelScrollLines, -1) << "page mode";
    guard.Set("  7 lines");
    EXPECT_EQ(Gallery().wheelScrollLines, 7);
    guard.Set("none");
    EXPECT_EQ(Gallery().wheelScrollLines, 0);
    guard.Remove();
    EXPECT_EQ(Gallery().wheelScrollLines, 1) << "a missing value keeps the default";
    guard.Set("5");
    Gallery before;
    guard.Set("9");
    EXPECT_EQ(before.wheelScrollLines, 5) << "read once, when the gallery is made";
}

TEST(GalleryWheelSetting, ParsesAsTheRuntimesStrtoul) {
    for (const char* text : {"3", "-1", "-2", "+4", " 12", "4294967295", "4294967296", "99999999999", "x", "",
                             "0x1F", "-4294967295", "\t8\n"}) {
        EXPECT_EQ(gallery::ParseWheelScrollLines(text),
                  static_cast<uint32_t>(std::strtoul(text, nullptr, 10)))
            << '"' << text << '"';
    }
}

// ---- Columns and rows -----------------------------------------------------------------

TEST(GalleryGrid, ResizeTo276By362GivesTwoByTwoLargeCells) {
    Fixture<> f(276, 362);
    EXPECT_EQ(f.gallery.columns, 2);
    EXPECT_EQ(f.gallery.visibleRows, 2);
    EXPECT_EQ(f.gallery.partialRow, 0);
    ::MoveWindow(f.gallery.Handle(), 10, 10, RectForClient(275, 361).right, RectForClient(275, 361).bottom,
                 TRUE);
    EXPECT_EQ(f.gallery.columns, 1);
    EXPECT_EQ(f.gallery.visibleRows, 3);
    EXPECT_EQ(f.gallery.partialRow, 1);
}

TEST(GalleryGrid, TheSameSizeWithSmallCells) {
    Fixture<> f(276, 362, kSmallCell);
    EXPECT_EQ(f.gallery.columns, 4);
    EXPECT_EQ(f.gallery.visibleRows, 4);
    EXPECT_EQ(f.gallery.partialRow, 1);
    f.gallery.AssignCellSize(SIZE{77, 108});
    f.gallery.SendSize(276, 362);
    EXPECT_EQ(f.gallery.columns, 3);
    EXPECT_EQ(f.gallery.visibleRows, 4);
    EXPECT_EQ(f.gallery.partialRow, 1);
}

TEST(GalleryGrid, SizeMessageFromTheBrowserWithTheOuterSize) {
    Fixture<> f;
    f.gallery.Fill(10);
    f.gallery.SendSize(290, 358);
    EXPECT_EQ(f.gallery.columns, 2);
    EXPECT_EQ(f.gallery.visibleRows, 2);
    EXPECT_EQ(f.gallery.partialRow, 0);
    EXPECT_EQ(ScrollInfo(f.gallery).nMax, 4) << "the range follows the resize";
}

TEST(GalleryGrid, CalcWindowSizeHoldsTheGridExactly) {
    const SIZE outer = CThumbnailGalleryWindow::CalcWindowSize(kLargeCell, 2, 3);
    EXPECT_EQ(outer.cx, 3 * 145 + 2 * ::GetSystemMetrics(SM_CXEDGE) + ::GetSystemMetrics(SM_CXVSCROLL));
    EXPECT_EQ(outer.cy, 2 * 179 + 2 * ::GetSystemMetrics(SM_CYEDGE));
    Host host;
    Gallery gallery;
    ASSERT_TRUE(gallery.Create(host.Handle(), RECT{0, 0, outer.cx, outer.cy}));
    const RECT client = gallery.GetClientRect();
    EXPECT_EQ(client.right, 435);
    EXPECT_EQ(client.bottom, 358);
    EXPECT_EQ(gallery.columns, 3);
    EXPECT_EQ(gallery.visibleRows, 2);
    EXPECT_EQ(gallery.partialRow, 0);
}

TEST(GalleryGrid, ZeroCellSizeLeavesTheGridAndHitsNothing) {
    Fixture<> f(500, 400);
    f.gallery.Fill(6);
    f.gallery.SetCellSize(0, 0);
    f.gallery.Fill(6, SIZE{0, 0});
    f.gallery.SendSize(300, 200);
    EXPECT_EQ(f.gallery.columns, 3);
    EXPECT_EQ(f.gallery.visibleRows, 3);
    EXPECT_EQ(f.gallery.partialRow, 1);
    for (int y = 0; y < 400; y += 13)
        for (int x = 0; x < 500; x += 13) ASSERT_EQ(f.gallery.HitTest(x, y), -1) << x << "," << y;
    // Selecting, invalidating and painting a grid of empty cells is harmless.
    f.gallery.SetSelection(2);
    f.gallery.InvalidateSelection();
    Canvas canvas(500, 400);
    f.gallery.PaintInto(canvas.Dc());
}

TEST(GalleryGrid, ASingleZeroSideIsGuardedToo) {
    Fixture<> f(500, 400);
    f.gallery.Fill(6);
    f.gallery.AssignCellSize(SIZE{0, 179});
    f.gallery.SendSize(300, 400);
    EXPECT_EQ(f.gallery.columns, 3) << "kept, not divided by zero";
    EXPECT_EQ(f.gallery.visibleRows, 3);
    EXPECT_EQ(f.gallery.HitTest(10, 10), -1);
    f.gallery.AssignCellSize(SIZE{145, 0});
    f.gallery.SendSize(300, 400);
    EXPECT_EQ(f.gallery.columns, 2);
    EXPECT_EQ(f.gallery.HitTest(10, 10), -1);
}

TEST(GalleryGrid, NarrowerThanACellHasNoColumnsAndStillWorks) {
    Fixture<> f(100, 400);
    EXPECT_EQ(f.gallery.columns, 0);
    f.gallery.Fill(5);
    EXPECT_EQ(f.gallery.totalRows, 0);
    f.gallery.SetSelection(1);
    f.gallery.InvalidateCell(1);
    f.gallery.EnsureVisible(1);
    EXPECT_FALSE(f.gallery.IsCellVisible(1));
    EXPECT_EQ(f.gallery.QuotientByColumns(4), 0);
    Canvas canvas(100, 400);
    f.gallery.PaintInto(canvas.Dc());
    EXPECT_EQ(canvas.Pixel(50, 50), ::GetSysColor(COLOR_BTNFACE));
}

TEST(GalleryRelayout, UsesTheRectangleAsItStandsWithoutSubstitution) {
    Fixture<> f(500, 400);
    f.gallery.Fill(30);
    const SCROLLINFO before = ScrollInfo(f.gallery);
    Validate(f.gallery);
    f.gallery.Relayout(RECT{0, 0, 276, 362});
    EXPECT_EQ(f.gallery.visibleRows, 3);
    EXPECT_EQ(f.gallery.partialRow, 1);
    EXPECT_EQ(f.gallery.columns, 1);
    EXPECT_TRUE(HasUpdateRegion(f.gallery));
    const SCROLLINFO after = ScrollInfo(f.gallery);
    EXPECT_EQ(after.nMax, before.nMax) << "the range waits for the next resize";
    EXPECT_EQ(after.nPage, before.nPage);
}

TEST(GalleryRelayout, TheWindowRectangleCountsBorderAndBar) {
    Fixture<> f(290, 358);
    f.gallery.Relayout(f.gallery.GetWindowRect());
    // 290 + edges + bar is wider than 2 cells but not 3; 358 + edges is more than 2 rows.
    EXPECT_EQ(f.gallery.columns, 2);
    EXPECT_EQ(f.gallery.visibleRows, 3);
    EXPECT_EQ(f.gallery.partialRow, 1);
}

TEST(GalleryCells, SetCellSizeDestroysAllItemsEvenForTheSameSize) {
    Fixture<> f;
    int destroyed = 0;
    for (int i = 0; i < 4; ++i)
        f.gallery.AddItem(std::make_unique<SolidItem>(ItemColour(i), kLargeCell, SIZE{10, 10}, &destroyed),
                          TRUE);
    Validate(f.gallery);
    f.gallery.SetCellSize(145, 179);
    EXPECT_EQ(destroyed, 4);
    EXPECT_EQ(f.gallery.GetItemCount(), 0);
    EXPECT_TRUE(HasUpdateRegion(f.gallery));
    EXPECT_EQ(f.gallery.columns, 3) << "columns wait for the next resize";
    f.gallery.SetCellSize(72, 90);
    EXPECT_EQ(f.gallery.GetCellSize().cx, 72);
    EXPECT_EQ(f.gallery.columns, 3);
}

TEST(GalleryCells, AddItemUpdatesTheRangeOnlyWhenAsked) {
    Fixture<> f(290, 358);
    f.gallery.Fill(10, kLargeCell, {10, 10}, FALSE);
    EXPECT_EQ(ScrollInfo(f.gallery).nMax, 0);
    EXPECT_EQ(f.gallery.totalRows, 0);
    f.gallery.UpdateScrollRange();
    EXPECT_EQ(ScrollInfo(f.gallery).nMax, 4);
    EXPECT_EQ(f.gallery.totalRows, 5);
    f.gallery.AddItem(nullptr, TRUE);
    EXPECT_EQ(f.gallery.GetItemCount(), 10) << "no empty cell is added";
}

TEST(GalleryCells, RemoveAllItemsLeavesTheStaleSelection) {
    Fixture<> f(290, 358);
    f.gallery.Fill(10);
    f.gallery.SetSelection(5);
    f.gallery.SetTopRow(2, FALSE);
    f.gallery.RemoveAllItems();
    EXPECT_EQ(f.gallery.GetItemCount(), 0);
    EXPECT_EQ(f.gallery.selectedIndex, 5);
    EXPECT_NE(f.gallery.selectedItem, nullptr) << "stale, and never read";
    EXPECT_EQ(f.gallery.currentIndex, 5);
    EXPECT_EQ(f.gallery.topRow, 2);
    EXPECT_EQ(f.gallery.GetTopRow(), 2);
    EXPECT_EQ(ScrollInfo(f.gallery).nMax, 4) << "the bar is not touched";
    // Painting, a press and a drag attempt in between must not read the stale item.
    Canvas canvas(290, 358);
    f.gallery.PaintInto(canvas.Dc());
    f.gallery.Fill(2);
    f.gallery.dragEnabled = TRUE;
    f.gallery.BeginDrag(10, 10);
    EXPECT_EQ(f.gallery.mouseState, 0) << "no item stands at the stale selection";
    f.gallery.MoveDrag(20, 20);
    f.gallery.SetSelection(1);
    EXPECT_EQ(f.gallery.selectedItem, f.gallery.GetItem(1));
}

// ---- The scroll range, row by row ------------------------------------------------------

struct RangeCase {
    int items;
    SIZE cell;
    int cx, cy;
    int columns, visibleRows, partialRow, totalRows, nMax, nPage, highest;
};

class GalleryScrollRangeRows : public ::testing::TestWithParam<RangeCase> {};

TEST_P(GalleryScrollRangeRows, OnTheRealBar) {
    const RangeCase& c = GetParam();
    Fixture<> f(500, 400, c.cell);
    f.gallery.SendSize(c.cx, c.cy);
    f.gallery.Fill(c.items, c.cell);
    EXPECT_EQ(f.gallery.columns, c.columns);
    EXPECT_EQ(f.gallery.visibleRows, c.visibleRows);
    EXPECT_EQ(f.gallery.partialRow, c.partialRow);
    EXPECT_EQ(f.gallery.totalRows, c.totalRows);
    const SCROLLINFO info = ScrollInfo(f.gallery);
    EXPECT_EQ(info.nMin, 0);
    EXPECT_EQ(info.nMax, c.nMax);
    // The platform cuts a page larger than the range to the range's size.
    EXPECT_EQ(static_cast<int>(info.nPage), std::min(c.nPage, c.nMax + 1));
    EXPECT_EQ(HighestBarPosition(f.gallery), c.highest);
    EXPECT_EQ(BarDisabled(f.gallery), c.highest == 0);
    EXPECT_TRUE(BarVisible(f.gallery));
    // The portable model of the bar agrees.
    gallery::ScrollBarModel model;
    model.SetRangeAndPage(gallery::GalleryScrollRange(c.totalRows, c.visibleRows, c.partialRow != 0), true);
    EXPECT_EQ(model.HighestPos(), c.highest);
    EXPECT_EQ(model.Page(), static_cast<int>(info.nPage));
    EXPECT_EQ(model.Disabled(), BarDisabled(f.gallery));
}

INSTANTIATE_TEST_SUITE_P(WorkedExamples, GalleryScrollRangeRows,
                         ::testing::Values(RangeCase{0, kLargeCell, 290, 358, 2, 2, 0, 0, 0, 2, 0},
                                           RangeCase{4, kLargeCell, 290, 358, 2, 2, 0, 2, 1, 2, 0},
                                           RangeCase{10, kLargeCell, 290, 358, 2, 2, 0, 5, 4, 2, 3},
                                           RangeCase{30, kLargeCell, 290, 537, 2, 3, 0, 15, 13, 3, 11},
                                           RangeCase{25, kSmallCell, 288, 358, 4, 4, 1, 7, 8, 5, 4},
                                           RangeCase{10, kSmallCell, 288, 358, 4, 4, 1, 3, 0, 5, 0}));

TEST(GalleryScrollRange, UpdatingTheRangeKeepsAValidPosition) {
    Fixture<> f(290, 358);
    f.gallery.Fill(10);
    f.gallery.SetTopRow(3, FALSE);
    f.gallery.Fill(10);
    EXPECT_EQ(f.gallery.GetTopRow(), 3) << "neither branch touches the position";
    f.gallery.RemoveAllItems();
    f.gallery.UpdateScrollRange();
    EXPECT_EQ(f.gallery.GetTopRow(), 0) << "but the platform clamps it to the new range";
    EXPECT_EQ(f.gallery.topRow, 3);
}

// ---- Two positions ------------------------------------------------------------------

TEST(GalleryTwoPositions, EnsureVisibleInTheLastPageGoesPastTheBar) {
    Fixture<> f(290, 537);
    f.gallery.Fill(30);
    f.gallery.EnsureVisible(29);
    EXPECT_EQ(f.gallery.topRow, 13);
    EXPECT_EQ(f.gallery.GetTopRow(), 11) << "the bar clamps";
    EXPECT_EQ(f.gallery.HitTest(10, 10), 22) << "hit testing reads the bar";
    EXPECT_TRUE(f.gallery.IsCellVisible(26)) << "visibility reads the first row";
    EXPECT_FALSE(f.gallery.IsCellVisible(22));
}

TEST(GalleryTwoPositions, AllRowsOnOnePageMakeTheFirstRowNegative) {
    Fixture<> f(290, 537);
    f.gallery.Fill(2);
    f.gallery.EnsureVisible(0);
    EXPECT_EQ(f.gallery.topRow, -1);
    EXPECT_EQ(f.gallery.GetTopRow(), 0);
    EXPECT_TRUE(f.gallery.IsCellVisible(0));
    EXPECT_EQ(f.gallery.HitTest(10, 10), 0);
}

TEST(GalleryTwoPositions, EnsureVisibleMayHideWhatIsOnScreen) {
    Fixture<> f(290, 358);
    f.gallery.Fill(4);
    f.gallery.EnsureVisible(0);
    EXPECT_EQ(f.gallery.topRow, 1);
    EXPECT_EQ(f.gallery.GetTopRow(), 0);
    EXPECT_FALSE(f.gallery.IsCellVisible(0)) << "row 0 is shown but the first row says 1";
}

TEST(GalleryTwoPositions, EnsureVisibleAcceptsTheCountAndRedraws) {
    Fixture<> f(290, 358);
    f.gallery.Fill(10);
    Validate(f.gallery);
    f.gallery.EnsureVisible(10);
    EXPECT_EQ(f.gallery.topRow, 4);
    EXPECT_EQ(f.gallery.GetTopRow(), 3);
    EXPECT_TRUE(HasUpdateRegion(f.gallery));
    Validate(f.gallery);
    f.gallery.topRow = 0;
    f.gallery.EnsureVisible(11);
    f.gallery.EnsureVisible(-1);
    EXPECT_EQ(f.gallery.topRow, 0);
    EXPECT_FALSE(HasUpdateRegion(f.gallery));
    EXPECT_FALSE(f.gallery.IsCellVisible(-1));
    EXPECT_FALSE(f.gallery.IsCellVisible(11));
}

TEST(GalleryTwoPositions, SetTopRow) {
    Fixture<> f(290, 358);
    f.gallery.Fill(10);
    Validate(f.gallery);
    EXPECT_EQ(f.gallery.SetTopRow(3, FALSE), 0);
    EXPECT_EQ(f.gallery.topRow, 3);
    EXPECT_EQ(f.gallery.GetTopRow(), 3);
    EXPECT_FALSE(HasUpdateRegion(f.gallery));
    EXPECT_EQ(f.gallery.SetTopRow(4, TRUE), 3) << "4 is within 0 .. nMax";
    EXPECT_EQ(f.gallery.topRow, 4);
    EXPECT_EQ(f.gallery.GetTopRow(), 3) << "the bar stops at its highest position";
    EXPECT_TRUE(HasUpdateRegion(f.gallery));
    EXPECT_EQ(f.gallery.SetTopRow(5, TRUE), -1);
    EXPECT_EQ(f.gallery.SetTopRow(-1, TRUE), -1);
    EXPECT_EQ(f.gallery.topRow, 4);
}

TEST(GalleryTwoPositions, InvalidateCellReadsTheBar) {
    Fixture<> f(290, 358);
    f.gallery.Fill(10);
    f.gallery.SetTopRow(2, FALSE);
    Validate(f.gallery);
    f.gallery.InvalidateCell(4);
    RECT update = {};
    ::GetUpdateRect(f.gallery.Handle(), &update, FALSE);
    EXPECT_EQ(update.left, 0);
    EXPECT_EQ(update.top, 0);
    EXPECT_EQ(update.right, 145);
    EXPECT_EQ(update.bottom, 179);
    Validate(f.gallery);
    f.gallery.InvalidateCell(1);
    EXPECT_FALSE(HasUpdateRegion(f.gallery)) << "a row above the bar is off the client area";
    f.gallery.InvalidateCell(-1);
    EXPECT_FALSE(HasUpdateRegion(f.gallery));
    f.gallery.InvalidateSelection();
    EXPECT_FALSE(HasUpdateRegion(f.gallery)) << "nothing is selected";
}

TEST(GalleryQuotients, ByColumnsAndByRows) {
    Fixture<> f(290, 358);
    f.gallery.Fill(10);
    EXPECT_EQ(f.gallery.QuotientByColumns(7), 3);
    EXPECT_EQ(f.gallery.QuotientByRows(7), 1);
    EXPECT_EQ(f.gallery.QuotientByRows(4), 0);
    f.gallery.RemoveAllItems();
    f.gallery.UpdateScrollRange();
    EXPECT_EQ(f.gallery.QuotientByRows(3), 0) << "no rows: no division";
}

// ---- Hit testing ---------------------------------------------------------------------

TEST(GalleryHitTesting, CellEdgesAndTheStrip) {
    Fixture<> f(500, 400);
    f.gallery.Fill(20);
    ASSERT_EQ(f.gallery.columns, 3);
    EXPECT_EQ(f.gallery.HitTest(0, 0), 0);
    EXPECT_EQ(f.gallery.HitTest(144, 178), 0);
    EXPECT_EQ(f.gallery.HitTest(145, 0), 1);
    EXPECT_EQ(f.gallery.HitTest(0, 179), 3);
    EXPECT_EQ(f.gallery.HitTest(434, 399), 8);
    EXPECT_EQ(f.gallery.HitTest(450, 10), 3) << "the strip hits the first cell of the next row";
    EXPECT_EQ(f.gallery.HitTest(499, 200), 6);
    EXPECT_EQ(f.gallery.HitTest(500, 10), -1);
    EXPECT_EQ(f.gallery.HitTest(10, 400), -1);
    EXPECT_EQ(f.gallery.HitTest(-1, 10), -1);
    f.gallery.SetTopRow(2, FALSE);
    EXPECT_EQ(f.gallery.HitTest(10, 10), 6);
    EXPECT_EQ(f.gallery.HitTest(450, 370), 15);
    f.gallery.SetTopRow(4, FALSE);
    EXPECT_EQ(f.gallery.HitTest(10, 10), 12);
    EXPECT_EQ(f.gallery.HitTest(145, 370), 19);
    EXPECT_EQ(f.gallery.HitTest(300, 370), -1) << "item 20 is past the end";
    EXPECT_EQ(f.gallery.HitTest(450, 370), -1);
}

TEST(GalleryHitTesting, EmptyGalleryHitsNothing) {
    Fixture<> f(500, 400);
    for (int y = 0; y < 400; y += 9)
        for (int x = 0; x < 500; x += 9) ASSERT_EQ(f.gallery.HitTest(x, y), -1);
}

// ---- Vertical scrolling -------------------------------------------------------------

namespace {
void Scroll(Gallery& gallery, int code, int pos = 0) {
    gallery.Send(WM_VSCROLL, MAKEWPARAM(code, pos), 0);
}
}  // namespace

TEST(GalleryVScroll, LinesAndPages) {
    Fixture<> f(290, 358);
    f.gallery.Fill(10);  // 5 rows, 2 on a page: last = 4, the bar stops at 3
    Scroll(f.gallery, SB_LINEDOWN);
    EXPECT_EQ(f.gallery.topRow, 1);
    EXPECT_EQ(f.gallery.GetTopRow(), 1);
    Scroll(f.gallery, SB_PAGEDOWN);
    EXPECT_EQ(f.gallery.topRow, 3);
    Scroll(f.gallery, SB_LINEDOWN);
    EXPECT_EQ(f.gallery.topRow, 4);
    EXPECT_EQ(f.gallery.GetTopRow(), 3);
    Scroll(f.gallery, SB_LINEDOWN);
    EXPECT_EQ(f.gallery.topRow, 4);
    Scroll(f.gallery, SB_PAGEUP);
    EXPECT_EQ(f.gallery.topRow, 2);
    EXPECT_EQ(f.gallery.GetTopRow(), 2);
    Scroll(f.gallery, SB_LINEUP);
    Scroll(f.gallery, SB_LINEUP);
    Scroll(f.gallery, SB_LINEUP);
    EXPECT_EQ(f.gallery.topRow, 0);
}

TEST(GalleryVScroll, PageDownAtTheEndRepaintsPageUpAtTheTopDoesNot) {
    Fixture<> f(290, 358);
    f.gallery.Fill(10);
    f.gallery.topRow = 4;
    f.gallery.SetScrollPos(SB_VERT, 4, false);
    Validate(f.gallery);
    Scroll(f.gallery, SB_PAGEDOWN);
    EXPECT_EQ(f.gallery.topRow, 4);
    EXPECT_TRUE(HasUpdateRegion(f.gallery));
    f.gallery.SetTopRow(0, FALSE);
    Validate(f.gallery);
    Scroll(f.gallery, SB_PAGEUP);
    EXPECT_FALSE(HasUpdateRegion(f.gallery));
    Scroll(f.gallery, SB_LINEUP);
    EXPECT_FALSE(HasUpdateRegion(f.gallery));
}

TEST(GalleryVScroll, ThumbWithinTheRows) {
    Fixture<> f(290, 358);
    f.gallery.Fill(10);
    Scroll(f.gallery, SB_THUMBTRACK, 3);
    EXPECT_EQ(f.gallery.topRow, 3);
    Scroll(f.gallery, SB_THUMBPOSITION, 5);
    EXPECT_EQ(f.gallery.topRow, 3) << "5 is past the last row 4";
    Scroll(f.gallery, SB_THUMBPOSITION, 4);
    EXPECT_EQ(f.gallery.topRow, 4);
    EXPECT_EQ(f.gallery.GetTopRow(), 3);
}

TEST(GalleryVScroll, OtherCodesOnlySetTheArrowCursor) {
    Fixture<> f(290, 358);
    f.gallery.Fill(10);
    ::SetCursor(::LoadCursor(nullptr, IDC_CROSS));
    Validate(f.gallery);
    Scroll(f.gallery, SB_ENDSCROLL);
    Scroll(f.gallery, SB_BOTTOM);
    EXPECT_EQ(f.gallery.topRow, 0);
    EXPECT_FALSE(HasUpdateRegion(f.gallery));
    EXPECT_EQ(::GetCursor(), ::LoadCursor(nullptr, IDC_ARROW));
}

TEST(GalleryVScroll, RepaintSequenceErasesAndPaints) {
    Fixture<> f(290, 358);
    f.gallery.Fill(10);
    ::UpdateWindow(f.host.Handle());
    ::UpdateWindow(f.gallery.Handle());
    MessageSequence sequence;
    f.gallery.sequence = &sequence;
    Scroll(f.gallery, SB_LINEDOWN);
    ::UpdateWindow(f.gallery.Handle());
    f.gallery.sequence = nullptr;
    const auto relevant = sequence.Filtered([](const testsupport::MessageRecord& r) {
        return r.message == WM_VSCROLL || r.message == WM_PAINT || r.message == WM_ERASEBKGND;
    });
    EXPECT_TRUE(relevant.Matches({
        {WM_VSCROLL, ExpectedMessage::kWParam, SB_LINEDOWN},
        {WM_PAINT},
        {WM_ERASEBKGND},
    }));
}
