// The operations on bitmap descriptors that need no platform: creating,
// filling, copying, freeing, resizing, depth and colour reduction, the grey
// test and the colour match tables. Portable; thumbnails/Imaging.h adds the
// file, painting and device-context operations on Windows.
//
// Every operation returns kSuccess or one of the error codes of
// BitmapDescriptor.h and throws nothing. A descriptor that an operation
// fails on is left as it was, except where an entry below says otherwise.
#pragma once

#include <cstddef>
#include <cstdint>

#include "thumbnails/BitmapDescriptor.h"

namespace imaging {

// An RGB-to-palette-index lookup for one colour table: a 32x32x32 cube over
// the top 5 bits of each channel, filled on first use of each cell, with the
// table's own colours always mapping to themselves.
struct ColorMatchTable;

// A new bitmap of the given size, its pixels 0 (black, or palette entry 0).
// memoryKind must be kMemoryConventional. bitsPerPixel 1, 4, 8, 24 or 32.
// colorOrder applies to 24 and 32 bits. palette: null for a grey ramp, or
// 2^bitsPerPixel entries to copy (bitsPerPixel <= 8 only). viewPerspective
// 0 or kViewTopLeft. data must be null and dataSize 0: the layer always owns
// its pixels. What `bitmap` held before is overwritten, not freed.
int CreateBitmap(BitmapDescriptor* bitmap, int32_t memoryKind, int32_t width, int32_t height,
                 int32_t bitsPerPixel, int32_t colorOrder, const RgbQuad* palette, int32_t viewPerspective,
                 const void* data, uint32_t dataSize);

// Sets every pixel to `color`, given as 0x00BBGGRR (a Windows COLORREF; the
// top byte is not looked at). Palette pictures take the nearest entry.
int FillBitmap(BitmapDescriptor* bitmap, uint32_t color);

// A full copy with storage of its own in `target`; what `target` held before
// is overwritten, not freed.
int CopyBitmap(BitmapDescriptor* target, const BitmapDescriptor* source);

// Gives the storage back and zero-fills the descriptor. An empty descriptor
// is kSuccess. A stale copy (storage already given back) is zero-filled and
// answers kErrorInvalidBitmap.
int FreeBitmap(BitmapDescriptor* bitmap);

// Resizes in place. flags kSizeResample or kSizeResampleFavourBlack (see
// thumbnails/Resampler.h for the filters). 24 and 32 bits keep depth and
// order; palette pictures come back as 8-bit grey (grey palette) or 24-bit
// blue-green-red. With kSizeResampleFavourBlack a 1-bit picture stays 1-bit
// and keeps its palette, the darker entry being the one favoured. A width or
// height below 1 fails and leaves the bitmap as it was.
int SizeBitmap(BitmapDescriptor* bitmap, int32_t width, int32_t height, uint32_t flags);

// Converts in place to 1, 4, 8, 24 or 32 bits. Towards fewer colours: the
// picture's own colours when they fit, a grey ramp for grey pictures, else a
// median-cut palette; each pixel takes its nearest entry, without dithering.
int ReduceBitmapDepth(BitmapDescriptor* bitmap, int32_t bitsPerPixel);

// 1 when every colour of the picture is grey (red = green = blue): for palette
// pictures, every meaningful palette entry; otherwise every pixel. 0 when not,
// and for an invalid descriptor.
int IsGrayScaleBitmap(const BitmapDescriptor* bitmap);

// Maps every pixel of `source` to the nearest of `colors` and puts the result,
// at bitsPerPixel (1, 4 or 8) with `colors` as its palette, into `target`.
// target may be source itself, whose old storage is then given back. flags
// must be kColorReductionUserPalette; paletteHandle, callback and userData
// must be null. The current colour match table is used when it was made for
// exactly these colours, otherwise a temporary one.
int ReduceBitmapColors(const BitmapDescriptor* source, BitmapDescriptor* target, int32_t bitsPerPixel,
                       uint32_t flags, const RgbQuad* colors, const void* paletteHandle, int32_t colorCount,
                       const void* callback, const void* userData);

// A lookup table for 1 to 256 colours, or null.
ColorMatchTable* CreateColorMatchTable(const RgbQuad* colors, int32_t colorCount);
// Makes `table` (or none, for null) the one ReduceBitmapColors prefers.
// The colour match state is process-wide and meant for one thread.
int SetColorMatchTable(ColorMatchTable* table);
// Frees a table made by CreateColorMatchTable; if it is current, none is.
int FreeColorMatchTable(ColorMatchTable* table);

// ---- Building blocks of the platform layer --------------------------------
namespace kernel {

// Row stride of a DIB-compatible row, or 0 when width or depth is invalid.
int32_t BytesPerLine(int32_t width, int32_t bitsPerPixel);

// kSuccess when `bitmap` describes live storage of this layer consistently.
int CheckBitmap(const BitmapDescriptor* bitmap);

// New zero-filled storage for a picture of this format; the descriptor is
// overwritten. Palette pictures get a palette of 2^bitsPerPixel zero entries
// and colorCount 0. Fails with kErrorTooLarge beyond the limits.
int AllocateBitmap(BitmapDescriptor* bitmap, int32_t width, int32_t height, int32_t bitsPerPixel,
                   int32_t colorOrder);

// The same with rows left as the allocator gives them, for a caller that
// writes every byte of every row (the padding at their ends included); the
// rest of the storage (beyond the rows, the palette) is zero as above. Spares
// a pass over the picture where the rows are written anyway.
int AllocateBitmapRowsUncleared(BitmapDescriptor* bitmap, int32_t width, int32_t height, int32_t bitsPerPixel,
                                int32_t colorOrder);

// Gives back the storage `bitmap` holds and moves `replacement` into it.
void ReplaceBitmap(BitmapDescriptor* bitmap, const BitmapDescriptor& replacement);

uint8_t* Row(const BitmapDescriptor& bitmap, int32_t y);

// A new bitmap with the pixels of `source` at another depth and order
// (bitsPerPixel 0 keeps the depth).
int ConvertBitmap(const BitmapDescriptor& source, int32_t bitsPerPixel, int32_t colorOrder,
                  BitmapDescriptor* target);

// A new bitmap of width x height from the part of `source` at (x, y) of size
// sourceWidth x sourceHeight. flags as for SizeBitmap; the favour-black form
// takes the whole picture only.
int ResizeRegion(const BitmapDescriptor& source, int32_t x, int32_t y, int32_t sourceWidth,
                 int32_t sourceHeight, int32_t width, int32_t height, uint32_t flags,
                 BitmapDescriptor* target);

// Blends a 32-bit picture's pixels onto white by their alpha, which becomes 255.
void CompositeOnWhite(BitmapDescriptor* bitmap);

// A whole 24-bit Windows BMP file of the picture (rows bottom-up, as readers
// expect). Bmp24FileSize is 0 for an invalid descriptor.
uint64_t Bmp24FileSize(const BitmapDescriptor& bitmap);
int EncodeBmp24(const BitmapDescriptor& bitmap, uint8_t* out, size_t size);

// Called with the storage pointer whenever storage is given back, so that the
// platform layer can let go of anything tied to it (open drawing contexts).
using StorageObserver = void (*)(const void* storage);
void SetStorageObserver(StorageObserver observer);

// Live storage blocks; for tests that check nothing leaks.
size_t LiveStorageCount();

}  // namespace kernel

}  // namespace imaging
