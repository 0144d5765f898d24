// The arithmetic of the thumbnail gallery: how many rows and columns a window
// holds, the vertical scroll bar's range, which cell a point falls in, where
// a cell lies, how the scroll messages and the wheel move the first row, and
// where the parts of a cell are painted. Portable: no Windows header, so that
// every rule is tested natively as well as in the window.
//
// Several results look odd and are meant as they are:
//   - a resize to exactly 362 pixels of height counts as 358, and exactly
//     276 of width as 290, so that a 276 x 362 gallery holds 2 x 2 large
//     cells with the right column cut off and no partial row;
//   - a point in the strip right of the last whole column hits the first
//     cell of the next row: the column is not clamped;
//   - the scroll range keeps the bar short of the last rows when there is no
//     partial row and the page has more than two rows;
//   - EnsureVisible may put the first row above the bar's range, even below
//     zero; the bar's own clamping repairs what is shown.
// Where the window would divide by zero (no columns, a zero side of a cell)
// these functions give a harmless answer instead, as each one tells.
//
// Intermediate arithmetic is 64-bit and results are clamped to 32 bits, so
// that no size, count or position, however large, overflows.
#pragma once

#include <cstdint>

namespace gallery {

// A cell's width and height in pixels, or any other pair of extents.
struct GridExtent {
    int32_t cx = 0;
    int32_t cy = 0;
};

struct GridRect {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;
};

// The page in cells: rows shown (a partly visible one included), whole
// columns, and whether the last row on the page is only partly visible.
struct GridFit {
    int32_t visibleRows = 1;
    int32_t columns = 1;
    bool partialRow = false;
};

// The sizes that a resize reports in place of others; see above.
inline constexpr int32_t kSubstitutedHeight = 362;
inline constexpr int32_t kSubstituteHeight = 358;
inline constexpr int32_t kSubstitutedWidth = 276;
inline constexpr int32_t kSubstituteWidth = 290;

// The window's resize: `cx`, `cy` as the size message reports them, with the
// two substitutions. False, and `fit` untouched, when both sides of the cell
// are 0. A single zero side leaves the quotient by that side as it was.
bool FitGridToWindowSize(GridFit* fit, GridExtent cell, int32_t cx, int32_t cy);

// The same from a rectangle's size, without substitutions: what Relayout does
// with the window rectangle that it is handed.
bool FitGridToSize(GridFit* fit, GridExtent cell, int64_t width, int64_t height);

// Rows that `count` items fill: 0 for none, else count / columns rounded up.
// With no columns (a window narrower than one cell) nothing can be shown and
// the answer is 0.
int32_t TotalRowsFor(int64_t count, int32_t columns);

// What the gallery gives its vertical scroll bar. nMin is always 0.
struct ScrollRange {
    int32_t nMin = 0;
    int32_t nMax = 0;
    uint32_t nPage = 0;
};

ScrollRange GalleryScrollRange(int32_t totalRows, int32_t visibleRows, bool partialRow);

// How the platform keeps a scroll bar's values, for builds and tests without
// it: a reversed or too wide range becomes 0 to 0, the page is clamped to
// the range's size, and a position is clamped to nMin .. nMax - nPage + 1
// (never below nMin). A range that leaves nothing to scroll disables the bar
// when the caller asks for that.
class ScrollBarModel {
public:
    // SetScrollInfo with range and page, and with the "disable, don't hide"
    // request; the position is clamped to the new range.
    void SetRangeAndPage(const ScrollRange& range, bool disableNoScroll);
    // SetScrollPos: returns the previous position.
    int32_t SetPos(int32_t pos);

    int32_t Pos() const { return pos_; }
    int32_t Min() const { return min_; }
    int32_t Max() const { return max_; }
    int32_t Page() const { return page_; }
    bool Disabled() const { return disabled_; }
    // The highest position the bar accepts.
    int32_t HighestPos() const;

private:
    void ClampPos();

    int32_t min_ = 0;
    int32_t max_ = 0;
    int32_t page_ = 0;
    int32_t pos_ = 0;
    bool disabled_ = false;
};

// The highest position of a bar with `range`, as the platform computes it.
int32_t HighestScrollPos(const ScrollRange& range);

// The item under client point (x, y), or -1: outside the client area, with a
// zero side of the cell, or past the last item. The column is not clamped.
int32_t HitTestCell(GridExtent cell, int32_t columns, int32_t scrollPos, int64_t count, int32_t clientWidth,
                    int32_t clientHeight, int32_t x, int32_t y);

// Where item `index` lies in the client area with the bar at `scrollPos`:
// the full cell, right and bottom exclusive. False (and `rect` untouched)
// with no columns or a negative index.
bool CellRectangle(GridExtent cell, int32_t columns, int32_t scrollPos, int32_t index, GridRect* rect);

// The first row that EnsureVisible sets, or false when it does nothing
// (index outside 0 .. count, count itself included, or no columns).
bool EnsureVisibleTopRow(int64_t index, int64_t count, int32_t columns, int32_t totalRows,
                         int32_t visibleRows, int32_t* topRow);

// Whether the row of `index` lies in topRow .. topRow + visibleRows - 1;
// false outside 0 .. count or with no columns.
bool IsCellVisibleAt(int64_t index, int64_t count, int32_t columns, int32_t topRow, int32_t visibleRows);

// Scroll bar codes, as the platform numbers them.
inline constexpr int32_t kScrollLineUp = 0;
inline constexpr int32_t kScrollLineDown = 1;
inline constexpr int32_t kScrollPageUp = 2;
inline constexpr int32_t kScrollPageDown = 3;
inline constexpr int32_t kScrollThumbPosition = 4;
inline constexpr int32_t kScrollThumbTrack = 5;

// What one vertical scroll message does to the first row: its new value,
// whether the bar is set to it, and whether the window is redrawn.
struct VerticalScroll {
    int32_t topRow = 0;
    bool setBar = false;
    bool redraw = false;
};

VerticalScroll ApplyVerticalScroll(int32_t code, int32_t pos, int32_t topRow, int32_t totalRows,
                                   int32_t visibleRows);

// Key flags of a wheel message that stop it.
inline constexpr uint32_t kWheelShift = 0x4;
inline constexpr uint32_t kWheelControl = 0x8;
inline constexpr int32_t kWheelDelta = 120;
// The wheel setting that means a page per notch.
inline constexpr int32_t kWheelPageMode = -1;

// The scroll messages that one wheel message posts: `count` times `code`.
// `ignored` when Shift or Control is held; then nothing is posted.
struct WheelSteps {
    bool ignored = false;
    int32_t code = kScrollLineDown;
    int64_t count = 0;
};

WheelSteps WheelScrollSteps(uint32_t keyFlags, int32_t delta, int32_t wheelScrollLines);

// The number in a "WheelScrollLines" text as strtoul reads it in base 10 with
// a 32-bit unsigned long: leading blanks and a sign are taken, "-1" is the
// all-ones value, text beyond the digits is ignored, no digits give 0 and a
// number too large gives the all-ones value.
uint32_t ParseWheelScrollLines(const char* text);

// The outer size of a gallery that shows `rows` by `cols` cells, given the
// platform's edge and scroll bar metrics.
GridExtent WindowSizeForGrid(GridExtent cell, int32_t rows, int32_t cols, int32_t cxEdge, int32_t cyEdge,
                             int32_t cxVScroll);

// index / columns and index / totalRows, truncating; 0 when the divisor is 0.
int32_t QuotientBy(int64_t index, int32_t divisor);

// ---- Painting ---------------------------------------------------------------

// The caption band along the bottom of a cell and its font height, by the
// width of the cell the item was made for.
int32_t CaptionBandHeight(int32_t itemCellWidth);
int32_t CaptionFontHeight(int32_t itemCellWidth);

// The rectangle a cell draws into: left and top of the cell, right and bottom
// one pixel short of the next cell, so the grid line stays. False as for
// CellRectangle.
bool CellDrawRectangle(GridExtent cell, int32_t columns, int32_t row, int32_t col, GridRect* rect);

// Where a picture of w x h goes in a cell drawn at `rect`: centred on the
// item's cell size with 25 pixels kept for the caption, then 3 further down.
// The top goes negative, over the tile's edge, for a picture taller than the
// cell less 25.
GridRect PictureRectangle(const GridRect& rect, GridExtent itemCell, int32_t w, int32_t h);

// The drag image: the picture's size centred on the point where it starts,
// and, when it moves, placed by the cell's size instead.
GridRect DragStartRectangle(int32_t screenX, int32_t screenY, GridExtent picture);
GridRect DragMoveRectangle(int32_t screenX, int32_t screenY, GridExtent cell, GridExtent picture);

// The smallest rectangle holding both; an empty one does not count.
GridRect UnionOf(const GridRect& a, const GridRect& b);

}  // namespace gallery
