// Small drawing routines of the window code. They paint with the context's
// current brush unless an entry says otherwise, and keep the context as they
// found it. Coordinates are logical.
#pragma once

#include <windows.h>

namespace foundation {

// GDI of the 16-bit era cannot take coordinates beyond this; PatBltRect
// keeps away from it.
inline constexpr int kPatBltSafeExtent = 16000;

// Flags of DrawHotFrame that draw the frame pressed in.
inline constexpr DWORD kHotFramePressedFlags = 0x30000;

// The raster operation PatBltRect uses on `dc`: PATINVERT under R2_XORPEN,
// 0xA50065 (pattern XNOR destination) under R2_NOTXORPEN, PATCOPY under any
// other drawing mode. So a frame follows the mode that lines are drawn in.
DWORD PatBltRasterOperation(HDC dc);

// Paints `rect` with the current brush in the raster operation above. A
// rectangle with any side beyond +-kPatBltSafeExtent is first cut to the
// context's clip box, and nothing is painted when nothing is left of it.
void PatBltRect(HDC dc, const RECT& rect);

// Selects `brush`, paints `rect` as PatBltRect does, selects the earlier
// brush back.
void FillRectWithBrush(HDC dc, const RECT& rect, HBRUSH brush);

// A frame `thickness` wide inside `rect`: full-width strips at the top and
// bottom, the sides between them. The strips never overlap and never leave
// `rect`, so a frame in an inverting mode inverts each pixel once, and a
// thickness of half the rectangle or more fills it. A thickness of 0 or
// less draws nothing.
void FrameRectThick(HDC dc, int thickness, const RECT& rect);

// A one-pixel frame inside `rect` that is open at the bottom: the top line
// and the two sides below it, as a tab or a header is framed over what it
// stands on. Like FrameRectThick, the strips never overlap.
void FrameRectOneLine(HDC dc, const RECT& rect);

// Paints with the current brush (PATCOPY, whatever the drawing mode) the
// parts of `outer` around `inner`: a strip above, one below, and one on each
// side between them, each only when it is not empty. The inner rectangle is
// taken as its part inside `outer`, so nothing outside `outer` is painted.
void FillBetweenRects(HDC dc, const RECT& outer, const RECT& inner);

// A line from (x1, y1) to (x2, y2) with the current pen, the last point left
// out; the current position ends at (x2, y2).
void DrawLine(HDC dc, int x1, int y1, int x2, int y2);

// Copies `width` x `height` pixels of `bitmap` from (sourceX, sourceY) to
// (x, y) of `dc` with raster operation `rop`, through a temporary context
// compatible with `dc`. The bitmap must not be selected into another
// context. False when nothing could be copied.
bool BlitBitmap(HDC dc, int x, int y, int width, int height, HBITMAP bitmap, int sourceX, int sourceY,
                DWORD rop);

// A frame one pixel wide inside `rect`: the top and left lines in system
// colour `topLeftIndex`, the bottom and right lines in `bottomRightIndex`,
// the colours as they are now.
void Draw3dFrame(HDC dc, const RECT& rect, int topLeftIndex, int bottomRightIndex);

// The frame of a flat button by its state. Pressed (flags &
// kHotFramePressedFlags): shadow over highlight, sunken. Otherwise, when the
// context belongs to a window and the cursor is inside `rect` (in that
// window's client coordinates): highlight over shadow, raised; else flat in
// the button face. `inner`, when given, receives `rect` reduced by 1 on
// every side.
void DrawHotFrame(HDC dc, RECT* inner, const RECT& rect, DWORD flags);

}  // namespace foundation
