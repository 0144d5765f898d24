// The gallery's arithmetic, natively and under Wine alike.
#include "gallery/GalleryGrid.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

using namespace gallery;

namespace {

constexpr GridExtent kLarge{145, 179};
constexpr GridExtent kSmall{72, 90};
constexpr GridExtent kPreviewSmall{77, 108};

GridFit Resized(GridExtent cell, int32_t cx, int32_t cy) {
    GridFit fit;
    EXPECT_TRUE(FitGridToWindowSize(&fit, cell, cx, cy));
    return fit;
}

}  // namespace

// ---- Columns and rows on a resize -------------------------------------------

TEST(GalleryGridResize, HeightOf362CountsAsTwoWholeRows) {
    const GridFit fit = Resized(kLarge, 500, 362);
    EXPECT_EQ(fit.visibleRows, 2);
    EXPECT_FALSE(fit.partialRow);
}

TEST(GalleryGridResize, HeightOf361GivesThreeRowsWithAPartialOne) {
    const GridFit fit = Resized(kLarge, 500, 361);
    EXPECT_EQ(fit.visibleRows, 3);
    EXPECT_TRUE(fit.partialRow);
}

TEST(GalleryGridResize, HeightOf363IsNotSubstituted) {
    const GridFit fit = Resized(kLarge, 500, 363);
    EXPECT_EQ(fit.visibleRows, 3);
    EXPECT_TRUE(fit.partialRow);
}

TEST(GalleryGridResize, WidthOf276CountsAsTwoColumns) {
    EXPECT_EQ(Resized(kLarge, 276, 500).columns, 2);
}

TEST(GalleryGridResize, WidthOf275GivesOneColumn) {
    EXPECT_EQ(Resized(kLarge, 275, 500).columns, 1);
}

TEST(GalleryGridResize, WidthOf277IsNotSubstituted) {
    EXPECT_EQ(Resized(kLarge, 277, 500).columns, 1);
}

TEST(GalleryGridResize, ThePreferredSizeWithEachCellSize) {
    GridFit fit = Resized(kLarge, 276, 362);
    EXPECT_EQ(fit.columns, 2);
    EXPECT_EQ(fit.visibleRows, 2);
    EXPECT_FALSE(fit.partialRow);
    fit = Resized(kSmall, 276, 362);
    EXPECT_EQ(fit.columns, 4);
    EXPECT_EQ(fit.visibleRows, 4);
    EXPECT_TRUE(fit.partialRow);
    fit = Resized(kPreviewSmall, 276, 362);
    EXPECT_EQ(fit.columns, 3);
    EXPECT_EQ(fit.visibleRows, 4);
    EXPECT_TRUE(fit.partialRow);
}

TEST(GalleryGridResize, ExactMultipleHasNoPartialRow) {
    const GridFit fit = Resized(kLarge, 435, 537);
    EXPECT_EQ(fit.columns, 3);
    EXPECT_EQ(fit.visibleRows, 3);
    EXPECT_FALSE(fit.partialRow);
}

TEST(GalleryGridResize, ZeroByZeroCellLeavesEverythingAsItWas) {
    GridFit fit{7, 5, true};
    EXPECT_FALSE(FitGridToWindowSize(&fit, GridExtent{0, 0}, 300, 400));
    EXPECT_EQ(fit.visibleRows, 7);
    EXPECT_EQ(fit.columns, 5);
    EXPECT_TRUE(fit.partialRow);
}

TEST(GalleryGridResize, ASingleZeroSideKeepsItsQuotient) {
    GridFit fit{7, 5, true};
    EXPECT_TRUE(FitGridToWindowSize(&fit, GridExtent{0, 100}, 300, 400));
    EXPECT_EQ(fit.columns, 5) << "no division by a zero width";
    EXPECT_EQ(fit.visibleRows, 4);
    EXPECT_FALSE(fit.partialRow);
    EXPECT_TRUE(FitGridToWindowSize(&fit, GridExtent{100, 0}, 300, 400));
    EXPECT_EQ(fit.columns, 3);
    EXPECT_EQ(fit.visibleRows, 4) << "no division by a zero height";
}

TEST(GalleryGridResize, NarrowerThanACellGivesNoColumns) {
    EXPECT_EQ(Resized(kLarge, 144, 500).columns, 0);
}

TEST(GalleryGridRelayout, MakesNoSubstitution) {
    GridFit fit;
    ASSERT_TRUE(FitGridToSize(&fit, kLarge, 276, 362));
    EXPECT_EQ(fit.visibleRows, 3);
    EXPECT_TRUE(fit.partialRow);
    EXPECT_EQ(fit.columns, 1);
}

TEST(GalleryGridRelayout, HugeRectanglesDoNotOverflow) {
    GridFit fit;
    ASSERT_TRUE(FitGridToSize(&fit, GridExtent{1, 1}, int64_t{1} << 40, int64_t{1} << 40));
    EXPECT_EQ(fit.columns, INT32_MAX);
    EXPECT_EQ(fit.visibleRows, INT32_MAX);
    ASSERT_TRUE(FitGridToSize(&fit, GridExtent{-1, -1}, INT64_MIN, INT64_MIN));
    EXPECT_EQ(fit.columns, INT32_MAX);
}

// ---- Scroll range: the worked table, row by row ----------------------------

struct RangeRow {
    int items, columns, visibleRows;
    bool partial;
    int totalRows, nMax;
    unsigned nPage;
    int highest;
};

class GalleryScrollRangeTable : public ::testing::TestWithParam<RangeRow> {};

TEST_P(GalleryScrollRangeTable, Row) {
    const RangeRow& row = GetParam();
    const int32_t totalRows = TotalRowsFor(row.items, row.columns);
    EXPECT_EQ(totalRows, row.totalRows);
    const ScrollRange range = GalleryScrollRange(totalRows, row.visibleRows, row.partial);
    EXPECT_EQ(range.nMin, 0);
    EXPECT_EQ(range.nMax, row.nMax);
    EXPECT_EQ(range.nPage, row.nPage);
    EXPECT_EQ(HighestScrollPos(range), row.highest);
}

INSTANTIATE_TEST_SUITE_P(
    WorkedExamples, GalleryScrollRangeTable,
    ::testing::Values(RangeRow{0, 2, 2, false, 0, 0, 2, 0}, RangeRow{4, 2, 2, false, 2, 1, 2, 0},
                      RangeRow{10, 2, 2, false, 5, 4, 2, 3}, RangeRow{30, 2, 3, false, 15, 13, 3, 11},
                      RangeRow{25, 4, 4, true, 7, 8, 5, 4}, RangeRow{10, 4, 4, true, 3, 0, 5, 0}));

TEST(GalleryScrollRange, ThirtyItemsStopShortOfTheLastRows) {
    // 15 rows, 3 on a page: the last page starts at row 12, the bar stops at 11.
    const ScrollRange range = GalleryScrollRange(TotalRowsFor(30, 2), 3, false);
    EXPECT_EQ(HighestScrollPos(range), 11);
    EXPECT_LT(HighestScrollPos(range), 15 - 3);
}

TEST(GalleryScrollRange, NoColumnsFillNoRows) {
    EXPECT_EQ(TotalRowsFor(10, 0), 0);
    EXPECT_EQ(TotalRowsFor(0, 3), 0);
    EXPECT_EQ(TotalRowsFor(7, 3), 3);
    EXPECT_EQ(TotalRowsFor(int64_t{1} << 40, 1), INT32_MAX);
}

// ---- The platform's scroll bar -----------------------------------------------

TEST(GalleryScrollBarModel, ClampsThePositionToTheRangeLessThePage) {
    ScrollBarModel bar;
    bar.SetRangeAndPage(ScrollRange{0, 13, 3}, true);
    EXPECT_FALSE(bar.Disabled());
    EXPECT_EQ(bar.SetPos(12), 0);
    EXPECT_EQ(bar.Pos(), 11);
    EXPECT_EQ(bar.SetPos(-5), 11);
    EXPECT_EQ(bar.Pos(), 0);
}

TEST(GalleryScrollBarModel, ANewRangeClampsThePosition) {
    ScrollBarModel bar;
    bar.SetRangeAndPage(ScrollRange{0, 8, 5}, true);
    bar.SetPos(4);
    bar.SetRangeAndPage(ScrollRange{0, 0, 5}, true);
    EXPECT_EQ(bar.Pos(), 0);
    EXPECT_EQ(bar.Page(), 1) << "the page is cut to the range's size";
    EXPECT_TRUE(bar.Disabled());
}

TEST(GalleryScrollBarModel, NothingToScrollDisablesTheBar) {
    ScrollBarModel bar;
    bar.SetRangeAndPage(ScrollRange{0, 1, 2}, true);
    EXPECT_TRUE(bar.Disabled());
    bar.SetRangeAndPage(ScrollRange{0, 4, 2}, true);
    EXPECT_FALSE(bar.Disabled());
    EXPECT_EQ(bar.HighestPos(), 3);
}

TEST(GalleryScrollBarModel, AReversedRangeBecomesZero) {
    ScrollBarModel bar;
    bar.SetRangeAndPage(ScrollRange{5, 2, 1}, false);
    EXPECT_EQ(bar.Min(), 0);
    EXPECT_EQ(bar.Max(), 0);
}

TEST(GalleryScrollBarModel, AZeroPageScrollsToTheMaximum) {
    ScrollBarModel bar;
    bar.SetRangeAndPage(ScrollRange{0, 10, 0}, false);
    bar.SetPos(50);
    EXPECT_EQ(bar.Pos(), 10);
}

// ---- Hit testing ---------------------------------------------------------------

TEST(GalleryHitTest, CellEdges) {
    // 3 columns of large cells in a client 500 x 400, 20 items, bar at 0.
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 20, 500, 400, 0, 0), 0);
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 20, 500, 400, 144, 178), 0);
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 20, 500, 400, 145, 178), 1);
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 20, 500, 400, 144, 179), 3);
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 20, 500, 400, 434, 0), 2);
}

TEST(GalleryHitTest, TheStripRightOfTheLastColumnHitsTheNextRow) {
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 20, 500, 400, 450, 10), 3);
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 20, 500, 400, 435, 10), 3);
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 20, 500, 400, 450, 200), 6);
}

TEST(GalleryHitTest, AddsTheBarsRows) {
    EXPECT_EQ(HitTestCell(kLarge, 3, 2, 20, 500, 400, 10, 10), 6);
    EXPECT_EQ(HitTestCell(kLarge, 3, 2, 20, 500, 400, 300, 200), 11);
}

TEST(GalleryHitTest, OutsideTheClientAreaOrPastTheEndIsNothing) {
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 20, 500, 400, 500, 10), -1);
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 20, 500, 400, 10, 400), -1);
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 20, 500, 400, -1, 10), -1);
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 4, 500, 400, 300, 10), 2);
    EXPECT_EQ(HitTestCell(kLarge, 3, 0, 4, 500, 400, 160, 200), -1);
}

TEST(GalleryHitTest, EmptyGalleryHitsNothingAnywhere) {
    for (int y = 0; y < 400; y += 7)
        for (int x = 0; x < 500; x += 7) ASSERT_EQ(HitTestCell(kLarge, 3, 0, 0, 500, 400, x, y), -1);
}

TEST(GalleryHitTest, ZeroCellSidesHitNothing) {
    EXPECT_EQ(HitTestCell(GridExtent{0, 0}, 3, 0, 20, 500, 400, 10, 10), -1);
    EXPECT_EQ(HitTestCell(GridExtent{0, 179}, 3, 0, 20, 500, 400, 10, 10), -1);
    EXPECT_EQ(HitTestCell(GridExtent{145, 0}, 3, 0, 20, 500, 400, 10, 10), -1);
}

TEST(GalleryHitTest, NoColumnsStillGivesTheUnclampedColumn) {
    EXPECT_EQ(HitTestCell(kLarge, 0, 0, 20, 100, 400, 50, 300), 0);
}

// ---- Cell rectangles -------------------------------------------------------------

TEST(GalleryCellRectangle, FollowsTheBar) {
    GridRect rect;
    ASSERT_TRUE(CellRectangle(kLarge, 3, 0, 4, &rect));
    EXPECT_EQ(rect.left, 145);
    EXPECT_EQ(rect.top, 179);
    EXPECT_EQ(rect.right, 290);
    EXPECT_EQ(rect.bottom, 358);
    ASSERT_TRUE(CellRectangle(kLarge, 3, 2, 4, &rect));
    EXPECT_EQ(rect.top, -179) << "above the client area when scrolled past";
}

TEST(GalleryCellRectangle, NoColumnsNoRectangle) {
    GridRect rect{1, 2, 3, 4};
    EXPECT_FALSE(CellRectangle(kLarge, 0, 0, 4, &rect));
    EXPECT_EQ(rect.left, 1);
    EXPECT_FALSE(CellRectangle(kLarge, 3, 0, -1, &rect));
}

TEST(GalleryCellRectangle, ZeroCellIsEmpty) {
    GridRect rect;
    ASSERT_TRUE(CellRectangle(GridExtent{0, 0}, 3, 0, 4, &rect));
    EXPECT_EQ(rect.left, rect.right);
    EXPECT_EQ(rect.top, rect.bottom);
}

TEST(GalleryCellRectangle, DrawRectangleStopsOnePixelShort) {
    GridRect rect;
    ASSERT_TRUE(CellDrawRectangle(kLarge, 3, 1, 2, &rect));
    EXPECT_EQ(rect.left, 290);
    EXPECT_EQ(rect.top, 179);
    EXPECT_EQ(rect.right, 434);
    EXPECT_EQ(rect.bottom, 357);
}

TEST(GalleryCellRectangle, HugeIndexesClamp) {
    GridRect rect;
    ASSERT_TRUE(CellRectangle(GridExtent{INT32_MAX, INT32_MAX}, 1, INT32_MIN, INT32_MAX, &rect));
    EXPECT_EQ(rect.top, INT32_MAX);
    EXPECT_EQ(rect.bottom, INT32_MAX);
}

// ---- EnsureVisible and IsCellVisible -------------------------------------------

TEST(GalleryEnsureVisible, ATargetBeforeTheLastPageBecomesTheFirstRow) {
    int32_t top = 99;
    ASSERT_TRUE(EnsureVisibleTopRow(6, 30, 2, 15, 3, &top));
    EXPECT_EQ(top, 3);
}

TEST(GalleryEnsureVisible, TheLastPageGoesOneRowFurther) {
    int32_t top = 0;
    ASSERT_TRUE(EnsureVisibleTopRow(25, 30, 2, 15, 3, &top));
    EXPECT_EQ(top, 13);
    ASSERT_TRUE(EnsureVisibleTopRow(24, 30, 2, 15, 3, &top));
    EXPECT_EQ(top, 13) << "row 12 is the plain last page";
}

TEST(GalleryEnsureVisible, AllRowsOnOnePageMayGoNegative) {
    int32_t top = 0;
    ASSERT_TRUE(EnsureVisibleTopRow(0, 2, 2, 1, 3, &top));
    EXPECT_EQ(top, -1);
    ASSERT_TRUE(EnsureVisibleTopRow(0, 4, 2, 2, 2, &top));
    EXPECT_EQ(top, 1);
}

TEST(GalleryEnsureVisible, TheCountItselfIsAccepted) {
    int32_t top = 0;
    EXPECT_TRUE(EnsureVisibleTopRow(30, 30, 2, 15, 3, &top));
    top = 42;
    EXPECT_FALSE(EnsureVisibleTopRow(31, 30, 2, 15, 3, &top));
    EXPECT_FALSE(EnsureVisibleTopRow(-1, 30, 2, 15, 3, &top));
    EXPECT_FALSE(EnsureVisibleTopRow(3, 30, 0, 15, 3, &top));
    EXPECT_EQ(top, 42);
}

TEST(GalleryIsCellVisible, ReadsTheFirstRowAndCountsAPartialRow) {
    EXPECT_TRUE(IsCellVisibleAt(0, 10, 2, 0, 3));
    EXPECT_TRUE(IsCellVisibleAt(5, 10, 2, 0, 3));
    EXPECT_FALSE(IsCellVisibleAt(6, 10, 2, 0, 3));
    EXPECT_FALSE(IsCellVisibleAt(1, 10, 2, 1, 3));
    EXPECT_TRUE(IsCellVisibleAt(10, 10, 2, 3, 3)) << "the count is accepted";
}

TEST(GalleryIsCellVisible, OutsideTheItemsOrWithoutColumnsIsNot) {
    EXPECT_FALSE(IsCellVisibleAt(-1, 10, 2, 0, 3));
    EXPECT_FALSE(IsCellVisibleAt(11, 10, 2, 0, 3));
    EXPECT_FALSE(IsCellVisibleAt(0, 10, 0, 0, 3));
}

// ---- Vertical scroll messages ---------------------------------------------------

TEST(GalleryVerticalScroll, LineUpStopsAtZero) {
    VerticalScroll s = ApplyVerticalScroll(kScrollLineUp, 0, 2, 15, 3);
    EXPECT_EQ(s.topRow, 1);
    EXPECT_TRUE(s.setBar);
    EXPECT_TRUE(s.redraw);
    s = ApplyVerticalScroll(kScrollLineUp, 0, 0, 15, 3);
    EXPECT_EQ(s.topRow, 0);
    EXPECT_FALSE(s.setBar);
    EXPECT_FALSE(s.redraw);
}

TEST(GalleryVerticalScroll, LineDownStopsAtTheLastRow) {
    // last = 15 - 3 + 1 = 13
    VerticalScroll s = ApplyVerticalScroll(kScrollLineDown, 0, 12, 15, 3);
    EXPECT_EQ(s.topRow, 13);
    EXPECT_TRUE(s.redraw);
    s = ApplyVerticalScroll(kScrollLineDown, 0, 13, 15, 3);
    EXPECT_EQ(s.topRow, 13);
    EXPECT_FALSE(s.setBar);
    EXPECT_FALSE(s.redraw);
}

TEST(GalleryVerticalScroll, PageUpAtTheTopDoesNotRepaint) {
    VerticalScroll s = ApplyVerticalScroll(kScrollPageUp, 0, 0, 15, 3);
    EXPECT_FALSE(s.redraw);
    EXPECT_FALSE(s.setBar);
    s = ApplyVerticalScroll(kScrollPageUp, 0, 2, 15, 3);
    EXPECT_EQ(s.topRow, 0);
    EXPECT_TRUE(s.redraw);
    s = ApplyVerticalScroll(kScrollPageUp, 0, 7, 15, 3);
    EXPECT_EQ(s.topRow, 4);
}

TEST(GalleryVerticalScroll, PageDownAtTheEndRepaintsThoughNothingMoved) {
    VerticalScroll s = ApplyVerticalScroll(kScrollPageDown, 0, 13, 15, 3);
    EXPECT_EQ(s.topRow, 13);
    EXPECT_TRUE(s.setBar);
    EXPECT_TRUE(s.redraw);
    s = ApplyVerticalScroll(kScrollPageDown, 0, 11, 15, 3);
    EXPECT_EQ(s.topRow, 13) << "capped at the last row";
    s = ApplyVerticalScroll(kScrollPageDown, 0, 1, 15, 3);
    EXPECT_EQ(s.topRow, 4);
}

TEST(GalleryVerticalScroll, PageDownWithAllRowsOnOnePageGoesBack) {
    // 1 row, 3 on a page: last = -1; the first row is capped to it.
    const VerticalScroll s = ApplyVerticalScroll(kScrollPageDown, 0, 0, 1, 3);
    EXPECT_EQ(s.topRow, -1);
    EXPECT_TRUE(s.redraw);
}

TEST(GalleryVerticalScroll, ThumbMovesOnlyWithinTheRows) {
    VerticalScroll s = ApplyVerticalScroll(kScrollThumbTrack, 9, 0, 15, 3);
    EXPECT_EQ(s.topRow, 9);
    EXPECT_TRUE(s.redraw);
    s = ApplyVerticalScroll(kScrollThumbPosition, 13, 0, 15, 3);
    EXPECT_EQ(s.topRow, 13);
    s = ApplyVerticalScroll(kScrollThumbPosition, 14, 5, 15, 3);
    EXPECT_EQ(s.topRow, 5);
    EXPECT_FALSE(s.redraw);
    s = ApplyVerticalScroll(kScrollThumbTrack, 2, 5, 1, 3);
    EXPECT_FALSE(s.redraw) << "past the rows when all fit";
}

TEST(GalleryVerticalScroll, OtherCodesDoNothing) {
    for (int code : {6, 7, 8, 99, -1}) {
        const VerticalScroll s = ApplyVerticalScroll(code, 3, 4, 15, 3);
        EXPECT_EQ(s.topRow, 4);
        EXPECT_FALSE(s.setBar);
        EXPECT_FALSE(s.redraw);
    }
}

TEST(GalleryVerticalScroll, ExtremeValuesDoNotOverflow) {
    const VerticalScroll down = ApplyVerticalScroll(kScrollPageDown, 0, INT32_MAX, INT32_MAX, INT32_MIN);
    EXPECT_EQ(down.topRow, -1) << "a negative page moves up, capped at the last row";
    const VerticalScroll up = ApplyVerticalScroll(kScrollPageUp, 0, INT32_MIN, 0, INT32_MAX);
    EXPECT_EQ(up.topRow, 0);
    const VerticalScroll line = ApplyVerticalScroll(kScrollLineDown, 0, INT32_MAX, INT32_MAX, INT32_MIN);
    EXPECT_TRUE(line.redraw);
    EXPECT_EQ(line.topRow, INT32_MAX);
}

// ---- The wheel ------------------------------------------------------------------

TEST(GalleryWheel, ThreeLinesANotch) {
    WheelSteps s = WheelScrollSteps(0, 120, 3);
    EXPECT_FALSE(s.ignored);
    EXPECT_EQ(s.code, kScrollLineUp);
    EXPECT_EQ(s.count, 3);
    s = WheelScrollSteps(0, -240, 3);
    EXPECT_EQ(s.code, kScrollLineDown);
    EXPECT_EQ(s.count, 6);
}

TEST(GalleryWheel, APartialStepIsLost) {
    EXPECT_EQ(WheelScrollSteps(0, 30, 3).count, 0);
    EXPECT_EQ(WheelScrollSteps(0, 30, 1).count, 0);
    EXPECT_EQ(WheelScrollSteps(0, 80, 3).count, 2);
}

TEST(GalleryWheel, PageMode) {
    WheelSteps s = WheelScrollSteps(0, -120, kWheelPageMode);
    EXPECT_EQ(s.code, kScrollPageDown);
    EXPECT_EQ(s.count, 1);
    s = WheelScrollSteps(0, 360, kWheelPageMode);
    EXPECT_EQ(s.code, kScrollPageUp);
    EXPECT_EQ(s.count, 3);
    EXPECT_EQ(WheelScrollSteps(0, 119, kWheelPageMode).count, 0);
}

TEST(GalleryWheel, ShiftOrControlStopsIt) {
    EXPECT_TRUE(WheelScrollSteps(kWheelShift, 120, 3).ignored);
    EXPECT_TRUE(WheelScrollSteps(kWheelControl, 120, 3).ignored);
    EXPECT_EQ(WheelScrollSteps(kWheelControl, 120, 3).count, 0);
    EXPECT_FALSE(WheelScrollSteps(0x1 | 0x2 | 0x10, 120, 3).ignored) << "mouse buttons do not";
}

TEST(GalleryWheel, LargeSettingsDoNotOverflow) {
    const WheelSteps s = WheelScrollSteps(0, -32768, INT32_MAX);
    EXPECT_EQ(s.code, kScrollLineDown);
    EXPECT_EQ(s.count, int64_t{32768} * INT32_MAX / 120);
}

TEST(GalleryWheel, SettingTextReadsAsStrtoulDoes) {
    EXPECT_EQ(ParseWheelScrollLines("3"), 3u);
    EXPECT_EQ(ParseWheelScrollLines("-1"), 0xFFFFFFFFu);
    EXPECT_EQ(static_cast<int32_t>(ParseWheelScrollLines("-1")), kWheelPageMode);
    EXPECT_EQ(ParseWheelScrollLines("  12abc"), 12u);
    EXPECT_EQ(ParseWheelScrollLines("+7"), 7u);
    EXPECT_EQ(ParseWheelScrollLines("abc"), 0u);
    EXPECT_EQ(ParseWheelScrollLines(""), 0u);
    EXPECT_EQ(ParseWheelScrollLines(nullptr), 0u);
    EXPECT_EQ(ParseWheelScrollLines("4294967295"), 0xFFFFFFFFu);
    EXPECT_EQ(ParseWheelScrollLines("99999999999"), 0xFFFFFFFFu);
    EXPECT_EQ(ParseWheelScrollLines("-2"), 0xFFFFFFFEu);
    EXPECT_EQ(ParseWheelScrollLines("-4294967295"), 1u);
    EXPECT_EQ(ParseWheelScrollLines("-4294967296"), 0xFFFFFFFFu) << "too large, whatever the sign";
    EXPECT_EQ(ParseWheelScrollLines("0x10"), 0u);
}

// ---- Window size and quotients ----------------------------------------------------

TEST(GalleryWindowSize, CellsPlusEdgesAndTheBar) {
    const GridExtent size = WindowSizeForGrid(kLarge, 2, 3, 2, 2, 16);
    EXPECT_EQ(size.cx, 3 * 145 + 4 + 16);
    EXPECT_EQ(size.cy, 2 * 179 + 4);
}

TEST(GalleryQuotients, TruncateAndGuardZero) {
    EXPECT_EQ(QuotientBy(7, 3), 2);
    EXPECT_EQ(QuotientBy(6, 3), 2);
    EXPECT_EQ(QuotientBy(-1, 3), 0);
    EXPECT_EQ(QuotientBy(7, 0), 0);
    EXPECT_EQ(QuotientBy(INT64_MIN, -1), INT32_MAX);
}

// ---- Painting arithmetic -------------------------------------------------------------

TEST(GalleryPaintSizes, BandAndFontChangeAtAHundredPixels) {
    EXPECT_EQ(CaptionBandHeight(99), 24);
    EXPECT_EQ(CaptionBandHeight(100), 30);
    EXPECT_EQ(CaptionFontHeight(99), -9);
    EXPECT_EQ(CaptionFontHeight(100), -11);
    EXPECT_EQ(CaptionBandHeight(72), 24);
    EXPECT_EQ(CaptionBandHeight(145), 30);
}

TEST(GalleryPictureRectangle, CentredAboveTheCaptionThenThreeDown) {
    const GridRect cell{145, 179, 289, 357};
    const GridRect picture = PictureRectangle(cell, kLarge, 50, 40);
    EXPECT_EQ(picture.left, 145 + 47);
    EXPECT_EQ(picture.top, 179 + 57 + 3);
    EXPECT_EQ(picture.right - picture.left, 50);
    EXPECT_EQ(picture.bottom - picture.top, 40);
}

TEST(GalleryPictureRectangle, TheSameTwentyFiveForSmallCells) {
    const GridRect picture = PictureRectangle(GridRect{0, 0, 71, 89}, kSmall, 60, 45);
    EXPECT_EQ(picture.left, 6);
    EXPECT_EQ(picture.top, 10 + 3);
}

TEST(GalleryPictureRectangle, ATallPictureGetsANegativeTop) {
    const GridRect picture = PictureRectangle(GridRect{0, 0, 144, 178}, kLarge, 100, 170);
    EXPECT_EQ(picture.top, (179 - 25 - 170) / 2 + 3);
    EXPECT_LT(picture.top, 0);
}

TEST(GalleryDragRectangles, StartCentresThePictureMovesCentreTheCell) {
    const GridRect start = DragStartRectangle(500, 400, GridExtent{100, 80});
    EXPECT_EQ(start.left, 450);
    EXPECT_EQ(start.top, 360);
    EXPECT_EQ(start.right, 550);
    EXPECT_EQ(start.bottom, 440);
    const GridRect moved = DragMoveRectangle(500, 400, kLarge, GridExtent{100, 80});
    EXPECT_EQ(moved.left, 500 - 72);
    EXPECT_EQ(moved.top, 400 - 89);
    EXPECT_EQ(moved.right - moved.left, 100) << "of the picture's size";
    EXPECT_EQ(moved.bottom - moved.top, 80);
}

TEST(GalleryDragRectangles, UnionLikeThePlatform) {
    const GridRect u = UnionOf(GridRect{0, 0, 10, 10}, GridRect{5, -5, 20, 8});
    EXPECT_EQ(u.left, 0);
    EXPECT_EQ(u.top, -5);
    EXPECT_EQ(u.right, 20);
    EXPECT_EQ(u.bottom, 10);
    const GridRect one = UnionOf(GridRect{3, 3, 3, 9}, GridRect{5, 5, 6, 6});
    EXPECT_EQ(one.left, 5);
    EXPECT_EQ(one.right, 6);
    const GridRect none = UnionOf(GridRect{3, 3, 3, 9}, GridRect{});
    EXPECT_EQ(none.right, 0);
}
