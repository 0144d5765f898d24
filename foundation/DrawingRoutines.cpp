#include "foundation/DrawingRoutines.h"

#include <climits>
#include <cstdint>

#include "framework/win32/GdiHandles.h"

namespace foundation {

namespace {

constexpr DWORD kPatternXnorDestination = 0xA50065;

bool WithinSafeExtent(LONG value) {
    return value >= -kPatBltSafeExtent && value <= kPatBltSafeExtent;
}

// Rectangle arithmetic in 64 bits: a thickness or an offset may take a
// coordinate past what an int holds.
struct WideRect {
    std::int64_t left, top, right, bottom;
};

bool IsEmpty(const WideRect& r) {
    return r.left >= r.right || r.top >= r.bottom;
}

LONG ClampToLong(std::int64_t value) {
    if (value < INT_MIN) return INT_MIN;
    if (value > INT_MAX) return INT_MAX;
    return static_cast<LONG>(value);
}

RECT Narrow(const WideRect& r) {
    return RECT{ClampToLong(r.left), ClampToLong(r.top), ClampToLong(r.right), ClampToLong(r.bottom)};
}

void PatBltStrip(HDC dc, const WideRect& strip) {
    if (!IsEmpty(strip)) PatBltRect(dc, Narrow(strip));
}

// PatBlt takes width and height as ints; a strip too wide for one cannot be
// painted and is left out.
void PatCopyStrip(HDC dc, const WideRect& strip) {
    if (IsEmpty(strip)) return;
    const std::int64_t width = strip.right - strip.left;
    const std::int64_t height = strip.bottom - strip.top;
    if (width > INT_MAX || height > INT_MAX) return;
    ::PatBlt(dc, static_cast<int>(strip.left), static_cast<int>(strip.top), static_cast<int>(width),
             static_cast<int>(height), PATCOPY);
}

std::int64_t Clamp(std::int64_t value, std::int64_t low, std::int64_t high) {
    return value < low ? low : (value > high ? high : value);
}

// Paints like CDC::FillSolidRect, but gives the context its background
// colour back.
void FillSolid(HDC dc, const RECT& rect, COLORREF color) {
    if (rect.left >= rect.right || rect.top >= rect.bottom) return;
    const COLORREF previous = ::SetBkColor(dc, color);
    ::ExtTextOutA(dc, 0, 0, ETO_OPAQUE, &rect, nullptr, 0, nullptr);
    if (previous != CLR_INVALID) ::SetBkColor(dc, previous);
}

}  // namespace

DWORD PatBltRasterOperation(HDC dc) {
    switch (::GetROP2(dc)) {
        case R2_XORPEN: return PATINVERT;
        case R2_NOTXORPEN: return kPatternXnorDestination;
        default: return PATCOPY;
    }
}

void PatBltRect(HDC dc, const RECT& rect) {
    const DWORD rop = PatBltRasterOperation(dc);
    if (WithinSafeExtent(rect.left) && WithinSafeExtent(rect.top) && WithinSafeExtent(rect.right) &&
        WithinSafeExtent(rect.bottom)) {
        ::PatBlt(dc, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top, rop);
        return;
    }
    RECT clip = {};
    if (::GetClipBox(dc, &clip) == ERROR) return;
    RECT visible = {};
    if (!::IntersectRect(&visible, &rect, &clip)) return;
    ::PatBlt(dc, visible.left, visible.top, visible.right - visible.left, visible.bottom - visible.top, rop);
}

void FillRectWithBrush(HDC dc, const RECT& rect, HBRUSH brush) {
    const framework::win32::SelectionGuard selection(dc, brush);
    if (!selection.Succeeded()) return;
    PatBltRect(dc, rect);
}

void FrameRectThick(HDC dc, int thickness, const RECT& rect) {
    if (thickness <= 0) return;
    const WideRect r{rect.left, rect.top, rect.right, rect.bottom};
    if (IsEmpty(r)) return;
    const std::int64_t t = thickness;
    const WideRect top{r.left, r.top, r.right, Clamp(r.top + t, r.top, r.bottom)};
    const WideRect bottom{r.left, Clamp(r.bottom - t, top.bottom, r.bottom), r.right, r.bottom};
    const WideRect left{r.left, top.bottom, Clamp(r.left + t, r.left, r.right), bottom.top};
    const WideRect right{Clamp(r.right - t, left.right, r.right), top.bottom, r.right, bottom.top};
    PatBltStrip(dc, top);
    PatBltStrip(dc, bottom);
    PatBltStrip(dc, left);
    PatBltStrip(dc, right);
}

void FrameRectOneLine(HDC dc, const RECT& rect) {
    const WideRect r{rect.left, rect.top, rect.right, rect.bottom};
    if (IsEmpty(r)) return;
    const WideRect top{r.left, r.top, r.right, r.top + 1};
    const WideRect left{r.left, top.bottom, r.left + 1, r.bottom};
    const WideRect right{Clamp(r.right - 1, left.right, r.right), top.bottom, r.right, r.bottom};
    PatBltStrip(dc, top);
    PatBltStrip(dc, left);
    PatBltStrip(dc, right);
}

void FillBetweenRects(HDC dc, const RECT& outer, const RECT& inner) {
    const WideRect o{outer.left, outer.top, outer.right, outer.bottom};
    if (IsEmpty(o)) return;
    // The inner rectangle's part inside the outer one; an inner rectangle
    // outside it, or empty, leaves the whole of the outer one to paint.
    const std::int64_t top = Clamp(inner.top, o.top, o.bottom);
    const std::int64_t bottom = Clamp(inner.bottom, top, o.bottom);
    const std::int64_t left = Clamp(inner.left, o.left, o.right);
    const std::int64_t right = Clamp(inner.right, left, o.right);
    PatCopyStrip(dc, WideRect{o.left, o.top, o.right, top});
    PatCopyStrip(dc, WideRect{o.left, bottom, o.right, o.bottom});
    PatCopyStrip(dc, WideRect{o.left, top, left, bottom});
    PatCopyStrip(dc, WideRect{right, top, o.right, bottom});
}

void DrawLine(HDC dc, int x1, int y1, int x2, int y2) {
    ::MoveToEx(dc, x1, y1, nullptr);
    ::LineTo(dc, x2, y2);
}

bool BlitBitmap(HDC dc, int x, int y, int width, int height, HBITMAP bitmap, int sourceX, int sourceY,
                DWORD rop) {
    if (bitmap == nullptr) return false;
    const framework::win32::UniqueDc source(::CreateCompatibleDC(dc));
    if (!source) return false;
    const framework::win32::SelectionGuard selection(source.Get(), bitmap);
    if (!selection.Succeeded()) return false;
    return ::BitBlt(dc, x, y, width, height, source.Get(), sourceX, sourceY, rop) != FALSE;
}

void Draw3dFrame(HDC dc, const RECT& rect, int topLeftIndex, int bottomRightIndex) {
    const COLORREF topLeft = ::GetSysColor(topLeftIndex);
    const COLORREF bottomRight = ::GetSysColor(bottomRightIndex);
    const WideRect r{rect.left, rect.top, rect.right, rect.bottom};
    // The top and left lines stop one short of the far corners, which belong
    // to the bottom and right lines.
    FillSolid(dc, Narrow(WideRect{r.left, r.top, r.right - 1, r.top + 1}), topLeft);
    FillSolid(dc, Narrow(WideRect{r.left, r.top, r.left + 1, r.bottom - 1}), topLeft);
    FillSolid(dc, Narrow(WideRect{r.right - 1, r.top, r.right, r.bottom}), bottomRight);
    FillSolid(dc, Narrow(WideRect{r.left, r.bottom - 1, r.right, r.bottom}), bottomRight);
}

void DrawHotFrame(HDC dc, RECT* inner, const RECT& rect, DWORD flags) {
    if ((flags & kHotFramePressedFlags) != 0) {
        Draw3dFrame(dc, rect, COLOR_BTNSHADOW, COLOR_BTNHIGHLIGHT);
    } else {
        bool hot = false;
        if (const HWND window = ::WindowFromDC(dc)) {
            POINT cursor = {};
            hot = ::GetCursorPos(&cursor) && ::ScreenToClient(window, &cursor) && ::PtInRect(&rect, cursor);
        }
        if (hot)
            Draw3dFrame(dc, rect, COLOR_BTNHIGHLIGHT, COLOR_BTNSHADOW);
        else
            Draw3dFrame(dc, rect, COLOR_BTNFACE, COLOR_BTNFACE);
    }
    if (inner != nullptr) {
        const WideRect r{rect.left, rect.top, rect.right, rect.bottom};
        *inner = Narrow(WideRect{r.left + 1, r.top + 1, r.right - 1, r.bottom - 1});
    }
}

}  // namespace foundation
