// The drawing objects that every window of the control shares: brushes and
// pens of the system colours and of other colours, the three fonts, the
// halftone brush, the shared palette, the clipboard formats of embedding and
// the screen rectangle. Each is made at its first request, once per
// process, and stays until ReleaseStdObjects. What a getter hands out belongs
// to the tables: callers select it and never delete it.
//
// A getter whose object cannot be made returns null; callers draw with what
// they get. The tables belong to the one user-interface thread.
//
// Several names are those of system functions (GetSysColorBrush): call them
// qualified, foundation::GetSysColorBrush. Unlike the system's, these brushes
// and pens keep the colour they were made with when the user changes colours.
#pragma once

#include <windows.h>

#include <cstdint>

#include "foundation/ColorMath.h"
#include "foundation/FoundationStrings.h"

namespace foundation {

class CSharedPalette;

inline constexpr int kSysColorTableSize = 30;
inline constexpr int kColorEntryTableSize = 30;
inline constexpr int kClipboardFormatCount = 10;

// The entry of GetClipboardFormats() for each format name.
enum ClipboardFormatIndex {
    kClipboardNative,                // "Native"
    kClipboardOwnerLink,             // "OwnerLink"
    kClipboardObjectLink,            // "ObjectLink"
    kClipboardEmbeddedObject,        // "Embedded Object"
    kClipboardEmbedSource,           // "Embed Source"
    kClipboardLinkSource,            // "Link Source"
    kClipboardObjectDescriptor,      // "Object Descriptor"
    kClipboardLinkSourceDescriptor,  // "Link Source Descriptor"
    kClipboardFileName,              // "FileName"
    kClipboardFileNameW,             // "FileNameW"
};

// Resource ids of the font faces.
inline constexpr long kStdFontFaceId = IDS_STD_FONT_FACE;
inline constexpr long kStdFontFixedHeightFaceId = IDS_STD_FONT_FIXED_FACE;

// A brush of GetSysColor(index) as it was at the first request; null for an
// index outside 0..29.
HBRUSH GetSysColorBrush(int index);
// A solid pen of width 0 in GetSysColor(index), as GetSysColorBrush.
HPEN GetSysColorPen(int index);

// A solid brush and a solid pen of width 0 for a colour. A colour's brush
// and pen share one of 30 entries, taken in order of first request and never
// given back. A request for a 31st colour throws the assertion (ThrowAssert
// with "Stdobj", line 223): the shared colours are a handful by design.
HBRUSH GetColorBrush(ColorRef color);
HPEN GetColorPen(ColorRef color);
// How many colour entries are in use.
int GetColorEntryCount();

// Swiss fonts of variable pitch and weight 400. The small and large fonts
// (height 14 and 18, the default character set) take their face from resource
// 6104, the fixed-height one (height -12, ANSI) from 6110. On a
// double-byte system, and when a font cannot be made, the system font
// stands in.
HFONT GetStdFontSmall();
HFONT GetStdFontLarge();
HFONT GetStdFontFixedHeight();

// An 8 x 8 checkerboard of the button face and button highlight colours, as
// they were at the first request; null when its bitmap cannot be made.
HBRUSH GetHalftoneBrush();

// "KToolBar", a window class of this module registered at the first call:
// double clicks, DefWindowProc, the arrow cursor, the button face.
const char* GetToolBarClassName();

// The shared palette, created at the first call.
CSharedPalette* GetSharedPalette();

// The kClipboardFormatCount registered format numbers, in the order of
// ClipboardFormatIndex.
const UINT* GetClipboardFormats();

// Left 0, top 0, the screen's width and height, measured at the first call.
const RECT* GetScreenRect();

// Deletes every shared object, empties the tables and forgets the screen
// rectangle; run once at process end. A getter called afterwards would make
// its object again, so nothing may draw after this.
void ReleaseStdObjects();
// True once ReleaseStdObjects has run.
bool AreStdObjectsReleased();

// Where the tables ask for GetSystemMetrics (the screen's size, whether the
// system is double-byte). Replaceable, so that tests can answer for the
// system; null restores GetSystemMetrics. Returns the query it replaces.
using SystemMetricsQuery = int (*)(int index);
SystemMetricsQuery SetStdObjectsMetricsQuery(SystemMetricsQuery query);

}  // namespace foundation
