// Our own reader for the plainest Windows BMP files: a 40-byte information
// header, no compression, 1, 4, 8, 16, 24 or 32 bits a pixel, rows bottom-up
// or top-down. Those are the renditions containers are made with, and
// reading them directly spares the platform decoder's set-up, which costs far
// more than copying a thumbnail's pixels. Portable.
//
// The bytes are untrusted: every offset and size is checked against the data
// before anything is read or allocated, and a file of any other shape (other
// headers, compression, bit fields, two bits a pixel, a palette or rows that
// the data does not hold) is declined, to be left to the platform decoder,
// which then decides whether it is a picture.
//
// What it delivers is what the platform decoder gives for the same file:
// palette pictures keep their indices and their palette (entries as stored,
// the fourth byte 0), 16-bit pixels (5 bits a channel) widen each channel as
// c << 3 | c >> 2, 32-bit pixels keep blue, green and red with the fourth
// byte 255.
#pragma once

#include <cstddef>
#include <cstdint>

#include "thumbnails/BitmapDescriptor.h"

namespace imaging {

struct BmpLayout {
    int32_t width = 0;
    int32_t height = 0;  // rows, positive
    bool topDown = false;
    int32_t bitsPerPixel = 0;
    uint32_t paletteOffset = 0;  // palette pictures: the first entry
    uint32_t paletteCount = 0;   // palette pictures: entries the file gives
    uint32_t pixelOffset = 0;    // the first stored row
    uint32_t stride = 0;         // bytes a stored row, a multiple of 4
    int32_t xPelsPerMeter = 0;
    int32_t yPelsPerMeter = 0;
};

// True, with the layout, for a file this reader takes; false to leave it to
// the platform decoder.
bool ReadBmpLayout(const uint8_t* data, size_t size, BmpLayout* layout);

// The palette entry `index` (< paletteCount) of a palette picture.
RgbQuad BmpPaletteEntry(const uint8_t* data, const BmpLayout& layout, uint32_t index);

// The pixels into new storage in `bitmap` (overwritten, not freed first), top
// row first, blue-green-red: palette pictures at their own depth with their
// palette (colorCount the entries given, at most 2^bitsPerPixel), the others
// at 24 bits, or at 32 when `wide` (the fourth byte 255).
// `data` and `size` must be those the layout was read from.
int DecodeBmp(const uint8_t* data, size_t size, const BmpLayout& layout, bool wide, BitmapDescriptor* bitmap);

}  // namespace imaging
