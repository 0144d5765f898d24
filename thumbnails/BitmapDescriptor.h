// The imaging layer's records: the bitmap descriptor, the file information
// record, palette entries, result codes and limits. Portable: no Windows
// header, so that the pixel work builds and is tested natively too.
//
// Pixel layout of a descriptor's storage:
//   - rows are stored top-down: row 0 is the top of the picture
//     (`viewPerspective` is kViewTopLeft, the only value the layer makes);
//   - each row is `bytesPerLine` bytes, padded to a multiple of 4 as in a
//     Windows DIB, so rows can go to GDI without repacking;
//   - 1 and 4 bits per pixel pack the leftmost pixel in the high bits;
//   - 24 bits: 3 bytes a pixel, 32 bits: 4 bytes a pixel (the fourth is
//     alpha for decoded pictures with transparency, 255 otherwise), in
//     blue-green-red order for kColorOrderBgr, red-green-blue for kColorOrderRgb;
//   - 1, 4 and 8 bits index `palette`, which always has 2^bitsPerPixel
//     entries, of which the first `colorCount` are meaningful; the rest are 0.
//     Palette pictures record kColorOrderBgr, the order of the entries.
//
// Ownership: a descriptor is plain data. Copying its bytes makes a second
// reference to the same storage; FreeBitmap gives the storage back once, and
// every other copy is stale from then on. The layer keeps a register of the
// storage it handed out, so a stale copy is refused (kErrorInvalidBitmap)
// instead of being read.
#pragma once

#include <cstddef>
#include <cstdint>

namespace imaging {

// ---- Results -------------------------------------------------------------
// Every operation returns one of these. Callers compare with kSuccess, never
// with "non-zero".
constexpr int kSuccess = 1;
constexpr int kErrorNoMemory = -1;
constexpr int kErrorInvalidBitmap = -2;     // empty, stale or inconsistent descriptor
constexpr int kErrorInvalidParameter = -3;  // an argument outside what the operation takes
constexpr int kErrorTooLarge = -4;          // beyond kMaxSide or kMaxStorageBytes
constexpr int kErrorCorrupt = -5;           // a known format whose bytes cannot be decoded
constexpr int kErrorPlatform = -6;          // a GDI, COM or WIC call failed
constexpr int kErrorFileRead = -7;          // the file cannot be opened or read
constexpr int kErrorUnsupported = -8;       // a format, depth or flag that is not offered
constexpr int kErrorUnknownFormat = -9;     // the bytes are no picture the layer knows

// ---- Constants of the operations ------------------------------------------
constexpr int32_t kColorOrderRgb = 0;
constexpr int32_t kColorOrderBgr = 1;

constexpr int32_t kMemoryConventional = 1;  // CreateBitmap: the only memory kind

constexpr int32_t kViewTopLeft = 1;  // rows top-down, not turned

// SizeBitmap flags.
constexpr uint32_t kSizeResample = 2;
// For 1-bit pictures: a target pixel is dark when any source pixel under it
// is; other pictures are resampled as with kSizeResample.
constexpr uint32_t kSizeResampleFavourBlack = 3;

// ReduceBitmapColors flags: map every pixel to the nearest of the colours
// given in the call (no dithering). The only combination offered.
constexpr uint32_t kColorReductionUserPalette = 0x70030;

// File formats, as reported in FileInfo::format and taken by SaveBitmapMemory.
constexpr int32_t kFormatBmp = 6;
constexpr int32_t kFormatJpeg = 10;
constexpr int32_t kFormatPng = 11;
constexpr int32_t kFormatGif = 12;
constexpr int32_t kFormatTiff = 13;
constexpr int32_t kFormatIcon = 14;
constexpr int32_t kFormatEmf = 15;
constexpr int32_t kFormatWmf = 16;

// ---- Limits ---------------------------------------------------------------
// Checked before anything is allocated for a picture: a header that claims
// more fails with kErrorTooLarge.
constexpr int32_t kMaxSide = 16384;
constexpr uint64_t kMaxStorageBytes = 256ull * 1024 * 1024;
// Input files and buffers are read whole; the same cap applies.
constexpr uint64_t kMaxInputBytes = 256ull * 1024 * 1024;
// Storage is never smaller than this: a caller may keep a path text (up to
// 260 characters) at the start of a small picture's storage.
constexpr uint32_t kMinimumStorageBytes = 512;

// ---- Records --------------------------------------------------------------

// One palette entry, laid out as the Windows RGBQUAD.
struct RgbQuad {
    uint8_t blue;
    uint8_t green;
    uint8_t red;
    uint8_t reserved;
};
static_assert(sizeof(RgbQuad) == 4, "RgbQuad is four bytes, as RGBQUAD");

// 39 32-bit words on 32-bit Windows; on 64-bit the two pointers widen.
// Zero-filled means empty.
struct BitmapDescriptor {
    uint32_t structSize;      // word 0: sizeof(BitmapDescriptor) when it holds a bitmap
    void* storage;            // word 1: first byte of row 0
    int32_t width;            // word 2: pixels
    int32_t height;           // word 3: pixels
    int32_t bitsPerPixel;     // word 4: 1, 4, 8, 24 or 32
    int32_t bytesPerLine;     // word 5: row stride, a multiple of 4
    uint32_t storageSize;     // word 6: bytesPerLine * height
    int32_t colorOrder;       // word 7: kColorOrderBgr or kColorOrderRgb
    int32_t colorCount;       // word 8: meaningful palette entries (0 above 8 bits)
    RgbQuad* palette;         // word 9: 2^bitsPerPixel entries, or null above 8 bits
    uint32_t flags;           // word 10: reserved, 0
    int32_t viewPerspective;  // word 11: kViewTopLeft
    int32_t xResolution;      // word 12: dots per inch, 0 when unknown
    int32_t yResolution;      // word 13
    uint32_t reserved[25];    // words 14..38
};

// Written by QueryFileInfo and QueryMemoryInfo: 282 words, no pointers, so
// the same offsets on every build.
struct FileInfo {
    uint32_t structSize;         // word 0: sizeof(FileInfo)
    int32_t format;              // word 1: kFormat...
    int32_t width;               // word 2
    int32_t height;              // word 3
    int32_t pageCount;           // word 4: frames or pages in the file
    int32_t xResolution;         // word 5: dots per inch, 0 when unknown
    int32_t yResolution;         // word 6
    int32_t fileBitsPerPixel;    // word 7: the file's depth as the layer loads it (1, 4, 8, 24, 32)
    int32_t storedBitsPerPixel;  // word 8: the depth the file stores, as its codec reports
    int32_t colorCount;          // word 9: palette entries, 0 without a palette
    int32_t isGrayScale;         // word 10: 1 for grey pixel formats and all-grey palettes
    int32_t hasAlpha;            // word 11: 1 when the pixels carry transparency
    uint32_t fileSize;           // word 12: bytes of the file or buffer
    int32_t pageNumber;          // word 13: the frame described and loaded (icons: the largest)
    int32_t reserved14[2];       // words 14, 15
    int32_t fileOrder;           // word 16: the order of a load at fileBitsPerPixel
    int32_t viewPerspective;     // word 17: kViewTopLeft
    char formatName[16];         // words 18..21: "BMP", "JPEG", ... NUL-terminated
    uint32_t reserved[260];      // words 22..281
};

static_assert(offsetof(FileInfo, fileBitsPerPixel) == 7 * 4, "fileBitsPerPixel is word 7");
static_assert(offsetof(FileInfo, fileOrder) == 16 * 4, "fileOrder is word 16");
static_assert(sizeof(FileInfo) == 1128, "the caller reserves 1128 bytes");

static_assert(offsetof(BitmapDescriptor, width) == 2 * sizeof(void*), "width follows storage");
static_assert(offsetof(BitmapDescriptor, height) == offsetof(BitmapDescriptor, width) + 4,
              "height follows width");
static_assert(offsetof(BitmapDescriptor, bitsPerPixel) == offsetof(BitmapDescriptor, width) + 8,
              "bitsPerPixel follows height");
#if UINTPTR_MAX == 0xFFFFFFFFu
static_assert(sizeof(BitmapDescriptor) == 156, "39 words on 32-bit builds");
static_assert(offsetof(BitmapDescriptor, storage) == 1 * 4, "storage is word 1");
static_assert(offsetof(BitmapDescriptor, width) == 2 * 4, "width is word 2");
static_assert(offsetof(BitmapDescriptor, height) == 3 * 4, "height is word 3");
static_assert(offsetof(BitmapDescriptor, bitsPerPixel) == 4 * 4, "bitsPerPixel is word 4");
static_assert(offsetof(BitmapDescriptor, viewPerspective) == 11 * 4, "viewPerspective is word 11");
#else
static_assert(sizeof(BitmapDescriptor) == 176, "the 64-bit layout: two pointers widened, aligned to 8");
static_assert(offsetof(BitmapDescriptor, storage) == 8, "storage is aligned after word 0");
static_assert(offsetof(BitmapDescriptor, width) == 16, "width follows the 8-byte storage");
static_assert(offsetof(BitmapDescriptor, palette) == 48, "palette is aligned");
static_assert(offsetof(BitmapDescriptor, viewPerspective) == 60, "viewPerspective follows flags");
#endif

}  // namespace imaging
