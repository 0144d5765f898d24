#include "foundation/PaletteColors.h"

#include <utility>
#include <vector>

#include "foundation/ColorMath.h"

namespace foundation {

namespace {

PaletteQuad Quad(int red, int green, int blue) {
    return PaletteQuad{static_cast<std::uint8_t>(blue), static_cast<std::uint8_t>(green),
                       static_cast<std::uint8_t>(red), 0};
}

struct HueEntry {
    PaletteQuad color;
    int hue;
    int saturation;
    int luminance;
};

}  // namespace

std::array<PaletteQuad, kSharedPaletteSize> DefaultSharedPaletteColors() {
    std::array<PaletteQuad, kSharedPaletteSize> colors{};
    std::size_t index = 0;
    for (int red = 0; red <= 255; red += 51)
        for (int green = 0; green <= 255; green += 51)
            for (int blue = 0; blue <= 255; blue += 51) colors[index++] = Quad(red, green, blue);
    for (int level : {128, 192}) {
        colors[index++] = Quad(level, 0, 0);
        colors[index++] = Quad(0, level, 0);
        colors[index++] = Quad(0, 0, level);
        colors[index++] = Quad(level, level, 0);
        colors[index++] = Quad(level, 0, level);
        colors[index++] = Quad(0, level, level);
        colors[index++] = Quad(level, level, level);
    }
    while (index < colors.size()) colors[index++] = Quad(0, 0, 0);
    return colors;
}

void SortColorsByHue(PaletteQuad* colors, std::size_t count) {
    if (colors == nullptr || count < 2) return;
    std::vector<HueEntry> entries(count);
    for (std::size_t i = 0; i < count; ++i) {
        HueEntry& entry = entries[i];
        entry.color = colors[i];
        RgbToHls(&entry.hue, &entry.saturation, &entry.luminance, colors[i].red, colors[i].green,
                 colors[i].blue);
    }
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t j = i + 1; j < count; ++j)
            if (entries[j].hue < entries[i].hue) std::swap(entries[i], entries[j]);
    for (std::size_t i = 0; i < count; ++i) colors[i] = entries[i].color;
}

}  // namespace foundation
