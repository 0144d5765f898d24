// The 256-colour palette that every window of the control shares (see
// GetSharedPalette in Stdobj.h): the colours of DefaultSharedPaletteColors,
// ordered by hue, and the imaging layer's colour match table for them, which
// is made the layer's current one.
#pragma once

#include <windows.h>

#include <vector>

#include "framework/win32/GdiHandles.h"

namespace imaging {
struct ColorMatchTable;
}

namespace foundation {

class CSharedPalette {
public:
    CSharedPalette() = default;
    // Frees the colour match table; the palette goes with its owner.
    ~CSharedPalette();
    CSharedPalette(const CSharedPalette&) = delete;
    CSharedPalette& operator=(const CSharedPalette&) = delete;

    // Creates the palette, re-orders its entries by hue and makes the colour
    // match table. False when the palette cannot be made; a missing match
    // table is no failure (colour reduction then finds colours without it).
    bool Create();

    HPALETTE Handle() const { return palette_.Get(); }
    // The palette's entries, in order, as RGBQUADs.
    const std::vector<RGBQUAD>& Colors() const { return colors_; }
    imaging::ColorMatchTable* MatchTable() const { return matchTable_; }

private:
    framework::win32::UniquePalette palette_;
    imaging::ColorMatchTable* matchTable_ = nullptr;
    std::vector<RGBQUAD> colors_;
};

}  // namespace foundation
