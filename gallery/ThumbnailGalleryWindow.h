// The thumbnail gallery: a child window that shows its items as a grid of
// equal cells, left to right and top to bottom, scrolled by whole rows with a
// vertical bar. Nothing scrolls sideways: what does not fit at the right is
// cut off by the window's edge.
//
// The grid's arithmetic lives in GalleryGrid.h; this class keeps the state,
// talks to the scroll bar, paints double-buffered, and turns the pointer into
// selection changes, drags and notifications of its owner.
//
// Two first rows are kept apart on purpose: `topRow` is the gallery's own
// idea of it, which EnsureVisible may even set below zero, and the scroll
// bar's position is the one that painting, hit testing and invalidation use.
// The platform clamps the bar to its range; `topRow` is not clamped.
//
// The owner hears of a completed selection (lastAction 1) and of a drag that
// ends on the drop target (lastAction 2) through NotifyOwner with the
// control's id and code 0: synchronously, through its command route.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "framework/win32/GdiHandles.h"
#include "framework/win32/UniqueHandle.h"
#include "gallery/GalleryItem.h"
#include "gallery/TPCtrlWnd.h"

namespace gallery {

// Told about a drag as it goes. The pointer's moves arrive as WM_MOUSEMOVE
// with the key flags and the screen point packed x low, y high; the press
// timer's tick as WM_MOUSEMOVE with wParam 500 and the client point; a drop
// on the drop target as WM_LBUTTONUP with zero parameters.
class GalleryDragListener {
public:
    virtual ~GalleryDragListener() = default;
    virtual void OnDragMessage(UINT message, WPARAM wParam, LPARAM lParam) = 0;
};

// The platform calls of the buffered paint, of the drag image and of the
// popup menu, replaceable so that tests can make the buffer fail and watch
// the direct path, see what a drag does to the screen (which a headless
// display does not keep), and see how the menu is asked for. A null member
// stands for the platform's own function: CreateCompatibleDC,
// CreateCompatibleBitmap, BitBlt, GetDC(NULL), ReleaseDC(NULL, dc),
// WindowFromPoint and TrackPopupMenu. The paint's buffer is made through the
// first two; every copy of the paint and of the drag goes through bitBlt;
// the drag's screen context comes from the next two; the window under a drop
// comes from windowFromPoint, since the real screen is shared with every
// other program on the desktop.
struct GalleryDrawingFunctions {
    using CreateCompatibleDcFunction = HDC (*)(HDC dc);
    using CreateCompatibleBitmapFunction = HBITMAP (*)(HDC dc, int width, int height);
    using BitBltFunction = BOOL (*)(HDC target, int x, int y, int width, int height, HDC source, int sourceX,
                                    int sourceY, DWORD rop);
    using GetScreenDcFunction = HDC (*)();
    using ReleaseScreenDcFunction = void (*)(HDC dc);
    using WindowFromPointFunction = HWND (*)(POINT screenPoint);
    using TrackPopupMenuFunction = BOOL (*)(HMENU menu, UINT flags, int x, int y, HWND owner);

    CreateCompatibleDcFunction createCompatibleDc = nullptr;
    CreateCompatibleBitmapFunction createCompatibleBitmap = nullptr;
    BitBltFunction bitBlt = nullptr;
    GetScreenDcFunction getScreenDc = nullptr;
    ReleaseScreenDcFunction releaseScreenDc = nullptr;
    WindowFromPointFunction windowFromPoint = nullptr;
    TrackPopupMenuFunction trackPopupMenu = nullptr;
};
// Installs `functions` and returns the ones they replace.
GalleryDrawingFunctions SetGalleryDrawingFunctions(const GalleryDrawingFunctions& functions);

// Rows per wheel notch from "WheelScrollLines" under HKCU "Control
// Panel\Desktop", read as strtoul reads the text; 1 when the key or the
// value is missing. -1 means a page per notch.
int ReadWheelScrollLines();

namespace detail {
struct MenuTraits {
    using Handle = HMENU;
    static Handle Invalid() { return nullptr; }
    static void Release(Handle handle) { ::DestroyMenu(handle); }
};
}  // namespace detail
using UniqueMenu = framework::win32::UniqueHandle<detail::MenuTraits>;

class CThumbnailGalleryWindow : public CTPCtrlWnd {
    LUMBREL_DECLARE_RUNTIME_CLASS(CThumbnailGalleryWindow)

public:
    static constexpr UINT_PTR kPressTimerId = 500;
    static constexpr UINT kPressTimerPeriod = 500;
    // Values of lastAction.
    static constexpr int kActionSelected = 1;
    static constexpr int kActionDropped = 2;
    // The raster operation of a drag image laid through a pattern brush.
    static constexpr DWORD kScreenedDragRop = 0x00AC0744;
    static constexpr COLORREF kGridColour = RGB(0xD2, 0xD2, 0xD2);

    CThumbnailGalleryWindow(const SIZE& cellSize, BOOL hasPopupMenu, int ownerKind);
    ~CThumbnailGalleryWindow() override;

    // Registers the class (double clicks, `cursor`, the button face) and
    // makes the window: client edge, child, visible, vertical bar. With a
    // popup menu, makes and builds it. FALSE when the window cannot be made.
    BOOL Create(const RECT& rect, HWND parent, UINT id, HCURSOR cursor, uint32_t param1, uint32_t param2);

    // Appends `item`, which the gallery owns from now on; with `updateScroll`
    // the bar's range follows. Does not repaint.
    void AddItem(std::unique_ptr<CTPGalleryItem> item, BOOL updateScroll);
    // Deletes every item. The selection, current index, first row and bar
    // stay as they are, stale, until the owner sets a selection.
    void RemoveAllItems();
    // Deletes every item, even when the size does not change, stores the
    // size and invalidates; columns and rows wait for the next resize.
    void SetCellSize(int cx, int cy);
    SIZE GetCellSize() const { return cellSize; }
    // Recomputes the grid from `rect` as it stands (the browser hands the
    // window rectangle in screen coordinates) and invalidates it; no size
    // substitution and no new scroll range.
    void Relayout(RECT rect);
    void UpdateScrollRange();

    // The scroll bar's position.
    int GetTopRow() const;
    // Moves bar and first row to `row`; the previous position, or -1 when
    // `row` is outside the bar's range.
    int SetTopRow(int row, BOOL redraw);
    void EnsureVisible(int index);
    BOOL IsCellVisible(int index) const;
    // The item under a client point, or -1.
    int HitTest(int x, int y) const;
    // The outer size of a gallery that shows `rows` by `cols` cells.
    static SIZE CalcWindowSize(const SIZE& cell, int rows, int cols);
    void InvalidateCell(int index);
    void InvalidateSelection();
    int QuotientByColumns(int index) const;
    int QuotientByRows(int index) const;

    void SetDragEnabled(BOOL enabled) { dragEnabled = enabled; }
    void SetDragListener(GalleryDragListener* listener);
    // The one window, for all galleries, on which a drag may end.
    static void SetDropTarget(framework::win32::Window* window);

    // What the browser and the control read and write directly.
    int Columns() const { return columns; }
    int VisibleRows() const { return visibleRows; }
    int SelectedIndex() const { return selectedIndex; }
    int CurrentIndex() const { return currentIndex; }
    void SetCurrentIndex(int index) { currentIndex = index; }
    // Stores the size and nothing else: no item is removed, nothing repainted.
    void AssignCellSize(const SIZE& size) { cellSize = size; }
    int GetItemCount() const { return static_cast<int>(cells.size()); }
    // The item at `index`, or null outside the list.
    CTPGalleryItem* GetItem(int index) const;

    // The paint of WM_PAINT composed onto `dc`: the buffer, the three layers
    // and the copy, or the direct path. WM_PRINTCLIENT comes here too.
    void PaintInto(HDC dc);

    // Moves the highlight to `index` (-1 for none) and makes it current;
    // nothing while a drag is latched or when the index does not change.
    virtual void SetSelection(int index);
    virtual void ReservedOperation() {}
    // The empty grid of the page: every tile whether or not an item stands there.
    virtual void DrawGrid(HDC dc);
    // The frame two pixels inside the selected cell; `on` is not looked at.
    virtual void DrawHighlight(HDC dc, BOOL on);
    // The items of the page, from the bar's first row, until the list ends.
    virtual void DrawCells(HDC dc);
    virtual void BuildMenu() {}
    virtual void UpdateMenu(int) {}
    virtual void OnLButtonDown(UINT flags, int x, int y);

protected:
    void OnPaint() override;
    void OnLButtonDown(UINT flags, POINT point) override { OnLButtonDown(flags, point.x, point.y); }
    void OnMouseMove(UINT flags, POINT point) override;
    void OnLButtonUp(UINT flags, POINT point) override;
    void OnVScroll(UINT code, UINT pos, HWND scrollBar) override;
    void OnRButtonDown(UINT flags, POINT point) override;
    void OnTimer(UINT_PTR id) override;
    void OnSize(UINT type, int cx, int cy) override;
    BOOL OnMouseWheel(UINT flags, short delta, POINT screenPoint) override;
    void OnEnable(BOOL enable) override;
    BOOL OnEraseBkgnd(HDC dc) override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) override;
    // One value of what the gallery shows, for the registered state query.
    LRESULT AnswerStateQuery(WPARAM field) const;

    // The drag image, drawn by hand on the screen's context.
    void BeginDrag(int x, int y);
    void MoveDrag(int x, int y);
    void EndDrag();

    // The cell of item `index` with the bar's position; false when there is
    // no grid to place it in.
    bool CellRect(int index, RECT* rect) const;
    // `selectedItem` while it is still the item at `selectedIndex`; null when
    // the list has changed under it.
    CTPGalleryItem* LiveSelectedItem() const;
    void Notify();
    void CallDragListener(UINT message, WPARAM wParam, LPARAM lParam);
    void DrawDragImage(HDC dc, const RECT& rect, CTPGalleryItem* item);

    SIZE cellSize;
    int currentIndex = -1;
    int wheelScrollLines;
    HBRUSH dragPatternBrush = nullptr;
    UniqueMenu popupMenu;
    std::vector<std::unique_ptr<CTPGalleryItem>> cells;
    BOOL hasPopupMenu;
    BYTE pressReleased = 1;
    int visibleRows = 1;
    int columns = 1;
    int selectedIndex = -1;
    BOOL dragActive = FALSE;
    BOOL dragEnabled = FALSE;
    POINT pressPoint = {-1, -1};
    POINT dropPoint = {0, 0};
    uint32_t createParam1 = 0;
    uint32_t createParam2 = 0;
    int topRow = 0;
    int totalRows = 0;
    GalleryDragListener* dragListener = nullptr;
    framework::win32::UniqueDc dragDC;
    framework::win32::UniqueBitmap dragBackground;
    HGDIOBJ dragDcInitialBitmap = nullptr;
    RECT dragRect = {0, 0, 0, 0};
    CTPGalleryItem* selectedItem = nullptr;
    int mouseState = 0;
    BOOL buttonDown = FALSE;
    BYTE hasDragListener = 0;
    BYTE timerRunning = 0;
    UINT_PTR timerId = 0;
    BYTE inputLocked = 0;
    BYTE partialRow = 0;

    // Set at a left press, cleared when a drag begins; for all galleries.
    static BYTE pressedAnywhere;
    static framework::win32::Window* dropTarget;
};

}  // namespace gallery
