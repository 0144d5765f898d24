// The imaging interface of the control: loading pictures from files and
// memory, their information, saving as BMP, resizing and colour reduction,
// drawing into a bitmap and painting it. Windows only; the operations that
// need no platform are declared in BitmapKernel.h, included here, and the
// records, constants and limits in BitmapDescriptor.h.
//
// Results: kSuccess (1) or a negative error code; nothing throws. Trailing
// arguments named `options` or `reserved` must be 0.
//
// Formats, recognised by content, never by name: BMP, JPEG, PNG, GIF (first
// image), TIFF (first page) and icons (the largest image) through WIC; EMF
// and Windows metafiles (placeable or plain) through GDI, played onto white
// at their natural size on the screen, at most kMaxMetafileSide pixels on the
// longer side.
//
// COM: a thread's first decode initialises COM on it when the thread has not
// done so itself (balanced when the thread ends) and makes the WIC factory
// that the thread's later decodes use; a thread that chose an apartment model
// keeps it. ReleaseImagingThreads gives all of that back early.
//
// Threads: decoding keeps its state per thread; open drawing contexts and the
// colour match state are process-wide, meant for one thread.
#pragma once

#include <windows.h>

#include <cstdint>

#include "thumbnails/BitmapDescriptor.h"
#include "thumbnails/BitmapKernel.h"

namespace imaging {

constexpr int32_t kMaxMetafileSide = 2048;

// ---- File input and output -------------------------------------------------

// Loads the picture at `path` into `bitmap` (overwritten, not freed first) at
// bitsPerPixel 1, 4, 8, 24 or 32, or 0 for the file's own depth
// (FileInfo::fileBitsPerPixel), and colorOrder kColorOrderBgr or
// kColorOrderRgb (24 and 32 bits; palette pictures are always recorded BGR).
// Transparent pixels are laid on white, except in a 32-bit load, which keeps
// the alpha in the fourth byte.
int LoadBitmapFile(const char* path, BitmapDescriptor* bitmap, int32_t bitsPerPixel, int32_t colorOrder,
                   const void* options);
int LoadBitmapMemory(const void* buffer, BitmapDescriptor* bitmap, int32_t bitsPerPixel, int32_t colorOrder,
                     uint32_t bufferSize, const void* options);

// Fills `info` (all sizeof(FileInfo) bytes) for a picture; kErrorUnknownFormat
// when the bytes are no picture the layer knows. Nothing is decoded beyond
// the headers.
int QueryFileInfo(const char* path, FileInfo* info, uint32_t flags, const void* options);
int QueryMemoryInfo(const void* buffer, FileInfo* info, uint32_t bufferSize, uint32_t flags,
                    const void* options);

// A whole Windows BMP file of the bitmap at 24 bits in new movable global
// memory, which passes to the caller (GlobalLock, GlobalFree). format must be
// kFormatBmp and bitsPerPixel 24; quality is not looked at. On failure
// *memory is null and *size 0.
int SaveBitmapMemory(HGLOBAL* memory, const BitmapDescriptor* bitmap, int32_t format, int32_t bitsPerPixel,
                     int32_t quality, uint32_t* size, const void* options);

// ---- Access -----------------------------------------------------------------

// Brings the pixels up to date with what any open bitmap context has drawn
// (see CreateBitmapContext); the contexts stay open. An empty descriptor is
// kSuccess.
int ReleaseBitmap(BitmapDescriptor* bitmap);

// ---- Drawing into a bitmap --------------------------------------------------

// A memory device context that draws into the bitmap. GDI cannot draw into
// memory it did not allocate, so the context draws on a DIB section that
// starts as a copy of the pixels; DeleteBitmapContext (and ReleaseBitmap)
// copy the drawing back. Keep the bitmap's size and depth while the context
// is open: if its storage is given back or replaced (FreeBitmap, SizeBitmap,
// ReduceBitmapDepth, ReduceBitmapColors in place), the drawing is no longer
// copied. Null on failure.
HDC CreateBitmapContext(BitmapDescriptor* bitmap);
// Copies the drawing back and deletes the context; kErrorInvalidParameter
// for a context that CreateBitmapContext did not make.
int DeleteBitmapContext(HDC dc);

// ---- Display ----------------------------------------------------------------

// Paints the bitmap, or its `source` rectangle (null: all of it), scaled to
// the `target` rectangle (null: the bitmap's size at 0, 0) of `dc` with the
// raster operation `rop`. A target with right < left or bottom < top mirrors.
// The scaling is this layer's own area-averaging resampler, so the result
// does not depend on the device's stretching. targetClip, when given, limits
// the painting; sourceClip must be null.
int PaintBitmap(HDC dc, const BitmapDescriptor* bitmap, const RECT* source, const RECT* sourceClip,
                const RECT* target, const RECT* targetClip, DWORD rop);

// A logical palette for painting the bitmap on a palette device: its own
// colours for palette pictures, the halftone palette otherwise. The caller
// deletes it with DeleteObject. Null on failure.
HPALETTE CreatePaintPalette(HDC dc, const BitmapDescriptor* bitmap);

// Loads the picture of a device-dependent bitmap into `bitmap` (overwritten,
// not freed first) at 24 bits, blue-green-red. `dc` (null: the screen) gives
// the colours of palette bitmaps. The device bitmap must not be selected into
// a context. flags must be 0.
int ConvertFromDeviceBitmap(HDC dc, BitmapDescriptor* bitmap, HBITMAP deviceBitmap, uint32_t flags);

// ---- Windows colour tables ----------------------------------------------------
// The same operations for callers that hold RGBQUAD tables.
ColorMatchTable* CreateColorMatchTable(const RGBQUAD* colors, int32_t colorCount);
int ReduceBitmapColors(const BitmapDescriptor* source, BitmapDescriptor* target, int32_t bitsPerPixel,
                       uint32_t flags, const RGBQUAD* colors, const void* paletteHandle, int32_t colorCount,
                       const void* callback, const void* userData);

// ---- Module lifetime -----------------------------------------------------------
// Lets go of every thread's WIC factory and kept decoder, for a module that
// is unloaded while the process goes on; COM is uninitialised where the
// layer initialised it on the calling thread. Decoding afterwards starts
// afresh.
void ReleaseImagingThreads();

}  // namespace imaging
