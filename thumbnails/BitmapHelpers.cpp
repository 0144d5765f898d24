#include "thumbnails/BitmapHelpers.h"

#include <climits>
#include <vector>

#include "foundation/ReportError.h"
#include "framework/win32/GdiHandles.h"
#include "thumbnails/BitmapCentering.h"
#include "thumbnails/MetafileRepair.h"

namespace thumbnails {

namespace {

using framework::win32::UniqueBitmap;
using framework::win32::UniqueDc;
using framework::win32::UniqueMetaFile;

// The bits of a Windows metafile as GDI holds them; throws the line of a
// failing call.
std::vector<uint8_t> FetchMetafileBits(HMETAFILE metafile) {
    const UINT size = ::GetMetaFileBitsEx(metafile, 0, nullptr);
    if (size == 0) THROW_LINE();
    std::vector<uint8_t> bits(size);
    if (::GetMetaFileBitsEx(metafile, size, bits.data()) == 0) THROW_LINE();
    return bits;
}

// The metafile's bits as the player may take them (MetafileRepair.h); throws
// the line of a failing call or of bits that cannot be played safely.
std::vector<uint8_t> FetchPlayableBits(HMETAFILE metafile) {
    const std::vector<uint8_t> bits = FetchMetafileBits(metafile);
    std::vector<uint8_t> playable;
    if (!RepairWindowsMetafile(bits.data(), bits.size(), &playable).Accepted()) THROW_LINE();
    return playable;
}

// As the framework's FillSolidRect: the background colour, then an opaque
// text output of nothing over the rectangle.
void FillSolidRect(HDC dc, int x, int y, int width, int height, COLORREF color) {
    ::SetBkColor(dc, color);
    const RECT rect{x, y, x + width, y + height};
    ::ExtTextOutA(dc, 0, 0, ETO_OPAQUE, &rect, nullptr, 0, nullptr);
}

}  // namespace

HBITMAP RenderMetafileToBitmap(HMETAFILE metafile, HDC reference, int width, int height,
                               COLORREF background) {
    if (metafile == nullptr || reference == nullptr || width < 1 || height < 1) {
        LUMBREL_TRACE_INVALID_ARGUMENTS(LUMBREL_SOURCE_NAME, __LINE__);
        return nullptr;
    }
    HBITMAP result = nullptr;
    try {
        // A handle may hold escapes and headers that its maker got wrong: what
        // is played is the copy of its bits that passed the check.
        const std::vector<uint8_t> bits = FetchPlayableBits(metafile);
        const UniqueMetaFile playable(::SetMetaFileBitsEx(static_cast<UINT>(bits.size()), bits.data()));
        if (!playable) THROW_LINE();

        // The bitmap is declared first so that it goes last: the context is
        // deleted with the bitmap still selected after a failure, which frees it.
        UniqueBitmap bitmap;
        UniqueDc memory(::CreateCompatibleDC(reference));
        if (!memory) THROW_LINE();
        bitmap.Reset(::CreateCompatibleBitmap(reference, width, height));
        if (!bitmap) THROW_LINE();
        const HDC dc = memory.Get();

        const int saved = ::SaveDC(dc);
        if (saved == 0) THROW_LINE();
        const HGDIOBJ previous = ::SelectObject(dc, bitmap.Get());
        if (previous == nullptr) THROW_LINE();
        if (::SetBkColor(dc, background) == CLR_INVALID) THROW_LINE();
        // Width by width on purpose: the fill is square, whatever the height.
        FillSolidRect(dc, 0, 0, width, width, background);
        ::SetMapMode(dc, MM_ISOTROPIC);
        SIZE previousExtent{0, 0};
        ::SetViewportExtEx(dc, width, height, &previousExtent);
        if (previousExtent.cx == 0 && previousExtent.cy == 0) THROW_LINE();
        if (!::PlayMetaFile(dc, playable.Get())) THROW_LINE();
        if (::SelectObject(dc, previous) == nullptr) THROW_LINE();
        if (!::RestoreDC(dc, saved)) THROW_LINE();
        if (CenterBitmapContent(bitmap.Get()) == 0) THROW_LINE();
        result = bitmap.Release();
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
        result = nullptr;
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
        result = nullptr;
    }
    return result;
}

int CenterBitmapContent(HBITMAP bitmap) {
    if (bitmap == nullptr) return 0;
    int result = 0;
    try {
        BITMAP info{};
        // The whole record: 24 bytes on 32-bit Windows, 32 with the wider
        // bits pointer on 64-bit.
        const int got = ::GetObjectA(bitmap, sizeof info, &info);
        if (got == 0) THROW_LINE();
        const int32_t widthBytes = info.bmWidthBytes;
        const int32_t height = info.bmHeight;
        if (widthBytes <= 0 || height <= 0) THROW_LINE();
        const int64_t total = static_cast<int64_t>(widthBytes) * height;
        if (total > LONG_MAX) THROW_LINE();
        const LONG count = static_cast<LONG>(total);

        std::vector<uint8_t> source(static_cast<size_t>(total));
        std::vector<uint8_t> target(static_cast<size_t>(total));
        if (::GetBitmapBits(bitmap, count, source.data()) != count) THROW_LINE();

        const CenteringPlan plan = PlanCentering(source.data(), widthBytes, height, info.bmBitsPixel);
        // An entirely blank bitmap has nothing to centre and counts as done.
        if (plan.blank) throw true;

        if (plan.MovesVertically()) {
            ShiftRows(source.data(), target.data(), widthBytes, height, plan.shiftY);
            if (::SetBitmapBits(bitmap, static_cast<DWORD>(count), target.data()) != count) THROW_LINE();
        }
        // Rebuilt from the bytes as fetched: a horizontal move drops the
        // vertical one. This order is the behaviour and stays.
        if (plan.MovesHorizontally()) {
            ShiftColumns(source.data(), target.data(), widthBytes, height, plan.shiftX);
            if (::SetBitmapBits(bitmap, static_cast<DWORD>(count), target.data()) != count) THROW_LINE();
        }
        result = got;
    } catch (bool) {
        result = 1;
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
        result = 0;
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
        result = 0;
    }
    return result;
}

HENHMETAFILE MakeEnhancedMetafile(HDC reference, HMETAFILE metafile, int width, int height) {
    if (metafile == nullptr || reference == nullptr || width < 1 || height < 1) {
        LUMBREL_TRACE_INVALID_ARGUMENTS(LUMBREL_SOURCE_NAME, __LINE__);
        return nullptr;
    }
    HENHMETAFILE result = nullptr;
    try {
        const std::vector<uint8_t> bits = FetchPlayableBits(metafile);
        result = ::SetWinMetaFileBits(static_cast<UINT>(bits.size()), bits.data(), reference, nullptr);
        if (result == nullptr) THROW_LINE();
    } catch (int line) {
        LUMBREL_TRACE_THROWN_LINE(LUMBREL_SOURCE_NAME, line);
        result = nullptr;
    } catch (...) {
        foundation::ReportUnexpectedException(LUMBREL_SOURCE_NAME, __LINE__);
        result = nullptr;
    }
    return result;
}

HMETAFILE CreateCheckedMetaFile(const uint8_t* bits, size_t size) {
    if (bits == nullptr || size == 0 || size > UINT_MAX) return nullptr;
    std::vector<uint8_t> playable;
    if (!RepairWindowsMetafile(bits, size, &playable).Accepted()) return nullptr;
    return ::SetMetaFileBitsEx(static_cast<UINT>(playable.size()), playable.data());
}

}  // namespace thumbnails
