// Metafiles have no pixels: they are played with GDI onto a white 24-bit
// bitmap at their natural size on the screen. Windows metafiles are first
// turned into enhanced ones, so that one player serves both. Both kinds are
// filtered first, so that GDI never plays a record that lies about its size,
// and each drawing record is played only if, mapped to the device, it stays
// within reach of the picture.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "framework/win32/GdiHandles.h"
#include "thumbnails/BitmapKernel.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/ImagingInternal.h"
#include "thumbnails/MetafileFilter.h"

namespace imaging::detail {

namespace {

using framework::win32::UniqueBitmap;
using framework::win32::UniqueDc;
using framework::win32::UniqueEnhMetaFile;
using framework::win32::WindowDc;

// GDI plays only what the filter kept (see MetafileFilter.h).
UniqueEnhMetaFile OpenMetafile(const uint8_t* data, size_t size, const PictureProbe& probe, HDC screen) {
    std::vector<uint8_t> filtered;
    if (probe.kind == PictureKind::kEmf) {
        if (!FilterEnhancedMetafile(data, size, &filtered).valid || filtered.size() > 0xFFFFFFFFu)
            return UniqueEnhMetaFile();
        return UniqueEnhMetaFile(::SetEnhMetaFileBits(static_cast<UINT>(filtered.size()), filtered.data()));
    }
    const size_t header =
        probe.kind == PictureKind::kWmfPlaceable ? static_cast<size_t>(probe.headerBytes) : 0;
    if (size <= header || !FilterWindowsMetafile(data + header, size - header, &filtered).valid ||
        filtered.size() > 0xFFFFFFFFu)
        return UniqueEnhMetaFile();
    const UINT length = static_cast<UINT>(filtered.size());
    if (probe.kind == PictureKind::kWmfPlaceable) {
        if (probe.unitsPerInch <= 0) return UniqueEnhMetaFile();
        // The placeable header gives the picture's extent in its own units per
        // inch; GDI wants it in hundredths of a millimetre.
        METAFILEPICT picture{};
        picture.mm = MM_ANISOTROPIC;
        picture.xExt = ::MulDiv(probe.width, 2540, probe.unitsPerInch);
        picture.yExt = ::MulDiv(probe.height, 2540, probe.unitsPerInch);
        if (picture.xExt <= 0 || picture.yExt <= 0) return UniqueEnhMetaFile();
        return UniqueEnhMetaFile(::SetWinMetaFileBits(length, filtered.data(), screen, &picture));
    }
    if (probe.width > 0 && probe.height > 0) {
        // A plain metafile tells no physical size: its window extent is
        // taken as screen pixels.
        METAFILEPICT picture{};
        picture.mm = MM_ANISOTROPIC;
        picture.xExt = ::MulDiv(probe.width, 2540, std::max(::GetDeviceCaps(screen, LOGPIXELSX), 1));
        picture.yExt = ::MulDiv(probe.height, 2540, std::max(::GetDeviceCaps(screen, LOGPIXELSY), 1));
        if (picture.xExt > 0 && picture.yExt > 0)
            return UniqueEnhMetaFile(::SetWinMetaFileBits(length, filtered.data(), screen, &picture));
    }
    // Without any size GDI fits the picture to the reference device.
    return UniqueEnhMetaFile(::SetWinMetaFileBits(length, filtered.data(), screen, nullptr));
}

// The natural size in screen pixels, from the frame (hundredths of a
// millimetre) and the reference device the metafile was made on, or else its
// bounds; scaled down to kMaxMetafileSide on the longer side.
bool NaturalSize(const ENHMETAHEADER& header, int32_t* width, int32_t* height) {
    int64_t w = 0, h = 0;
    if (header.szlMillimeters.cx > 0 && header.szlMillimeters.cy > 0) {
        const int64_t across = static_cast<int64_t>(header.szlMillimeters.cx) * 100;
        const int64_t down = static_cast<int64_t>(header.szlMillimeters.cy) * 100;
        w = ((static_cast<int64_t>(header.rclFrame.right) - header.rclFrame.left) * header.szlDevice.cx +
             across / 2) /
            across;
        h = ((static_cast<int64_t>(header.rclFrame.bottom) - header.rclFrame.top) * header.szlDevice.cy +
             down / 2) /
            down;
    }
    if (w <= 0 || h <= 0) {
        w = static_cast<int64_t>(header.rclBounds.right) - header.rclBounds.left + 1;
        h = static_cast<int64_t>(header.rclBounds.bottom) - header.rclBounds.top + 1;
    }
    if (w <= 0 || h <= 0) return false;
    const int64_t longer = std::max(w, h);
    if (longer > kMaxMetafileSide) {
        w = std::max<int64_t>(1, w * kMaxMetafileSide / longer);
        h = std::max<int64_t>(1, h * kMaxMetafileSide / longer);
    }
    *width = static_cast<int32_t>(w);
    *height = static_cast<int32_t>(h);
    return true;
}

// How far a record may reach beyond the picture, in device pixels. Sane
// drawings stay near their frame; players rasterise a shape before clipping
// it, so one that is mapped millions of pixels wide takes minutes to draw.
constexpr int64_t kMaxReach = int64_t{1} << 18;
// Logical coordinates beyond this are not even mapped: they cannot land near
// the picture in any sane mapping, and the mapping arithmetic would overflow.
constexpr int64_t kMaxLogical = int64_t{1} << 27;

struct PictureArea {
    int32_t width;
    int32_t height;
};

int64_t CurrentPenWidth(HDC dc) {
    const HGDIOBJ pen = ::GetCurrentObject(dc, OBJ_PEN);
    const int size = pen != nullptr ? ::GetObjectA(pen, 0, nullptr) : 0;
    if (size == static_cast<int>(sizeof(LOGPEN))) {
        LOGPEN plain{};
        if (::GetObjectA(pen, sizeof plain, &plain) == size) return plain.lopnWidth.x;
    } else if (size >= static_cast<int>(offsetof(EXTLOGPEN, elpWidth) + sizeof(DWORD))) {
        std::vector<uint8_t> buffer(static_cast<size_t>(size));
        if (::GetObjectA(pen, size, buffer.data()) == size) {
            DWORD width = 0;
            std::memcpy(&width, buffer.data() + offsetof(EXTLOGPEN, elpWidth), sizeof width);
            return width;
        }
    }
    return 1;
}

// Whether the logical box, widened by `margin`, lands within kMaxReach of
// the picture once mapped by the context's current transform.
bool StaysNear(HDC dc, const LogicalBox& box, int64_t margin, const PictureArea& area) {
    const int64_t left = box.left - margin, top = box.top - margin;
    const int64_t right = box.right + margin, bottom = box.bottom + margin;
    for (int64_t v : {left, top, right, bottom}) {
        if (v < -kMaxLogical || v > kMaxLogical) return false;
    }
    POINT corners[4] = {{static_cast<LONG>(left), static_cast<LONG>(top)},
                        {static_cast<LONG>(right), static_cast<LONG>(top)},
                        {static_cast<LONG>(left), static_cast<LONG>(bottom)},
                        {static_cast<LONG>(right), static_cast<LONG>(bottom)}};
    if (!::LPtoDP(dc, corners, 4)) return false;
    for (const POINT& p : corners) {
        if (p.x < -kMaxReach || p.x > area.width + kMaxReach || p.y < -kMaxReach ||
            p.y > area.height + kMaxReach)
            return false;
    }
    return true;
}

// Plays one record unless it would reach too far; a record GDI cannot play
// does not end the picture.
int CALLBACK PlayNearRecord(HDC dc, HANDLETABLE* table, const ENHMETARECORD* record, int handles,
                            LPARAM data) {
    const PictureArea& area = *reinterpret_cast<const PictureArea*>(data);
    const auto* bytes = reinterpret_cast<const uint8_t*>(record);
    LogicalBox box{};
    switch (EnhancedRecordGeometry(bytes, record->nSize, &box)) {
        case RecordGeometry::kArea:
            if (!StaysNear(dc, box, std::min<int64_t>(CurrentPenWidth(dc), kMaxLogical) + 1, area))
                return TRUE;
            break;
        case RecordGeometry::kText: {
            TEXTMETRICA metrics{};
            if (!::GetTextMetricsA(dc, &metrics)) return TRUE;
            uint32_t characters = 0;
            std::memcpy(&characters, bytes + 44, sizeof characters);  // the filter kept whole text records
            const int64_t size = std::max<int64_t>(metrics.tmHeight, metrics.tmMaxCharWidth);
            if (!StaysNear(dc, box, size * (static_cast<int64_t>(characters) + 1), area)) return TRUE;
            break;
        }
        case RecordGeometry::kNone: break;
    }
    ::PlayEnhMetaFileRecord(dc, table, record, static_cast<UINT>(handles));
    return TRUE;
}

int Render(HENHMETAFILE metafile, int32_t width, int32_t height, BitmapDescriptor* bitmap) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;  // top-down, as the descriptor's rows
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    info.bmiHeader.biCompression = BI_RGB;
    UniqueDc dc(::CreateCompatibleDC(nullptr));
    if (!dc) return kErrorPlatform;
    void* bits = nullptr;
    UniqueBitmap section(::CreateDIBSection(dc.Get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!section || bits == nullptr) return kErrorNoMemory;
    {
        framework::win32::SelectionGuard selected(dc.Get(), section.Get());
        if (!selected.Succeeded()) return kErrorPlatform;
        if (!::PatBlt(dc.Get(), 0, 0, width, height, WHITENESS)) return kErrorPlatform;
        const RECT frame{0, 0, width, height};
        PictureArea area{width, height};
        if (!::EnumEnhMetaFile(dc.Get(), metafile, &PlayNearRecord, &area, &frame)) return kErrorCorrupt;
        ::GdiFlush();
    }
    const int result = kernel::AllocateBitmap(bitmap, width, height, 24, kColorOrderBgr);
    if (result != kSuccess) return result;
    // A DIB section's rows have the descriptor's stride.
    std::memcpy(bitmap->storage, bits, bitmap->storageSize);
    return kSuccess;
}

}  // namespace

int DecodeMetafile(const uint8_t* data, size_t size, const PictureProbe& probe,
                   const DecodeRequest& request) {
    WindowDc screen(nullptr);
    if (!screen) return kErrorPlatform;
    const UniqueEnhMetaFile metafile = OpenMetafile(data, size, probe, screen.Get());
    if (!metafile) return kErrorCorrupt;
    ENHMETAHEADER header{};
    if (::GetEnhMetaFileHeader(metafile.Get(), sizeof header, &header) == 0) return kErrorCorrupt;
    int32_t width = 0, height = 0;
    if (!NaturalSize(header, &width, &height)) return kErrorCorrupt;

    if (request.info != nullptr) {
        const bool enhanced = probe.kind == PictureKind::kEmf;
        BeginInfo(request.info, enhanced ? kFormatEmf : kFormatWmf, enhanced ? "EMF" : "WMF", size);
        request.info->width = width;
        request.info->height = height;
        request.info->fileBitsPerPixel = 24;
        request.info->storedBitsPerPixel = 24;
        request.info->xResolution = ::GetDeviceCaps(screen.Get(), LOGPIXELSX);
        request.info->yResolution = ::GetDeviceCaps(screen.Get(), LOGPIXELSY);
    }
    if (request.bitmap == nullptr) return kSuccess;

    ScopedBitmap native;
    const int result = Render(metafile.Get(), width, height, native.Get());
    if (result != kSuccess) return result;
    native.Get()->xResolution = ::GetDeviceCaps(screen.Get(), LOGPIXELSX);
    native.Get()->yResolution = ::GetDeviceCaps(screen.Get(), LOGPIXELSY);
    return DeliverBitmap(native.Get(), request);
}

}  // namespace imaging::detail
