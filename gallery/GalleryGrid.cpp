#include "gallery/GalleryGrid.h"

#include <algorithm>
#include <cctype>
#include <limits>

namespace gallery {

namespace {

constexpr int64_t kInt32Min = std::numeric_limits<int32_t>::min();
constexpr int64_t kInt32Max = std::numeric_limits<int32_t>::max();

int32_t Clamp32(int64_t value) {
    return static_cast<int32_t>(std::clamp(value, kInt32Min, kInt32Max));
}

// Truncating division that cannot trap: the one overflowing case,
// INT64_MIN / -1, gives INT64_MAX.
int64_t Divide(int64_t dividend, int64_t divisor) {
    if (divisor == -1)
        return dividend == std::numeric_limits<int64_t>::min() ? std::numeric_limits<int64_t>::max()
                                                               : -dividend;
    return dividend / divisor;
}

int64_t Remainder(int64_t dividend, int64_t divisor) {
    if (divisor == -1) return 0;
    return dividend % divisor;
}

// Rows on a page of `height`: a row that is only partly visible counts.
void FitRows(GridFit* fit, int32_t cellHeight, int64_t height) {
    if (cellHeight == 0) return;
    const int64_t remainder = Remainder(height, cellHeight);
    fit->visibleRows = Clamp32(Divide(height, cellHeight) + (remainder != 0 ? 1 : 0));
    fit->partialRow = remainder != 0;
}

// Whole columns only: what is cut off at the right does not count.
void FitColumns(GridFit* fit, int32_t cellWidth, int64_t width) {
    if (cellWidth == 0) return;
    fit->columns = Clamp32(Divide(width, cellWidth));
}

GridRect MakeRect(int64_t left, int64_t top, int64_t right, int64_t bottom) {
    return GridRect{Clamp32(left), Clamp32(top), Clamp32(right), Clamp32(bottom)};
}

bool IsEmpty(const GridRect& r) {
    return r.left >= r.right || r.top >= r.bottom;
}

}  // namespace

bool FitGridToWindowSize(GridFit* fit, GridExtent cell, int32_t cx, int32_t cy) {
    if (cy == kSubstitutedHeight) cy = kSubstituteHeight;
    if (cell.cx == 0 && cell.cy == 0) return false;
    FitRows(fit, cell.cy, cy);
    if (cx == kSubstitutedWidth) cx = kSubstituteWidth;
    FitColumns(fit, cell.cx, cx);
    return true;
}

bool FitGridToSize(GridFit* fit, GridExtent cell, int64_t width, int64_t height) {
    if (cell.cx == 0 && cell.cy == 0) return false;
    FitRows(fit, cell.cy, height);
    FitColumns(fit, cell.cx, width);
    return true;
}

int32_t TotalRowsFor(int64_t count, int32_t columns) {
    if (count <= 0 || columns == 0) return 0;
    return Clamp32(Divide(count, columns) + (Remainder(count, columns) != 0 ? 1 : 0));
}

ScrollRange GalleryScrollRange(int32_t totalRows, int32_t visibleRows, bool partialRow) {
    const int64_t excess = static_cast<int64_t>(totalRows) - visibleRows + 1;
    ScrollRange range;
    if (partialRow) {
        range.nMax = excess >= 1 ? Clamp32(static_cast<int64_t>(totalRows) + 1) : 0;
        range.nPage = static_cast<uint32_t>(Clamp32(static_cast<int64_t>(visibleRows) + 1));
    } else {
        range.nMax = excess > 0 ? Clamp32(excess) : 0;
        range.nPage = static_cast<uint32_t>(visibleRows);
    }
    return range;
}

void ScrollBarModel::SetRangeAndPage(const ScrollRange& range, bool disableNoScroll) {
    page_ = static_cast<int32_t>(range.nPage);
    if (range.nMin > range.nMax ||
        static_cast<uint32_t>(static_cast<int64_t>(range.nMax) - range.nMin) >= 0x80000000u) {
        min_ = 0;
        max_ = 0;
    } else {
        min_ = range.nMin;
        max_ = range.nMax;
    }
    const int64_t size = static_cast<int64_t>(max_) - min_ + 1;
    if (page_ < 0)
        page_ = 0;
    else if (page_ > size)
        page_ = Clamp32(size);
    ClampPos();
    if (disableNoScroll) disabled_ = min_ >= HighestPos();
}

int32_t ScrollBarModel::SetPos(int32_t pos) {
    const int32_t previous = pos_;
    pos_ = pos;
    ClampPos();
    return previous;
}

int32_t ScrollBarModel::HighestPos() const {
    return Clamp32(static_cast<int64_t>(max_) - std::max(page_ - 1, 0));
}

void ScrollBarModel::ClampPos() {
    if (pos_ < min_)
        pos_ = min_;
    else if (pos_ > HighestPos())
        pos_ = HighestPos();
}

int32_t HighestScrollPos(const ScrollRange& range) {
    ScrollBarModel model;
    model.SetRangeAndPage(range, false);
    return std::max(model.HighestPos(), model.Min());
}

int32_t HitTestCell(GridExtent cell, int32_t columns, int32_t scrollPos, int64_t count, int32_t clientWidth,
                    int32_t clientHeight, int32_t x, int32_t y) {
    if (x < 0 || y < 0 || x >= clientWidth || y >= clientHeight) return -1;
    // A zero side leaves no cell to hit; the platform's own code guards only
    // the case of both.
    if (cell.cx == 0 || cell.cy == 0) return -1;
    const int64_t index =
        Divide(y, cell.cy) * columns + Divide(x, cell.cx) + static_cast<int64_t>(scrollPos) * columns;
    if (index >= count || index < 0 || index > kInt32Max) return -1;
    return static_cast<int32_t>(index);
}

bool CellRectangle(GridExtent cell, int32_t columns, int32_t scrollPos, int32_t index, GridRect* rect) {
    if (columns == 0 || index < 0) return false;
    const int64_t col = Remainder(index, columns);
    const int64_t row = Divide(index, columns) - scrollPos;
    const int64_t left = col * cell.cx;
    const int64_t top = row * cell.cy;
    *rect = MakeRect(left, top, left + cell.cx, top + cell.cy);
    return true;
}

bool EnsureVisibleTopRow(int64_t index, int64_t count, int32_t columns, int32_t totalRows,
                         int32_t visibleRows, int32_t* topRow) {
    if (index < 0 || index > count || columns == 0) return false;
    int64_t row = Divide(index, columns);
    const int64_t lastPage = static_cast<int64_t>(totalRows) - visibleRows;
    if (row >= lastPage) row = lastPage + 1;
    *topRow = Clamp32(row);
    return true;
}

bool IsCellVisibleAt(int64_t index, int64_t count, int32_t columns, int32_t topRow, int32_t visibleRows) {
    if (index < 0 || index > count || columns == 0) return false;
    const int64_t row = Divide(index, columns);
    return topRow <= row && row < static_cast<int64_t>(topRow) + visibleRows;
}

VerticalScroll ApplyVerticalScroll(int32_t code, int32_t pos, int32_t topRow, int32_t totalRows,
                                   int32_t visibleRows) {
    const int64_t last = static_cast<int64_t>(totalRows) - visibleRows + 1;
    VerticalScroll out;
    out.topRow = topRow;
    switch (code) {
        case kScrollLineUp:
            if (topRow > 0) {
                out.topRow = topRow - 1;
                out.setBar = out.redraw = true;
            }
            break;
        case kScrollLineDown:
            if (static_cast<int64_t>(topRow) + 1 <= last) {
                out.topRow = Clamp32(static_cast<int64_t>(topRow) + 1);
                out.setBar = out.redraw = true;
            }
            break;
        case kScrollPageUp: {
            const int64_t row = std::max<int64_t>(static_cast<int64_t>(topRow) - visibleRows, 0);
            out.topRow = Clamp32(row);
            out.setBar = out.redraw = out.topRow != topRow;
            break;
        }
        case kScrollPageDown: {
            const int64_t row = std::min<int64_t>(static_cast<int64_t>(topRow) + visibleRows, last);
            out.topRow = Clamp32(row);
            out.setBar = out.redraw = true;
            break;
        }
        case kScrollThumbPosition:
        case kScrollThumbTrack:
            if (pos <= totalRows && pos <= last) {
                out.topRow = pos;
                out.setBar = out.redraw = true;
            }
            break;
        default: break;
    }
    return out;
}

WheelSteps WheelScrollSteps(uint32_t keyFlags, int32_t delta, int32_t wheelScrollLines) {
    WheelSteps steps;
    if ((keyFlags & (kWheelShift | kWheelControl)) != 0) {
        steps.ignored = true;
        return steps;
    }
    int64_t n = 0;
    if (wheelScrollLines == kWheelPageMode) {
        n = delta / kWheelDelta;
        steps.code = n >= 1 ? kScrollPageUp : kScrollPageDown;
    } else {
        n = static_cast<int64_t>(delta) * wheelScrollLines / kWheelDelta;
        steps.code = n >= 1 ? kScrollLineUp : kScrollLineDown;
    }
    steps.count = n >= 1 ? n : -n;
    return steps;
}

uint32_t ParseWheelScrollLines(const char* text) {
    if (text == nullptr) return 0;
    const char* p = text;
    while (std::isspace(static_cast<unsigned char>(*p))) ++p;
    bool negative = false;
    if (*p == '+' || *p == '-') {
        negative = *p == '-';
        ++p;
    }
    uint64_t magnitude = 0;
    bool overflow = false;
    bool digits = false;
    for (; *p >= '0' && *p <= '9'; ++p) {
        digits = true;
        magnitude = magnitude * 10 + static_cast<uint64_t>(*p - '0');
        if (magnitude > 0xFFFFFFFFu) {
            overflow = true;
            magnitude = 0xFFFFFFFFu;
        }
    }
    if (!digits) return 0;
    if (overflow) return 0xFFFFFFFFu;
    const auto value = static_cast<uint32_t>(magnitude);
    return negative ? 0u - value : value;
}

GridExtent WindowSizeForGrid(GridExtent cell, int32_t rows, int32_t cols, int32_t cxEdge, int32_t cyEdge,
                             int32_t cxVScroll) {
    GridExtent size;
    size.cx = Clamp32(static_cast<int64_t>(cell.cx) * cols + 2 * static_cast<int64_t>(cxEdge) + cxVScroll);
    size.cy = Clamp32(static_cast<int64_t>(cell.cy) * rows + 2 * static_cast<int64_t>(cyEdge));
    return size;
}

int32_t QuotientBy(int64_t index, int32_t divisor) {
    if (divisor == 0) return 0;
    return Clamp32(Divide(index, divisor));
}

int32_t CaptionBandHeight(int32_t itemCellWidth) {
    return itemCellWidth < 100 ? 24 : 30;
}

int32_t CaptionFontHeight(int32_t itemCellWidth) {
    return itemCellWidth < 100 ? -9 : -11;
}

bool CellDrawRectangle(GridExtent cell, int32_t columns, int32_t row, int32_t col, GridRect* rect) {
    if (columns == 0) return false;
    const int64_t left = static_cast<int64_t>(col) * cell.cx;
    const int64_t top = static_cast<int64_t>(row) * cell.cy;
    *rect = MakeRect(left, top, left + cell.cx - 1, top + cell.cy - 1);
    return true;
}

GridRect PictureRectangle(const GridRect& rect, GridExtent itemCell, int32_t w, int32_t h) {
    const int64_t left = (static_cast<int64_t>(itemCell.cx) - w) / 2 + rect.left;
    const int64_t top = (static_cast<int64_t>(itemCell.cy) - 25 - h) / 2 + rect.top + 3;
    return MakeRect(left, top, left + w, top + h);
}

GridRect DragStartRectangle(int32_t screenX, int32_t screenY, GridExtent picture) {
    const int64_t left = static_cast<int64_t>(screenX) - picture.cx / 2;
    const int64_t top = static_cast<int64_t>(screenY) - picture.cy / 2;
    return MakeRect(left, top, left + picture.cx, top + picture.cy);
}

GridRect DragMoveRectangle(int32_t screenX, int32_t screenY, GridExtent cell, GridExtent picture) {
    const int64_t left = static_cast<int64_t>(screenX) - cell.cx / 2;
    const int64_t top = static_cast<int64_t>(screenY) - cell.cy / 2;
    return MakeRect(left, top, left + picture.cx, top + picture.cy);
}

GridRect UnionOf(const GridRect& a, const GridRect& b) {
    if (IsEmpty(a)) return IsEmpty(b) ? GridRect{} : b;
    if (IsEmpty(b)) return a;
    return GridRect{std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
                    std::max(a.bottom, b.bottom)};
}

}  // namespace gallery
