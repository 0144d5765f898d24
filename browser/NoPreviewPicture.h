// The no-preview picture: what a picture leaf shows when its file cannot be
// turned into a picture. Three lines of text on white, drawn at run time at
// the thumbnail size, so that it needs no resource. Windows only.
//
// For a square of side s, with W and H the size as displayed:
//   " No"       at (W / 3, H / 8)
//   "Preview"   at (W / 6, H / 8 + f)
//   "Available" at (W / 8, H / 8 + 2f)
// in a font of height f: H / 5 in "Bookman Old Style" when the stored width
// is exactly 128, else H / 4 in "Times New Roman" (NoPreviewFace.h finds the
// nearest serif face when these are missing). So at 128 the lines begin at
// (42, 16), (21, 41) and (16, 66) in a font 25 high; at 64 at (21, 8),
// (10, 24) and (8, 40) in a font 16 high. The leading blank of " No" is part
// of the text.
#pragma once

#include <windows.h>

#include <cstdint>

#include "thumbnails/BitmapDescriptor.h"

namespace browser {

inline constexpr char kNoPreviewFirstLine[] = " No";
inline constexpr char kNoPreviewSecondLine[] = "Preview";
inline constexpr char kNoPreviewThirdLine[] = "Available";
inline constexpr char kLargeNoPreviewFace[] = "Bookman Old Style";
inline constexpr char kSmallNoPreviewFace[] = "Times New Roman";

struct NoPreviewTextLine {
    const char* text;
    int x;
    int y;
};

struct NoPreviewLayout {
    int width;         // as displayed
    int height;        // as displayed
    int fontHeight;    // the LOGFONT height, and the distance between lines
    const char* face;  // the face asked for
    NoPreviewTextLine lines[3];
};

// The bitmap's width and height as it displays: swapped for the
// orientations 4, 5, 7 and 8, which store the picture turned.
SIZE DisplayedSize(const imaging::BitmapDescriptor& bitmap);

// Where the texts go on this bitmap and in which font. Divisions truncate.
NoPreviewLayout LayoutNoPreviewPicture(const imaging::BitmapDescriptor& bitmap);

// The font of the layout for `dc`: a zeroed LOGFONT with only the height and
// the face name set, the face being the asked one or the nearest installed
// serif face.
LOGFONTA NoPreviewFont(HDC dc, const NoPreviewLayout& layout);

// Draws the three texts into the bitmap with the context's default colours
// and background mode. kSuccess, or the failure of the imaging layer, or
// kErrorPlatform for a failing GDI call.
int DrawNoPreviewText(imaging::BitmapDescriptor* bitmap);

// A new s x s 24-bit picture, white, with the texts; the caller owns it. On
// failure `bitmap` is left as it was and the result says why (a size the
// layer refuses, kErrorInvalidParameter for a null descriptor).
int MakeNoPreviewPicture(int32_t size, imaging::BitmapDescriptor* bitmap);

}  // namespace browser
