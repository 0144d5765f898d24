// Drawing into bitmaps, painting them, palettes and device bitmaps: the
// operations that meet GDI.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <vector>

#include "framework/win32/GdiHandles.h"
#include "thumbnails/BitmapKernel.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/ImagingInternal.h"
#include "thumbnails/PaintRows.h"

namespace imaging {

namespace {

using framework::win32::UniqueBitmap;
using framework::win32::UniqueDc;
using framework::win32::WindowDc;

// A BITMAPINFO with room for a full 8-bit colour table.
struct DibInfo {
    BITMAPINFOHEADER header;
    RGBQUAD colors[256];
};

// Describes the descriptor's rows to GDI: top-down, the same stride.
void DescribeDib(const BitmapDescriptor& bitmap, DibInfo* info) {
    std::memset(info, 0, sizeof *info);
    info->header.biSize = sizeof info->header;
    info->header.biWidth = bitmap.width;
    info->header.biHeight = -bitmap.height;
    info->header.biPlanes = 1;
    info->header.biBitCount = static_cast<WORD>(bitmap.bitsPerPixel);
    info->header.biCompression = BI_RGB;
    if (bitmap.bitsPerPixel <= 8) {
        const int32_t entries = 1 << bitmap.bitsPerPixel;
        info->header.biClrUsed = static_cast<DWORD>(entries);
        for (int32_t i = 0; i < entries; ++i) {
            info->colors[i].rgbBlue = bitmap.palette[i].blue;
            info->colors[i].rgbGreen = bitmap.palette[i].green;
            info->colors[i].rgbRed = bitmap.palette[i].red;
        }
    }
}

// GDI rows are blue-green-red; red-green-blue rows are swapped on the way.
void CopyRows(const uint8_t* from, uint8_t* to, const BitmapDescriptor& bitmap) {
    if (bitmap.bitsPerPixel < 24 || bitmap.colorOrder == kColorOrderBgr) {
        std::memcpy(to, from, bitmap.storageSize);
        return;
    }
    const int step = bitmap.bitsPerPixel / 8;
    for (int32_t y = 0; y < bitmap.height; ++y) {
        const size_t start = static_cast<size_t>(y) * static_cast<size_t>(bitmap.bytesPerLine);
        const uint8_t* in = from + start;
        uint8_t* out = to + start;
        for (int32_t x = 0; x < bitmap.width; ++x, in += step, out += step) {
            out[0] = in[2];
            out[1] = in[1];
            out[2] = in[0];
            if (step == 4) out[3] = in[3];
        }
    }
}

// ---- Open bitmap contexts ----------------------------------------------------

struct OpenContext {
    // Declared in this order so that the context goes before the section it
    // has selected: deleting a context releases its selection.
    UniqueBitmap section;
    UniqueDc dc;
    uint8_t* bits = nullptr;
    BitmapDescriptor shape{};  // the descriptor as it was when the context opened
    bool detached = false;     // the storage was given back meanwhile
};

struct ContextRegister {
    std::mutex lock;
    std::vector<OpenContext> contexts;
};

ContextRegister& Contexts() {
    static ContextRegister instance;
    return instance;
}

void DetachContexts(const void* storage) {
    ContextRegister& reg = Contexts();
    std::lock_guard<std::mutex> hold(reg.lock);
    for (OpenContext& context : reg.contexts) {
        if (context.shape.storage == storage) context.detached = true;
    }
}

void CopyBack(const OpenContext& context) {
    if (context.detached) return;
    ::GdiFlush();
    CopyRows(context.bits, static_cast<uint8_t*>(context.shape.storage), context.shape);
}

// ---- Rows for painting ----------------------------------------------------------

// Pictures up to this many pixels (a large thumbnail is under a tenth of
// it) are widened into one buffer that stays for the next paint: a buffer
// made and given back per paint costs the heap fresh pages each time, as
// much again as the paint. Larger pictures get a buffer of their own.
constexpr size_t kKeptPaintPixels = size_t{1} << 18;
// Beyond this the widened rows would take more memory than they save time,
// and the picture goes to GDI as it is.
constexpr size_t kMaxPaintPixels = size_t{1} << 24;

// The kept buffer, for one paint at a time. A plain static, not a
// thread-local one: those are not safe in a module that can be unloaded
// before its threads end.
struct KeptPaintRows {
    std::mutex lock;
    std::vector<uint32_t> rows;
};

KeptPaintRows& KeptRows() {
    static KeptPaintRows instance;
    return instance;
}

// The 32-bit rows of one paint, valid while it lives, or none (Bits() null)
// when the picture goes to GDI as it is stored.
class PaintRowsFor {
public:
    explicit PaintRowsFor(const BitmapDescriptor& bitmap) {
        if (!kernel::HasPaintRows(bitmap)) return;
        // Already in the form GDI takes fastest.
        if (bitmap.bitsPerPixel == 32 && bitmap.colorOrder == kColorOrderBgr) return;
        const size_t pixels = static_cast<size_t>(bitmap.width) * static_cast<size_t>(bitmap.height);
        if (pixels > kMaxPaintPixels) return;
        // Without memory the picture is painted from its own rows, only slower.
        uint32_t* rows = nullptr;
        if (pixels <= kKeptPaintPixels) {
            hold_ = std::unique_lock<std::mutex>(KeptRows().lock);
            std::vector<uint32_t>& kept = KeptRows().rows;
            try {
                if (kept.size() < pixels) kept.resize(pixels);
            } catch (const std::bad_alloc&) {
                return;
            }
            rows = kept.data();
        } else {
            own_.reset(new (std::nothrow) uint32_t[pixels]);
            rows = own_.get();
        }
        if (rows != nullptr && kernel::ToPaintRows(bitmap, rows, pixels)) bits_ = rows;
    }
    PaintRowsFor(const PaintRowsFor&) = delete;
    PaintRowsFor& operator=(const PaintRowsFor&) = delete;

    const void* Bits() const { return bits_; }

private:
    std::unique_lock<std::mutex> hold_;
    std::unique_ptr<uint32_t[]> own_;
    const uint32_t* bits_ = nullptr;
};

}  // namespace

int ReleaseBitmap(BitmapDescriptor* bitmap) {
    return detail::Guarded([&] {
        if (bitmap == nullptr) return kErrorInvalidParameter;
        if (bitmap->storage == nullptr) return kSuccess;
        const int check = kernel::CheckBitmap(bitmap);
        if (check != kSuccess) return check;
        ContextRegister& reg = Contexts();
        std::lock_guard<std::mutex> hold(reg.lock);
        for (const OpenContext& context : reg.contexts) {
            if (context.shape.storage == bitmap->storage) CopyBack(context);
        }
        return kSuccess;
    });
}

HDC CreateBitmapContext(BitmapDescriptor* bitmap) {
    try {
        if (kernel::CheckBitmap(bitmap) != kSuccess) return nullptr;
        kernel::SetStorageObserver(&DetachContexts);
        OpenContext context;
        context.dc = UniqueDc(::CreateCompatibleDC(nullptr));
        if (!context.dc) return nullptr;
        DibInfo info;
        DescribeDib(*bitmap, &info);
        void* bits = nullptr;
        context.section = UniqueBitmap(::CreateDIBSection(
            context.dc.Get(), reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS, &bits, nullptr, 0));
        if (!context.section || bits == nullptr) return nullptr;
        context.bits = static_cast<uint8_t*>(bits);
        context.shape = *bitmap;
        CopyRows(static_cast<const uint8_t*>(bitmap->storage), context.bits, *bitmap);
        // The context's original bitmap is the stock 1x1 one; it need not be
        // selected back, since deleting the context releases the section.
        const HGDIOBJ previous = ::SelectObject(context.dc.Get(), context.section.Get());
        if (previous == nullptr || previous == HGDI_ERROR) return nullptr;
        const HDC dc = context.dc.Get();
        ContextRegister& reg = Contexts();
        std::lock_guard<std::mutex> hold(reg.lock);
        reg.contexts.push_back(std::move(context));
        return dc;
    } catch (...) {
        return nullptr;
    }
}

int DeleteBitmapContext(HDC dc) {
    return detail::Guarded([&] {
        if (dc == nullptr) return kErrorInvalidParameter;
        OpenContext closing;
        {
            ContextRegister& reg = Contexts();
            std::lock_guard<std::mutex> hold(reg.lock);
            auto found = std::find_if(reg.contexts.begin(), reg.contexts.end(),
                                      [&](const OpenContext& c) { return c.dc.Get() == dc; });
            if (found == reg.contexts.end()) return kErrorInvalidParameter;
            CopyBack(*found);
            closing = std::move(*found);
            reg.contexts.erase(found);
        }
        // Explicitly, to report a failure; the owners would do it silently.
        const bool deleted = ::DeleteDC(closing.dc.Release()) != FALSE;
        return deleted ? kSuccess : kErrorPlatform;
    });
}

// ---- Painting ------------------------------------------------------------------

int PaintBitmap(HDC dc, const BitmapDescriptor* bitmap, const RECT* source, const RECT* sourceClip,
                const RECT* target, const RECT* targetClip, DWORD rop) {
    return detail::Guarded([&] {
        if (dc == nullptr) return kErrorInvalidParameter;
        if (sourceClip != nullptr) return kErrorUnsupported;
        const int check = kernel::CheckBitmap(bitmap);
        if (check != kSuccess) return check;
        const RECT whole{0, 0, bitmap->width, bitmap->height};
        const RECT from = source != nullptr ? *source : whole;
        if (from.left < 0 || from.top < 0 || from.right > bitmap->width || from.bottom > bitmap->height ||
            from.left >= from.right || from.top >= from.bottom)
            return kErrorInvalidParameter;
        const int32_t fromWidth = from.right - from.left;
        const int32_t fromHeight = from.bottom - from.top;
        const RECT to = target != nullptr ? *target : RECT{0, 0, fromWidth, fromHeight};
        const int64_t toWidth = static_cast<int64_t>(to.right) - to.left;
        const int64_t toHeight = static_cast<int64_t>(to.bottom) - to.top;
        if (toWidth == 0 || toHeight == 0) return kSuccess;  // nothing to cover
        const int64_t width = toWidth < 0 ? -toWidth : toWidth;
        const int64_t height = toHeight < 0 ? -toHeight : toHeight;
        if (width > INT32_MAX || height > INT32_MAX) return kErrorInvalidParameter;
        // GDI places a mirrored axis one pixel further (from x + width + 1 to
        // x): start one pixel back so that the mirrored picture covers the
        // same pixels as the plain one. (right < left, so left - 1 fits.)
        const int x = toWidth < 0 ? to.left - 1 : to.left;
        const int y = toHeight < 0 ? to.top - 1 : to.top;

        // The context's state is saved only when the paint changes it: saving
        // and restoring costs a third of painting a whole thumbnail.
        std::optional<framework::win32::SavedDcState> state;
        if (targetClip != nullptr) {
            state.emplace(dc);
            if (!state->Succeeded()) return kErrorPlatform;
            if (::IntersectClipRect(dc, targetClip->left, targetClip->top, targetClip->right,
                                    targetClip->bottom) == ERROR)
                return kErrorPlatform;
        }

        // What goes to GDI is a whole top-down DIB from its origin, painted one
        // to one (mirroring aside): GDI measures the source rectangle of a
        // top-down DIB differently by raster operation, and its stretching
        // differs by device. Only a target beyond the resampler's limits is
        // left to GDI to stretch, and then only from a whole bitmap.
        detail::ScopedBitmap scaled;
        const BitmapDescriptor* paint = bitmap;
        const bool wholeSource = fromWidth == bitmap->width && fromHeight == bitmap->height;
        bool deviceStretches = false;
        if (!wholeSource || width != fromWidth || height != fromHeight) {
            const int resized =
                width > kMaxSide || height > kMaxSide
                    ? kErrorTooLarge
                    : kernel::ResizeRegion(*bitmap, from.left, from.top, fromWidth, fromHeight,
                                           static_cast<int32_t>(width), static_cast<int32_t>(height),
                                           kSizeResample, scaled.Get());
            if (resized == kSuccess) {
                paint = scaled.Get();
            } else if ((resized == kErrorTooLarge || resized == kErrorNoMemory) && wholeSource) {
                deviceStretches = true;
            } else {
                return resized;
            }
        }
        const BitmapDescriptor none{};
        const PaintRowsFor rows(deviceStretches ? none : *paint);
        detail::ScopedBitmap ordered;
        if (rows.Bits() == nullptr && paint->bitsPerPixel >= 24 && paint->colorOrder == kColorOrderRgb) {
            const int converted = kernel::ConvertBitmap(*paint, 0, kColorOrderBgr, ordered.Get());
            if (converted != kSuccess) return converted;
            paint = ordered.Get();
        }
        if (deviceStretches) {
            if (!state) state.emplace(dc);
            ::SetStretchBltMode(dc, HALFTONE);
            ::SetBrushOrgEx(dc, 0, 0, nullptr);
        }
        DibInfo info;
        DescribeDib(*paint, &info);
        if (rows.Bits() != nullptr) info.header.biBitCount = 32;
        // The count of lines is negative for top-down DIBs with some raster
        // operations; only 0 means that nothing could be painted.
        const int lines = ::StretchDIBits(dc, x, y, static_cast<int>(toWidth), static_cast<int>(toHeight), 0,
                                          0, paint->width, paint->height,
                                          rows.Bits() != nullptr ? rows.Bits() : paint->storage,
                                          reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS, rop);
        return lines != 0 ? kSuccess : kErrorPlatform;
    });
}

HPALETTE CreatePaintPalette(HDC dc, const BitmapDescriptor* bitmap) {
    try {
        if (kernel::CheckBitmap(bitmap) != kSuccess) return nullptr;
        if (bitmap->bitsPerPixel > 8) {
            if (dc != nullptr) return ::CreateHalftonePalette(dc);
            WindowDc screen(nullptr);
            return screen ? ::CreateHalftonePalette(screen.Get()) : nullptr;
        }
        const int32_t count = bitmap->colorCount > 0 ? bitmap->colorCount : 1 << bitmap->bitsPerPixel;
        std::vector<uint8_t> block(sizeof(LOGPALETTE) + sizeof(PALETTEENTRY) * static_cast<size_t>(count));
        LOGPALETTE* palette = reinterpret_cast<LOGPALETTE*>(block.data());
        palette->palVersion = 0x300;
        palette->palNumEntries = static_cast<WORD>(count);
        for (int32_t i = 0; i < count; ++i) {
            PALETTEENTRY& entry = palette->palPalEntry[i];
            entry.peRed = bitmap->palette[i].red;
            entry.peGreen = bitmap->palette[i].green;
            entry.peBlue = bitmap->palette[i].blue;
            entry.peFlags = 0;
        }
        return ::CreatePalette(palette);
    } catch (...) {
        return nullptr;
    }
}

int ConvertFromDeviceBitmap(HDC dc, BitmapDescriptor* bitmap, HBITMAP deviceBitmap, uint32_t flags) {
    return detail::Guarded([&] {
        if (bitmap == nullptr || deviceBitmap == nullptr || flags != 0) return kErrorInvalidParameter;
        BITMAP shape{};
        if (::GetObjectA(deviceBitmap, sizeof shape, &shape) != static_cast<int>(sizeof shape))
            return kErrorInvalidParameter;
        detail::ScopedBitmap result;
        const int allocated =
            kernel::AllocateBitmap(result.Get(), shape.bmWidth, shape.bmHeight, 24, kColorOrderBgr);
        if (allocated != kSuccess) return allocated;
        WindowDc screen;
        if (dc == nullptr) {
            screen = WindowDc(nullptr);
            if (!screen) return kErrorPlatform;
            dc = screen.Get();
        }
        DibInfo info;
        DescribeDib(*result, &info);
        const int lines =
            ::GetDIBits(dc, deviceBitmap, 0, static_cast<UINT>(shape.bmHeight), result.Get()->storage,
                        reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS);
        if (lines != shape.bmHeight) return kErrorPlatform;
        *bitmap = result.Release();
        return kSuccess;
    });
}

// ---- Windows colour tables ------------------------------------------------------

namespace {

std::vector<RgbQuad> FromRgbQuads(const RGBQUAD* colors, int32_t count) {
    std::vector<RgbQuad> result;
    if (colors == nullptr || count < 1 || count > 256) return result;
    result.reserve(static_cast<size_t>(count));
    for (int32_t i = 0; i < count; ++i)
        result.push_back(RgbQuad{colors[i].rgbBlue, colors[i].rgbGreen, colors[i].rgbRed, 0});
    return result;
}

}  // namespace

ColorMatchTable* CreateColorMatchTable(const RGBQUAD* colors, int32_t colorCount) {
    try {
        const std::vector<RgbQuad> converted = FromRgbQuads(colors, colorCount);
        if (converted.empty()) return nullptr;
        return CreateColorMatchTable(converted.data(), colorCount);
    } catch (...) {
        return nullptr;
    }
}

int ReduceBitmapColors(const BitmapDescriptor* source, BitmapDescriptor* target, int32_t bitsPerPixel,
                       uint32_t flags, const RGBQUAD* colors, const void* paletteHandle, int32_t colorCount,
                       const void* callback, const void* userData) {
    return detail::Guarded([&] {
        const std::vector<RgbQuad> converted = FromRgbQuads(colors, colorCount);
        if (converted.empty()) return kErrorInvalidParameter;
        return ReduceBitmapColors(source, target, bitsPerPixel, flags, converted.data(), paletteHandle,
                                  colorCount, callback, userData);
    });
}

}  // namespace imaging
