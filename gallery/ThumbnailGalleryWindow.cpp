#include "gallery/ThumbnailGalleryWindow.h"

#include <algorithm>
#include <vector>

#include "foundation/DrawingRoutines.h"
#include "foundation/SharedPalette.h"
#include "foundation/Stdobj.h"
#include "gallery/GalleryGrid.h"
#include "gallery/GalleryStateQuery.h"

namespace gallery {

using framework::win32::PaletteSelectionGuard;
using framework::win32::SelectionGuard;
using framework::win32::UniqueBitmap;
using framework::win32::UniqueBrush;
using framework::win32::UniqueDc;
using framework::win32::UniquePen;
using framework::win32::Window;
using framework::win32::WindowDc;

LUMBREL_IMPLEMENT_RUNTIME_CLASS(CThumbnailGalleryWindow, CTPCtrlWnd)

static_assert(kScrollLineUp == SB_LINEUP && kScrollLineDown == SB_LINEDOWN && kScrollPageUp == SB_PAGEUP &&
                  kScrollPageDown == SB_PAGEDOWN && kScrollThumbPosition == SB_THUMBPOSITION &&
                  kScrollThumbTrack == SB_THUMBTRACK,
              "the grid numbers the scroll codes as the platform does");
static_assert(kWheelShift == MK_SHIFT && kWheelControl == MK_CONTROL && kWheelDelta == WHEEL_DELTA,
              "the grid's wheel constants are the platform's");

BYTE CThumbnailGalleryWindow::pressedAnywhere = 0;
Window* CThumbnailGalleryWindow::dropTarget = nullptr;

namespace {

GalleryDrawingFunctions g_drawingFunctions;

HDC CreateCompatibleDcCall(HDC dc) {
    return g_drawingFunctions.createCompatibleDc != nullptr ? g_drawingFunctions.createCompatibleDc(dc)
                                                            : ::CreateCompatibleDC(dc);
}

HBITMAP CreateCompatibleBitmapCall(HDC dc, int width, int height) {
    return g_drawingFunctions.createCompatibleBitmap != nullptr
               ? g_drawingFunctions.createCompatibleBitmap(dc, width, height)
               : ::CreateCompatibleBitmap(dc, width, height);
}

BOOL BitBltCall(HDC target, int x, int y, int width, int height, HDC source, int sourceX, int sourceY,
                DWORD rop) {
    return g_drawingFunctions.bitBlt != nullptr
               ? g_drawingFunctions.bitBlt(target, x, y, width, height, source, sourceX, sourceY, rop)
               : ::BitBlt(target, x, y, width, height, source, sourceX, sourceY, rop);
}

HWND WindowFromPointCall(POINT screenPoint) {
    return g_drawingFunctions.windowFromPoint != nullptr ? g_drawingFunctions.windowFromPoint(screenPoint)
                                                         : ::WindowFromPoint(screenPoint);
}

BOOL TrackPopupMenuCall(HMENU menu, UINT flags, int x, int y, HWND owner) {
    if (g_drawingFunctions.trackPopupMenu != nullptr)
        return g_drawingFunctions.trackPopupMenu(menu, flags, x, y, owner);
    return ::TrackPopupMenu(menu, flags, x, y, 0, owner, nullptr);
}

// The screen's context for the drag image, given back on leaving the scope.
class ScreenDc {
public:
    ScreenDc()
        : dc_(g_drawingFunctions.getScreenDc != nullptr ? g_drawingFunctions.getScreenDc()
                                                        : ::GetDC(nullptr)) {}
    ~ScreenDc() {
        if (dc_ == nullptr) return;
        if (g_drawingFunctions.releaseScreenDc != nullptr)
            g_drawingFunctions.releaseScreenDc(dc_);
        else
            ::ReleaseDC(nullptr, dc_);
    }
    ScreenDc(const ScreenDc&) = delete;
    ScreenDc& operator=(const ScreenDc&) = delete;
    HDC Get() const { return dc_; }

private:
    HDC dc_;
};

struct RegistryKeyTraits {
    using Handle = HKEY;
    static Handle Invalid() { return nullptr; }
    static void Release(Handle handle) { ::RegCloseKey(handle); }
};
using UniqueRegistryKey = framework::win32::UniqueHandle<RegistryKeyTraits>;

// BeginPaint and EndPaint around one WM_PAINT.
class PaintScope {
public:
    explicit PaintScope(HWND hwnd) : hwnd_(hwnd), dc_(::BeginPaint(hwnd, &paint_)) {}
    ~PaintScope() { ::EndPaint(hwnd_, &paint_); }
    PaintScope(const PaintScope&) = delete;
    PaintScope& operator=(const PaintScope&) = delete;
    HDC Dc() const { return dc_; }

private:
    HWND hwnd_;
    PAINTSTRUCT paint_ = {};
    HDC dc_;
};

RECT ToRect(const GridRect& r) {
    return RECT{r.left, r.top, r.right, r.bottom};
}

GridExtent ToExtent(const SIZE& size) {
    return GridExtent{static_cast<int32_t>(size.cx), static_cast<int32_t>(size.cy)};
}

constexpr int64_t kMaxWheelPosts = 10000;

LPARAM PackPoint(int x, int y) {
    return MAKELPARAM(static_cast<WORD>(x), static_cast<WORD>(y));
}

}  // namespace

GalleryDrawingFunctions SetGalleryDrawingFunctions(const GalleryDrawingFunctions& functions) {
    const GalleryDrawingFunctions previous = g_drawingFunctions;
    g_drawingFunctions = functions;
    return previous;
}

int ReadWheelScrollLines() {
    int lines = 1;
    HKEY opened = nullptr;
    if (::RegOpenKeyExA(HKEY_CURRENT_USER, "Control Panel\\Desktop", 0, KEY_QUERY_VALUE, &opened) !=
        ERROR_SUCCESS)
        return lines;
    const UniqueRegistryKey key(opened);
    // One byte more than the value may fill, so that the text always ends.
    char text[129] = {};
    DWORD size = 128;
    if (::RegQueryValueExA(key.Get(), "WheelScrollLines", nullptr, nullptr, reinterpret_cast<BYTE*>(text),
                           &size) == ERROR_SUCCESS)
        lines = static_cast<int>(ParseWheelScrollLines(text));
    return lines;
}

CThumbnailGalleryWindow::CThumbnailGalleryWindow(const SIZE& cellSize_, BOOL hasPopupMenu_, int ownerKind)
    : CTPCtrlWnd(ownerKind),
      cellSize(cellSize_),
      wheelScrollLines(ReadWheelScrollLines()),
      hasPopupMenu(hasPopupMenu_) {
    ownerLink.SetWindow(this);
}

CThumbnailGalleryWindow::~CThumbnailGalleryWindow() {
    // The window goes first, so that what it is sent on the way out (capture
    // and focus changes) still finds the whole object.
    if (IsAlive()) DestroyWindow();
    RemoveAllItems();
    if (dragDC && dragDcInitialBitmap != nullptr) ::SelectObject(dragDC.Get(), dragDcInitialBitmap);
}

BOOL CThumbnailGalleryWindow::Create(const RECT& rect, HWND parent, UINT id, HCURSOR cursor, uint32_t param1,
                                     uint32_t param2) {
    createParam1 = param2;
    createParam2 = param1;
    const std::string className = RegisterWindowClass(
        CS_DBLCLKS, cursor, reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1)));
    if (!CreateEx(WS_EX_CLIENTEDGE, className, "", WS_CHILD | WS_VISIBLE | WS_VSCROLL, rect, parent, id))
        return FALSE;
    if (hasPopupMenu) {
        popupMenu.Reset(::CreatePopupMenu());
        ::SetMenu(hwnd_, popupMenu.Get());
        BuildMenu();
    }
    UpdateScrollRange();
    return TRUE;
}

// ---- Items -------------------------------------------------------------------

void CThumbnailGalleryWindow::AddItem(std::unique_ptr<CTPGalleryItem> item, BOOL updateScroll) {
    // A cell without an item could not draw; there is nothing to add.
    if (!item) return;
    cells.push_back(std::move(item));
    if (updateScroll) UpdateScrollRange();
}

void CThumbnailGalleryWindow::RemoveAllItems() {
    if (!cells.empty()) cells.clear();
}

void CThumbnailGalleryWindow::SetCellSize(int cx, int cy) {
    RemoveAllItems();
    cellSize = SIZE{cx, cy};
    if (hwnd_ != nullptr) Invalidate(true);
}

CTPGalleryItem* CThumbnailGalleryWindow::GetItem(int index) const {
    if (index < 0 || index >= GetItemCount()) return nullptr;
    return cells[static_cast<size_t>(index)].get();
}

CTPGalleryItem* CThumbnailGalleryWindow::LiveSelectedItem() const {
    CTPGalleryItem* item = GetItem(selectedIndex);
    return item != nullptr && item == selectedItem ? item : nullptr;
}

// ---- Layout and scrolling ------------------------------------------------------

void CThumbnailGalleryWindow::OnSize(UINT, int cx, int cy) {
    GridFit fit{visibleRows, columns, partialRow != 0};
    if (!FitGridToWindowSize(&fit, ToExtent(cellSize), cx, cy)) return;
    visibleRows = fit.visibleRows;
    columns = fit.columns;
    partialRow = fit.partialRow ? 1 : 0;
    UpdateScrollRange();
}

void CThumbnailGalleryWindow::Relayout(RECT rect) {
    if (hwnd_ != nullptr) ::InvalidateRect(hwnd_, &rect, TRUE);
    GridFit fit{visibleRows, columns, partialRow != 0};
    if (!FitGridToSize(&fit, ToExtent(cellSize), static_cast<int64_t>(rect.right) - rect.left,
                       static_cast<int64_t>(rect.bottom) - rect.top))
        return;
    visibleRows = fit.visibleRows;
    columns = fit.columns;
    partialRow = fit.partialRow ? 1 : 0;
}

void CThumbnailGalleryWindow::UpdateScrollRange() {
    totalRows = TotalRowsFor(GetItemCount(), columns);
    const ScrollRange range = GalleryScrollRange(totalRows, visibleRows, partialRow != 0);
    if (hwnd_ == nullptr) return;
    SCROLLINFO info = {};
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_DISABLENOSCROLL;
    info.nMin = range.nMin;
    info.nMax = range.nMax;
    info.nPage = range.nPage;
    SetScrollInfo(SB_VERT, &info, true);
}

int CThumbnailGalleryWindow::GetTopRow() const {
    return GetScrollPos(SB_VERT);
}

int CThumbnailGalleryWindow::SetTopRow(int row, BOOL redraw) {
    SCROLLINFO info = {};
    if (hwnd_ == nullptr || !GetScrollInfo(SB_VERT, &info, SIF_RANGE | SIF_POS)) return -1;
    if (row < info.nMin || row > info.nMax) return -1;
    const int previous = info.nPos;
    SetScrollPos(SB_VERT, row, true);
    topRow = row;
    if (redraw) Invalidate(true);
    return previous;
}

void CThumbnailGalleryWindow::EnsureVisible(int index) {
    int32_t row = 0;
    if (!EnsureVisibleTopRow(index, GetItemCount(), columns, totalRows, visibleRows, &row)) return;
    topRow = row;
    if (hwnd_ == nullptr) return;
    SetScrollPos(SB_VERT, topRow, true);
    Invalidate(true);
}

BOOL CThumbnailGalleryWindow::IsCellVisible(int index) const {
    return IsCellVisibleAt(index, GetItemCount(), columns, topRow, visibleRows) ? TRUE : FALSE;
}

int CThumbnailGalleryWindow::HitTest(int x, int y) const {
    const RECT client = GetClientRect();
    return HitTestCell(ToExtent(cellSize), columns, GetScrollPos(SB_VERT), GetItemCount(),
                       client.right - client.left, client.bottom - client.top, x, y);
}

SIZE CThumbnailGalleryWindow::CalcWindowSize(const SIZE& cell, int rows, int cols) {
    const GridExtent size =
        WindowSizeForGrid(ToExtent(cell), rows, cols, ::GetSystemMetrics(SM_CXEDGE),
                          ::GetSystemMetrics(SM_CYEDGE), ::GetSystemMetrics(SM_CXVSCROLL));
    return SIZE{size.cx, size.cy};
}

bool CThumbnailGalleryWindow::CellRect(int index, RECT* rect) const {
    GridRect cell;
    if (!CellRectangle(ToExtent(cellSize), columns, GetScrollPos(SB_VERT), index, &cell)) return false;
    *rect = ToRect(cell);
    return true;
}

void CThumbnailGalleryWindow::InvalidateCell(int index) {
    RECT rect;
    if (hwnd_ != nullptr && CellRect(index, &rect)) InvalidateRect(rect, false);
}

void CThumbnailGalleryWindow::InvalidateSelection() {
    if (selectedIndex < 0) return;
    InvalidateCell(selectedIndex);
}

int CThumbnailGalleryWindow::QuotientByColumns(int index) const {
    return QuotientBy(index, columns);
}

int CThumbnailGalleryWindow::QuotientByRows(int index) const {
    return QuotientBy(index, totalRows);
}

void CThumbnailGalleryWindow::OnVScroll(UINT code, UINT pos, HWND) {
    const VerticalScroll step = ApplyVerticalScroll(static_cast<int32_t>(code), static_cast<int32_t>(pos),
                                                    topRow, totalRows, visibleRows);
    topRow = step.topRow;
    if (step.setBar) SetScrollPos(SB_VERT, topRow, true);
    if (step.redraw) Invalidate(true);
    ::SetCursor(::LoadCursor(nullptr, IDC_ARROW));
}

// ---- Painting ----------------------------------------------------------------------

void CThumbnailGalleryWindow::OnPaint() {
    PaintScope paint(hwnd_);
    PaintInto(paint.Dc());
}

bool CThumbnailGalleryWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    if (message == WM_PRINTCLIENT) {
        PaintInto(reinterpret_cast<HDC>(wParam));
        *result = 0;
        return true;
    }
    const UINT stateQuery = GalleryStateMessage();
    if (stateQuery != 0 && message == stateQuery) {
        *result = AnswerStateQuery(wParam);
        return true;
    }
    return CTPCtrlWnd::OnMessage(message, wParam, lParam, result);
}

LRESULT CThumbnailGalleryWindow::AnswerStateQuery(WPARAM field) const {
    switch (field) {
        case kGalleryStateSignatureField: return kGalleryStateSignature;
        case kGalleryStateCells: return GetItemCount();
        case kGalleryStateSelectedIndex: return selectedIndex;
        case kGalleryStateCurrentIndex: return currentIndex;
        case kGalleryStateCellWidth: return cellSize.cx;
        case kGalleryStateCellHeight: return cellSize.cy;
        case kGalleryStateColumns: return columns;
        case kGalleryStateTopRow: return GetTopRow();
        default: return 0;
    }
}

void CThumbnailGalleryWindow::PaintInto(HDC dc) {
    const RECT client = GetClientRect();
    const int width = client.right - client.left;
    const int height = client.bottom - client.top;
    foundation::CSharedPalette* shared = foundation::GetSharedPalette();
    const HPALETTE palette = shared != nullptr ? shared->Handle() : nullptr;
    std::unique_ptr<PaletteSelectionGuard> paletteSelection;
    if (palette != nullptr) {
        paletteSelection = std::make_unique<PaletteSelectionGuard>(dc, palette, false);
        if (paletteSelection->Succeeded()) ::RealizePalette(dc);
    }

    bool copied = false;
    {
        const UniqueDc memory(CreateCompatibleDcCall(dc));
        const UniqueBitmap bitmap(memory ? CreateCompatibleBitmapCall(dc, width, height) : nullptr);
        if (memory && bitmap) {
            const SelectionGuard selected(memory.Get(), bitmap.Get());
            foundation::FillRectWithBrush(memory.Get(), client, ::GetSysColorBrush(COLOR_BTNFACE));
            DrawGrid(memory.Get());
            DrawCells(memory.Get());
            DrawHighlight(memory.Get(), TRUE);
            copied = BitBltCall(dc, 0, 0, width, height, memory.Get(), 0, 0, SRCCOPY) != FALSE;
        }
    }
    if (!copied) {
        DrawGrid(dc);
        DrawCells(dc);
        DrawHighlight(dc, TRUE);
    }
}

BOOL CThumbnailGalleryWindow::OnEraseBkgnd(HDC) {
    return 0;
}

void CThumbnailGalleryWindow::OnEnable(BOOL) {
    Invalidate(true);
}

void CThumbnailGalleryWindow::DrawGrid(HDC dc) {
    if (visibleRows <= 0 || columns <= 0) return;
    const UniquePen pen(::CreatePen(PS_SOLID, 1, kGridColour));
    const SelectionGuard selected(dc, pen.Get());
    const int64_t cx = cellSize.cx;
    const int64_t cy = cellSize.cy;
    // Every tile is its cell inflated by 1 and drawn in turn, each one over
    // its neighbours above and to the left: what stays is one rectangle
    // around the whole grid, filled with the current brush, and the 1-pixel
    // lines one pixel left of and above each inner cell edge. Drawn that way
    // it is the same picture in two calls instead of one per tile.
    RECT box = {};
    if (::GetClipBox(dc, &box) == ERROR) return;
    // Edges beyond the clip box leave no trace; keeping them just outside it
    // keeps the coordinates within what the platform takes.
    const auto clampX = [&](int64_t x) {
        return static_cast<int>(std::clamp<int64_t>(x, int64_t{box.left} - 2, int64_t{box.right} + 2));
    };
    const auto clampY = [&](int64_t y) {
        return static_cast<int>(std::clamp<int64_t>(y, int64_t{box.top} - 2, int64_t{box.bottom} + 2));
    };
    const int64_t right = columns * cx;
    const int64_t bottom = visibleRows * cy;
    if (cx <= 0 || cy <= 0) {
        // Degenerate cells: no simplification holds, draw each tile.
        for (int64_t row = 0; row < visibleRows; ++row)
            for (int64_t col = 0; col < columns; ++col)
                ::Rectangle(dc, clampX(col * cx - 1), clampY(row * cy - 1), clampX(col * cx + cx + 1),
                            clampY(row * cy + cy + 1));
        return;
    }
    ::Rectangle(dc, clampX(-1), clampY(-1), clampX(right + 1), clampY(bottom + 1));
    std::vector<POINT> points;
    std::vector<DWORD> counts;
    const int64_t firstCol = std::max<int64_t>(1, box.left / cx - 1);
    const int64_t endCol = std::min<int64_t>(columns, box.right / cx + 2);
    for (int64_t col = firstCol; col < endCol; ++col) {
        const int x = clampX(col * cx - 1);
        points.push_back(POINT{x, clampY(-1)});
        points.push_back(POINT{x, clampY(bottom + 1)});
        counts.push_back(2);
    }
    const int64_t firstRow = std::max<int64_t>(1, box.top / cy - 1);
    const int64_t endRow = std::min<int64_t>(visibleRows, box.bottom / cy + 2);
    for (int64_t row = firstRow; row < endRow; ++row) {
        const int y = clampY(row * cy - 1);
        points.push_back(POINT{clampX(-1), y});
        points.push_back(POINT{clampX(right + 1), y});
        counts.push_back(2);
    }
    if (!counts.empty()) ::PolyPolyline(dc, points.data(), counts.data(), static_cast<DWORD>(counts.size()));
}

void CThumbnailGalleryWindow::DrawCells(HDC dc) {
    if (columns <= 0) return;
    const int64_t count = GetItemCount();
    int64_t index = static_cast<int64_t>(GetScrollPos(SB_VERT)) * columns;
    for (int row = 0; row < visibleRows; ++row) {
        for (int col = 0; col < columns; ++col) {
            if (index >= count) return;
            GridRect cell;
            if (index >= 0 && CellDrawRectangle(ToExtent(cellSize), columns, row, col, &cell)) {
                const RECT rect = ToRect(cell);
                cells[static_cast<size_t>(index)]->Draw(dc, &rect, SRCCOPY, FALSE);
            }
            ++index;
        }
    }
}

void CThumbnailGalleryWindow::DrawHighlight(HDC dc, BOOL) {
    RECT rect;
    if (selectedIndex < 0 || !CellRect(selectedIndex, &rect)) return;
    ::InflateRect(&rect, -2, -2);
    const UniqueBrush brush(::CreateSolidBrush(::GetSysColor(COLOR_HIGHLIGHT)));
    ::FrameRect(dc, &rect, brush.Get());
}

// ---- Selection and the pointer --------------------------------------------------------

void CThumbnailGalleryWindow::SetSelection(int index) {
    if (index == selectedIndex || dragActive) return;
    WindowDc dc;
    if (hwnd_ != nullptr) dc = WindowDc(hwnd_);
    InvalidateCell(selectedIndex);
    selectedIndex = index;
    InvalidateSelection();
    if (index >= 0 && index < GetItemCount()) {
        selectedItem = cells[static_cast<size_t>(index)].get();
        if (dc) DrawHighlight(dc.Get(), TRUE);
    } else {
        selectedItem = nullptr;
    }
    currentIndex = index;
}

void CThumbnailGalleryWindow::Notify() {
    NotifyOwner(nullptr, GetDlgCtrlID(), 0);
}

void CThumbnailGalleryWindow::CallDragListener(UINT message, WPARAM wParam, LPARAM lParam) {
    if (hasDragListener && dragListener != nullptr) dragListener->OnDragMessage(message, wParam, lParam);
}

void CThumbnailGalleryWindow::SetDragListener(GalleryDragListener* listener) {
    hasDragListener = 1;
    dragListener = listener;
}

void CThumbnailGalleryWindow::SetDropTarget(Window* window) {
    dropTarget = window;
}

void CThumbnailGalleryWindow::OnLButtonDown(UINT, int x, int y) {
    if (inputLocked) return;
    buttonDown = TRUE;
    pressPoint = POINT{x, y};
    mouseState = 1;
    ::SetCapture(hwnd_);
    timerId = SetTimer(kPressTimerId, kPressTimerPeriod);
    timerRunning = 1;
    pressedAnywhere = 1;
    SetSelection(HitTest(x, y));
    pressReleased = 0;
}

void CThumbnailGalleryWindow::OnMouseMove(UINT flags, POINT point) {
    Default();
    ::SetFocus(hwnd_);
    switch (mouseState) {
        case 1:
            if (!dragEnabled) return;
            if (GetItemCount() > 0 && HitTest(point.x, point.y) != HitTest(pressPoint.x, pressPoint.y)) {
                BeginDrag(pressPoint.x, pressPoint.y);
                dragActive = TRUE;
            }
            return;
        case 2: {
            if (!dragActive || !dragEnabled) return;
            const HWND capture = ::GetCapture();
            if (capture != nullptr && capture != hwnd_) {
                ::ReleaseCapture();
                ::SetCapture(hwnd_);
            }
            POINT screen = point;
            ::ClientToScreen(hwnd_, &screen);
            CallDragListener(WM_MOUSEMOVE, flags, PackPoint(screen.x, screen.y));
            MoveDrag(point.x, point.y);
            return;
        }
        default: return;
    }
}

void CThumbnailGalleryWindow::OnTimer(UINT_PTR id) {
    if (id != kPressTimerId) return;
    KillTimer(kPressTimerId);
    timerRunning = 0;
    ::SetCapture(hwnd_);
    POINT point = {};
    ::GetCursorPos(&point);
    ::ScreenToClient(hwnd_, &point);
    if (HitTest(point.x, point.y) >= 0 && dragEnabled) BeginDrag(point.x, point.y);
    CallDragListener(WM_MOUSEMOVE, kPressTimerId, PackPoint(point.x, point.y));
    // Latched whether or not a drag began: until a release with a selection,
    // or the end of a real drag, the selection stays where it is.
    dragActive = TRUE;
}

void CThumbnailGalleryWindow::OnLButtonUp(UINT, POINT point) {
    if (inputLocked || !buttonDown) {
        ReturnFocus();
        return;
    }
    buttonDown = FALSE;
    Default();
    ::ReleaseCapture();
    if (timerRunning) {
        KillTimer(kPressTimerId);
        timerRunning = 0;
    }
    if (mouseState == 2) {
        ::ReleaseCapture();
        if (!dragEnabled) {
            dragActive = FALSE;
            lastAction = kActionSelected;
            currentIndex = selectedIndex;
            SetSelection(-1);
            Notify();
            return;
        }
        EndDrag();
        currentIndex = selectedIndex;
        dropPoint = point;
        POINT screen = point;
        ::ClientToScreen(hwnd_, &screen);
        const HWND under = WindowFromPointCall(screen);
        if (dropTarget != nullptr && under != nullptr && under == dropTarget->Handle()) {
            lastAction = kActionDropped;
            Notify();
            CallDragListener(WM_LBUTTONUP, 0, 0);
        }
        dragActive = FALSE;
    } else if (selectedIndex >= 0) {
        dragActive = FALSE;
        lastAction = kActionSelected;
        currentIndex = selectedIndex;
        Notify();
    }
    mouseState = 0;
    pressPoint = POINT{-1, -1};
    pressReleased = 1;
    ReturnFocus();
}

void CThumbnailGalleryWindow::OnRButtonDown(UINT, POINT point) {
    if (!hasPopupMenu || dragActive) return;
    const HWND capture = ::GetCapture();
    if (capture != nullptr && capture != hwnd_) ::ReleaseCapture();
    SetSelection(HitTest(point.x, point.y));
    currentIndex = selectedIndex;
    POINT screen = point;
    ::MapWindowPoints(hwnd_, nullptr, &screen, 1);
    UpdateMenu(selectedIndex);
    if (popupMenu)
        TrackPopupMenuCall(popupMenu.Get(), TPM_CENTERALIGN | TPM_RIGHTBUTTON, screen.x, screen.y, hwnd_);
    SetSelection(-1);
}

BOOL CThumbnailGalleryWindow::OnMouseWheel(UINT flags, short delta, POINT) {
    const WheelSteps steps = WheelScrollSteps(flags, delta, wheelScrollLines);
    if (steps.ignored) return 0;
    // The platform's queue takes at most 10,000 posted messages; a setting
    // that asks for more could not be carried out anyway.
    const int64_t count = std::min<int64_t>(steps.count, kMaxWheelPosts);
    for (int64_t i = 0; i < count; ++i) {
        if (!Post(WM_VSCROLL, MAKEWPARAM(steps.code, 0), 0)) break;
    }
    return static_cast<BOOL>(Default());
}

// ---- The drag image ------------------------------------------------------------------

void CThumbnailGalleryWindow::DrawDragImage(HDC dc, const RECT& rect, CTPGalleryItem* item) {
    {
        std::unique_ptr<SelectionGuard> pattern;
        if (dragPatternBrush != nullptr) pattern = std::make_unique<SelectionGuard>(dc, dragPatternBrush);
        item->Draw(dc, &rect, dragPatternBrush != nullptr ? kScreenedDragRop : SRCCOPY, TRUE);
    }
    const SelectionGuard brush(dc, ::GetStockObject(NULL_BRUSH));
    const SelectionGuard pen(dc, ::GetStockObject(BLACK_PEN));
    ::Rectangle(dc, rect.left, rect.top, rect.right, rect.bottom);
}

void CThumbnailGalleryWindow::BeginDrag(int x, int y) {
    if (selectedIndex < 0) return;
    // A selection left over from an emptied list has no item to drag.
    CTPGalleryItem* item = GetItem(selectedIndex);
    if (item == nullptr) return;
    if (timerRunning) {
        KillTimer(kPressTimerId);
        timerRunning = 0;
        pressedAnywhere = 0;
    }
    mouseState = 2;
    selectedItem = item;

    const ScreenDc screen;
    if (dragDC && dragDcInitialBitmap != nullptr) ::SelectObject(dragDC.Get(), dragDcInitialBitmap);
    dragBackground.Reset();
    dragDC.Reset(::CreateCompatibleDC(screen.Get()));
    dragBackground.Reset(
        ::CreateCompatibleBitmap(screen.Get(), item->GetWidth(FALSE), item->GetHeight(FALSE)));
    dragDcInitialBitmap = dragDC ? ::SelectObject(dragDC.Get(), dragBackground.Get()) : nullptr;

    POINT point = {x, y};
    ::ClientToScreen(hwnd_, &point);
    dragRect =
        ToRect(DragStartRectangle(point.x, point.y, GridExtent{item->GetWidth(TRUE), item->GetHeight(TRUE)}));
    BitBltCall(dragDC.Get(), 0, 0, item->GetWidth(TRUE), item->GetHeight(TRUE), screen.Get(), dragRect.left,
               dragRect.top, SRCCOPY);
    DrawDragImage(screen.Get(), dragRect, item);
}

void CThumbnailGalleryWindow::MoveDrag(int x, int y) {
    CTPGalleryItem* item = LiveSelectedItem();
    if (item == nullptr || !dragDC) return;
    const ScreenDc screen;
    POINT point = {x, y};
    ::ClientToScreen(hwnd_, &point);
    const GridExtent picture{item->GetWidth(TRUE), item->GetHeight(TRUE)};
    const GridRect oldRect{dragRect.left, dragRect.top, dragRect.right, dragRect.bottom};
    const GridRect newRect = DragMoveRectangle(
        point.x, point.y, GridExtent{item->GetWidth(FALSE), item->GetHeight(FALSE)}, picture);
    const GridRect area = UnionOf(oldRect, newRect);
    const int areaWidth = area.right - area.left;
    const int areaHeight = area.bottom - area.top;
    RECT oldLocal = ToRect(oldRect);
    RECT newLocal = ToRect(newRect);
    ::OffsetRect(&oldLocal, -area.left, -area.top);
    ::OffsetRect(&newLocal, -area.left, -area.top);
    const int oldWidth = oldLocal.right - oldLocal.left;
    const int oldHeight = oldLocal.bottom - oldLocal.top;

    const UniqueDc temp(::CreateCompatibleDC(screen.Get()));
    const UniqueBitmap tempBitmap(::CreateCompatibleBitmap(screen.Get(), areaWidth, areaHeight));
    {
        const SelectionGuard selected(temp.Get(), tempBitmap.Get());
        BitBltCall(temp.Get(), 0, 0, areaWidth, areaHeight, screen.Get(), area.left, area.top, SRCCOPY);
        BitBltCall(temp.Get(), oldLocal.left, oldLocal.top, oldWidth, oldHeight, dragDC.Get(), 0, 0, SRCCOPY);
        BitBltCall(dragDC.Get(), 0, 0, oldWidth, oldHeight, temp.Get(), newLocal.left, newLocal.top, SRCCOPY);
        DrawDragImage(temp.Get(), newLocal, item);
        BitBltCall(screen.Get(), area.left, area.top, areaWidth, areaHeight, temp.Get(), 0, 0, SRCCOPY);
    }
    dragRect = ToRect(newRect);
}

void CThumbnailGalleryWindow::EndDrag() {
    const ScreenDc screen;
    if (dragDC)
        BitBltCall(screen.Get(), dragRect.left, dragRect.top, dragRect.right - dragRect.left,
                   dragRect.bottom - dragRect.top, dragDC.Get(), 0, 0, SRCCOPY);
    dragActive = FALSE;
    // The context stays for the next drag; its bitmap goes now.
    if (dragDC && dragDcInitialBitmap != nullptr) ::SelectObject(dragDC.Get(), dragDcInitialBitmap);
    dragDcInitialBitmap = nullptr;
    dragBackground.Reset();
}

}  // namespace gallery
