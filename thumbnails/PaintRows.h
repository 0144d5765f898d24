// The rows PaintBitmap hands to GDI for true-colour pictures: 32 bits a pixel,
// blue-green-red and a fourth byte, top-down, without padding. GDI copies
// such rows to a 32-bit surface almost as fast as memory, where 24-bit rows
// cost a conversion per pixel in the platform (tenfold under Wine); doing
// that conversion here, in whole 32-bit words, is much cheaper. Portable.
#pragma once

#include <cstddef>
#include <cstdint>

#include "thumbnails/BitmapDescriptor.h"

namespace imaging::kernel {

// True for the pictures ToPaintRows takes: 24 and 32 bits, either order.
bool HasPaintRows(const BitmapDescriptor& bitmap);

// Writes the picture's pixels to `out`, width * height words, row after row:
// 0xXXRRGGBB, X being 0 for 24-bit pictures (as GDI itself widens them) and
// the picture's own fourth byte for 32-bit ones. `out` holds `capacity`
// words; false, with nothing written, when that is too few or the picture
// is not one HasPaintRows takes.
bool ToPaintRows(const BitmapDescriptor& bitmap, uint32_t* out, size_t capacity);
// The same, with the processor's byte shuffles only when `shuffles` is set
// (and the processor has them), so that tests can compare both ways.
bool ToPaintRows(const BitmapDescriptor& bitmap, uint32_t* out, size_t capacity, bool shuffles);

}  // namespace imaging::kernel
