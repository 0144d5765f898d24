// The colours of the shared 256-colour palette and their order by hue.
// Portable: the palette object itself is in SharedPalette.h.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace foundation {

// One palette colour in the byte order of a Windows RGBQUAD.
struct PaletteQuad {
    std::uint8_t blue;
    std::uint8_t green;
    std::uint8_t red;
    std::uint8_t reserved;
};
static_assert(sizeof(PaletteQuad) == 4, "PaletteQuad is laid out as RGBQUAD");

inline constexpr std::size_t kSharedPaletteSize = 256;

// The palette as it is created, before sorting: the 6 x 6 x 6 colour cube in
// steps of 51 (blue changing fastest, then green, then red) at 0 to 215,
// seven dark and seven light primaries and greys at 216 to 229, and black
// for the rest.
std::array<PaletteQuad, kSharedPaletteSize> DefaultSharedPaletteColors();

// Orders `colors` by ascending hue (RgbToHls) with the palette's exchange
// sort: for each position in turn, every later colour of smaller hue is
// swapped into it. Colours of equal hue therefore do not keep their order;
// the matching tables that depend on the palette expect exactly this one.
void SortColorsByHue(PaletteQuad* colors, std::size_t count);

}  // namespace foundation
