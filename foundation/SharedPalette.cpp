#include "foundation/SharedPalette.h"

#include <cstddef>
#include <memory>

#include "foundation/PaletteColors.h"
#include "thumbnails/Imaging.h"

namespace foundation {

namespace {

constexpr WORD kPaletteVersion = 0x300;

static_assert(sizeof(PaletteQuad) == sizeof(RGBQUAD), "PaletteQuad and RGBQUAD have one layout");

}  // namespace

CSharedPalette::~CSharedPalette() {
    if (matchTable_ != nullptr) imaging::FreeColorMatchTable(matchTable_);
}

bool CSharedPalette::Create() {
    if (palette_) return true;
    const auto defaults = DefaultSharedPaletteColors();

    // LOGPALETTE declares one entry and is allocated with room for all.
    const std::size_t bytes = sizeof(LOGPALETTE) + (kSharedPaletteSize - 1) * sizeof(PALETTEENTRY);
    std::unique_ptr<unsigned char[]> storage(new unsigned char[bytes]());
    auto* logPalette = reinterpret_cast<LOGPALETTE*>(storage.get());
    logPalette->palVersion = kPaletteVersion;
    logPalette->palNumEntries = static_cast<WORD>(kSharedPaletteSize);
    for (std::size_t i = 0; i < kSharedPaletteSize; ++i) {
        logPalette->palPalEntry[i] = PALETTEENTRY{defaults[i].red, defaults[i].green, defaults[i].blue, 0};
    }
    palette_.Reset(::CreatePalette(logPalette));
    if (!palette_) return false;

    // The colours as the palette holds them, in RGBQUAD order.
    std::vector<PALETTEENTRY> entries(kSharedPaletteSize);
    const UINT read =
        ::GetPaletteEntries(palette_.Get(), 0, static_cast<UINT>(entries.size()), entries.data());
    entries.resize(read);
    std::vector<PaletteQuad> quads(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i)
        quads[i] = PaletteQuad{entries[i].peBlue, entries[i].peGreen, entries[i].peRed, 0};

    SortColorsByHue(quads.data(), quads.size());

    colors_.resize(quads.size());
    for (std::size_t i = 0; i < quads.size(); ++i) {
        colors_[i] = RGBQUAD{quads[i].blue, quads[i].green, quads[i].red, 0};
        entries[i] = PALETTEENTRY{quads[i].red, quads[i].green, quads[i].blue, 0};
    }
    if (!entries.empty())
        ::SetPaletteEntries(palette_.Get(), 0, static_cast<UINT>(entries.size()), entries.data());

    WORD count = 0;
    if (::GetObjectA(palette_.Get(), sizeof count, &count) == 0) count = 0;
    if (count > colors_.size()) count = static_cast<WORD>(colors_.size());
    if (count > 0) {
        matchTable_ = imaging::CreateColorMatchTable(colors_.data(), count);
        if (matchTable_ != nullptr) imaging::SetColorMatchTable(matchTable_);
    }
    return true;
}

}  // namespace foundation
