#include "gallery/ThumbnailGalleryItem.h"

#include <cstring>
#include <memory>

#include "foundation/DrawingRoutines.h"
#include "foundation/SharedPalette.h"
#include "foundation/Stdobj.h"
#include "gallery/GalleryGrid.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/ThumbnailItem.h"

namespace gallery {

using framework::win32::PaletteSelectionGuard;
using framework::win32::SelectionGuard;
using framework::win32::UniquePalette;

LUMBREL_IMPLEMENT_RUNTIME_CLASS(CThumbnailGalleryItem, CTPGalleryItem)

namespace {

// A copy of the thumbnail's pixels for one paint, given back when it ends.
class LocalBitmap {
public:
    explicit LocalBitmap(const imaging::BitmapDescriptor* source) {
        if (source != nullptr) imaging::CopyBitmap(&bitmap, source);
    }
    ~LocalBitmap() { imaging::FreeBitmap(&bitmap); }
    LocalBitmap(const LocalBitmap&) = delete;
    LocalBitmap& operator=(const LocalBitmap&) = delete;

    imaging::BitmapDescriptor bitmap{};
};

// Text colour and background mode put back on leaving the scope.
class TextStateGuard {
public:
    explicit TextStateGuard(HDC dc) : dc_(dc), colour_(::GetTextColor(dc)), mode_(::GetBkMode(dc)) {}
    ~TextStateGuard() {
        ::SetTextColor(dc_, colour_);
        ::SetBkMode(dc_, mode_);
    }
    TextStateGuard(const TextStateGuard&) = delete;
    TextStateGuard& operator=(const TextStateGuard&) = delete;

private:
    HDC dc_;
    COLORREF colour_;
    int mode_;
};

}  // namespace

CThumbnailGalleryItem::CThumbnailGalleryItem(thumbnails::CThumbnailItem* thumbnail_, const SIZE& cellSize_,
                                             const std::string& name_, BOOL usePaintPalette_)
    : thumbnail(thumbnail_), cellSize(cellSize_), usePaintPalette(usePaintPalette_) {
    name = name_;
}

// The thumbnail is the library's: it may be gone already, and is not touched.
CThumbnailGalleryItem::~CThumbnailGalleryItem() = default;

int CThumbnailGalleryItem::GetWidth(BOOL actual) const {
    if (!actual) return cellSize.cx;
    return thumbnail != nullptr ? thumbnail->bitmap.width : 0;
}

int CThumbnailGalleryItem::GetHeight(BOOL actual) const {
    if (!actual) return cellSize.cy;
    return thumbnail != nullptr ? thumbnail->bitmap.height : 0;
}

COLORREF CThumbnailGalleryItem::CaptionColourFor(HDC dc) {
    const HWND window = ::WindowFromDC(dc);
    const bool enabled = window == nullptr || ::IsWindowEnabled(window);
    return enabled ? kCaptionColour : kDisabledCaptionColour;
}

HFONT CThumbnailGalleryItem::TakeFont() {
    if (!font && ::GetSystemMetrics(SM_DBCSENABLED) == 0) {
        LOGFONTA description;
        std::memset(&description, 0, sizeof description);
        description.lfHeight = CaptionFontHeight(cellSize.cx);
        description.lfWeight = 400;
        description.lfPitchAndFamily = 0x22;
        std::strcpy(description.lfFaceName, "Arial");
        font.Reset(::CreateFontIndirectA(&description));
    }
    return font ? font.Get() : static_cast<HFONT>(::GetStockObject(SYSTEM_FONT));
}

void CThumbnailGalleryItem::PaintPicture(HDC dc, imaging::BitmapDescriptor* bitmap, const RECT& target,
                                         DWORD rop) {
    if (reduceColours > 0) {
        foundation::CSharedPalette* shared = foundation::GetSharedPalette();
        if (shared != nullptr && !shared->Colors().empty()) {
            imaging::ReduceBitmapColors(bitmap, bitmap, 8, imaging::kColorReductionUserPalette,
                                        shared->Colors().data(), nullptr,
                                        static_cast<int32_t>(shared->Colors().size()), nullptr, nullptr);
            const PaletteSelectionGuard selected(dc, shared->Handle(), false);
            if (selected.Succeeded()) ::RealizePalette(dc);
            imaging::PaintBitmap(dc, bitmap, nullptr, nullptr, &target, nullptr, rop);
            return;
        }
    }
    imaging::PaintBitmap(dc, bitmap, nullptr, nullptr, &target, nullptr, rop);
}

void CThumbnailGalleryItem::Draw(HDC dc, const RECT* rect, DWORD rop, BOOL dragImage) {
    if (rect == nullptr) return;
    LocalBitmap local(thumbnail != nullptr ? &thumbnail->bitmap : nullptr);

    // The paint palette, when asked for, stays selected for the whole cell.
    UniquePalette paintPalette;
    std::unique_ptr<PaletteSelectionGuard> paletteSelection;
    if (usePaintPalette) {
        imaging::ReduceBitmapDepth(&local.bitmap, 8);
        paintPalette.Reset(imaging::CreatePaintPalette(dc, &local.bitmap));
        if (paintPalette) {
            paletteSelection = std::make_unique<PaletteSelectionGuard>(dc, paintPalette.Get(), false);
            ::RealizePalette(dc);
        }
    }

    if (dragImage) {
        imaging::PaintBitmap(dc, &local.bitmap, nullptr, nullptr, rect, nullptr, rop);
        return;
    }

    foundation::FillRectWithBrush(dc, *rect, static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH)));

    RECT textRect = *rect;
    textRect.top = rect->top + (rect->bottom - rect->top) - CaptionBandHeight(cellSize.cx);
    {
        const SelectionGuard selectedFont(dc, TakeFont());
        std::string caption;
        if (thumbnail != nullptr) thumbnail->GetTitle(caption);
        const TextStateGuard textState(dc);
        ::SetBkMode(dc, TRANSPARENT);
        ::SetTextColor(dc, CaptionColourFor(dc));
        textRect.left = rect->left + 3;
        textRect.right = rect->right - 4;
        ::DrawTextA(dc, caption.c_str(), -1, &textRect, kCaptionFormat);
    }
    font.Reset();

    const GridRect placed =
        PictureRectangle(GridRect{rect->left, rect->top, rect->right, rect->bottom},
                         GridExtent{cellSize.cx, cellSize.cy}, local.bitmap.width, local.bitmap.height);
    const RECT picture = {placed.left, placed.top, placed.right, placed.bottom};
    PaintPicture(dc, &local.bitmap, picture, rop);

    const SelectionGuard brush(dc, ::GetStockObject(NULL_BRUSH));
    const SelectionGuard pen(dc, ::GetStockObject(WHITE_PEN));
    ::Rectangle(dc, picture.left, picture.top, picture.right, picture.bottom);
}

}  // namespace gallery
