// A gallery cell that shows one thumbnail: a white tile, the thumbnail's
// title in a band along the bottom, and the picture centred above it with a
// white outline. The thumbnail belongs to the thumbnail library, not to the
// cell, so the library may be emptied before the gallery.
#pragma once

#include <windows.h>

#include <string>

#include "framework/win32/GdiHandles.h"
#include "gallery/GalleryItem.h"
#include "thumbnails/BitmapDescriptor.h"

namespace thumbnails {
class CThumbnailItem;
}

namespace gallery {

class CThumbnailGalleryItem : public CTPGalleryItem {
    LUMBREL_DECLARE_RUNTIME_CLASS(CThumbnailGalleryItem)

public:
    static constexpr COLORREF kCaptionColour = RGB(0, 0, 0);
    static constexpr COLORREF kDisabledCaptionColour = RGB(0x80, 0x80, 0x80);
    // DT_CENTER | DT_WORDBREAK | DT_NOPREFIX | DT_END_ELLIPSIS
    static constexpr UINT kCaptionFormat = 0x8811;

    // `cellSize` is copied: it sets the caption's band and font, and centres
    // the picture, whatever cell size the gallery has later. The browser
    // passes an empty name; the caption is the thumbnail's title.
    CThumbnailGalleryItem(thumbnails::CThumbnailItem* thumbnail, const SIZE& cellSize,
                          const std::string& name, BOOL usePaintPalette);
    ~CThumbnailGalleryItem() override;

    // The cell's size, or with `actual` the thumbnail bitmap's.
    int GetWidth(BOOL actual) const override;
    int GetHeight(BOOL actual) const override;
    void Draw(HDC dc, const RECT* rect, DWORD rop, BOOL dragImage) override;

    thumbnails::CThumbnailItem* Thumbnail() const { return thumbnail; }
    SIZE CellSize() const { return cellSize; }

    // The caption's colour on `dc`: grey when it belongs to a disabled
    // window, black otherwise. A memory context belongs to no window, so a
    // buffered paint always shows black.
    static COLORREF CaptionColourFor(HDC dc);

protected:
    thumbnails::CThumbnailItem* thumbnail;
    SIZE cellSize;
    BOOL usePaintPalette;
    // Made for each Draw and deleted at its end.
    framework::win32::UniqueFont font;
    // Above 0, the picture is reduced to the shared palette before painting.
    int reduceColours = 0;

private:
    HFONT TakeFont();
    void PaintPicture(HDC dc, imaging::BitmapDescriptor* local, const RECT& target, DWORD rop);
};

}  // namespace gallery
