// What the browser hands to the gallery: one cell's content, which knows its
// size and draws itself.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "framework/RuntimeClass.h"

namespace gallery {

class CTPGalleryItem : public framework::Object {
    LUMBREL_DECLARE_RUNTIME_CLASS(CTPGalleryItem)

public:
    CTPGalleryItem() = default;
    ~CTPGalleryItem() override = default;
    CTPGalleryItem(const CTPGalleryItem&) = delete;
    CTPGalleryItem& operator=(const CTPGalleryItem&) = delete;

    // The cell's size when `actual` is FALSE, the picture's own otherwise.
    virtual int GetWidth(BOOL actual) const = 0;
    virtual int GetHeight(BOOL actual) const = 0;
    // Draws the cell into `rect`: tile, caption and picture, or with
    // `dragImage` the picture alone, scaled to `rect`, in raster operation `rop`.
    virtual void Draw(HDC dc, const RECT* rect, DWORD rop, BOOL dragImage) = 0;
    // Kept for derived items; nothing calls it.
    virtual void Reserved(uint32_t, uint32_t, uint32_t, uint32_t) {}
    virtual std::string* GetName() { return &name; }

protected:
    std::string name;
};

}  // namespace gallery
