// Playing Windows metafiles into bitmaps for the preview renderer, centring
// the drawing in them, and turning a Windows metafile into an enhanced one.
// Plain GDI. Windows only.
//
// Every function runs its body in a try block, tests each platform call at
// once and throws its source line as an int; the catch clauses trace the
// line (with GetLastError) or report "Unexpected exception!" and give the
// failure value. After a failure nothing that was made is left.
//
// Metafile bits are rebuilt and checked (MetafileRepair.h, MetafileCheck.h)
// before GDI plays or converts them: escapes are dropped, the header is made
// to agree with the records, and GDI gets only the rebuilt copy. A metafile
// that cannot be played safely fails the function.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

namespace thumbnails {

// A new device bitmap of width x height, compatible with `reference`, with
// the metafile played into it in MM_ISOTROPIC mode over a background fill,
// then centred by CenterBitmapContent. The caller owns the bitmap. Null for a
// null metafile or context, a width or height below 1 (before any context is
// touched), a metafile that fails the check, or any failing call.
//
// The background fill covers width x width: a bitmap higher than wide keeps
// an unfilled strip at its bottom. The centring takes bytes of 0xFF as blank,
// so the background must be white (0xFFFFFF) for it to find the margins.
HBITMAP RenderMetafileToBitmap(HMETAFILE metafile, HDC reference, int width, int height, COLORREF background);

// Moves the drawing of a device bitmap to its middle by its blank (0xFF)
// margins of rows and byte columns (BitmapCentering.h): first vertically,
// then horizontally from the bytes as fetched, which drops the vertical move
// when both are needed. An entirely blank bitmap is left alone with the
// result 1. Otherwise the value GetObjectA returned (the size of a BITMAP)
// on success, 0 on failure or for a null handle.
int CenterBitmapContent(HBITMAP bitmap);

// An enhanced metafile made from the Windows metafile with SetWinMetaFileBits
// and the reference context; the caller owns it. Null for a null metafile or
// context, a width or height below 1 (which are only tested), a metafile that
// fails the check, or any failing call.
HENHMETAFILE MakeEnhancedMetafile(HDC reference, HMETAFILE metafile, int width, int height);

// A Windows metafile from its bits (starting with its own header, as behind
// a placeable header), made from their rebuilt copy when that passes the
// check; null otherwise. The caller owns it (DeleteMetaFile).
HMETAFILE CreateCheckedMetaFile(const uint8_t* bits, size_t size);

}  // namespace thumbnails
