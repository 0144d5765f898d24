// The arithmetic of centring a played metafile in its bitmap, on the raw bytes
// of the bitmap as GetBitmapBits gives them. Portable; CenterBitmapContent
// (BitmapHelpers.h) wraps it in the GDI calls.
//
// A byte of 0xFF is blank and any other byte is drawing, so a "column" is a
// column of bytes, not of pixels, and the background must be white. The
// horizontal move is rounded to whole pixels in a lopsided way (see
// RoundColumnShift), and it is built from the bytes as fetched, so it drops
// any vertical move made before it: a picture that needs both ends up centred
// horizontally only. Both quirks are the behaviour, not accidents to mend.
#pragma once

#include <cstddef>
#include <cstdint>

namespace thumbnails {

struct CenteringPlan {
    bool blank = false;  // no drawn byte at all: nothing moves
    int32_t top = 0;     // blank rows above the drawing
    int32_t bottom = 0;  // blank rows below it
    int32_t left = 0;    // blank byte columns left of it
    int32_t right = 0;   // blank byte columns right of it
    int32_t shiftY = 0;  // (top - bottom) / 2: negative moves the drawing down
    int32_t shiftX = 0;  // (left - right) / 2 after RoundColumnShift: negative moves it right

    // A shift of one row or column never moves anything.
    bool MovesVertically() const { return shiftY > 1 || shiftY < -1; }
    bool MovesHorizontally() const { return shiftX > 1 || shiftX < -1; }
};

// Counts the blank margins of `widthBytes` x `height` bytes (rows of
// widthBytes bytes, top row first). Passes over rows stop at the first drawn
// byte, passes over columns likewise. The margins of a blank bitmap are left
// at 0 apart from `top`, which is the height.
CenteringPlan PlanCentering(const uint8_t* bytes, int32_t widthBytes, int32_t height, int32_t bitsPerPixel);

// The pixel rounding of a horizontal shift: with P = bitsPerPixel / 8 (at
// least 1) and R = shiftX % P (with the sign of shiftX), a shift below 1 gets
// R added and any other has R taken away. So a positive shift comes down to
// whole pixels, while a negative one grows by R bytes and generally splits
// pixels: at 24 bits 4 becomes 3, but -4 becomes -5.
int32_t RoundColumnShift(int32_t shiftX, int32_t bitsPerPixel);

// `target` = `source` moved by shiftY rows: for a negative shift the first
// -shiftY rows are blank (0xFF) and the source follows, cut to the buffer;
// for a positive one the source from row shiftY on comes first and blank
// rows fill the rest. Shifts beyond the height blank everything.
void ShiftRows(const uint8_t* source, uint8_t* target, int32_t widthBytes, int32_t height, int32_t shiftY);

// `target` = `source` moved by shiftX byte columns in every row: for a
// negative shift the first -shiftX columns are blank and the row's first
// widthBytes + shiftX bytes follow; for a positive one the row's bytes from
// column shiftX on come first and blank columns fill its end. Shifts beyond
// the width blank the rows.
void ShiftColumns(const uint8_t* source, uint8_t* target, int32_t widthBytes, int32_t height, int32_t shiftX);

}  // namespace thumbnails
