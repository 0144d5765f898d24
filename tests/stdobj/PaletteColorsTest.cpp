#include "foundation/PaletteColors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <vector>

#include "foundation/ColorMath.h"

namespace {

using foundation::PaletteQuad;

PaletteQuad Quad(int red, int green, int blue) {
    return PaletteQuad{static_cast<std::uint8_t>(blue), static_cast<std::uint8_t>(green),
                       static_cast<std::uint8_t>(red), 0};
}

std::tuple<int, int, int> Rgb(const PaletteQuad& quad) {
    return {quad.red, quad.green, quad.blue};
}

int HueOf(const PaletteQuad& quad) {
    int hue = 0, saturation = 0, luminance = 0;
    foundation::RgbToHls(&hue, &saturation, &luminance, quad.red, quad.green, quad.blue);
    return hue;
}

}  // namespace

TEST(PaletteColors, CubeWithBlueChangingFastest) {
    const auto colors = foundation::DefaultSharedPaletteColors();
    EXPECT_EQ(Rgb(colors[0]), std::make_tuple(0, 0, 0));
    EXPECT_EQ(Rgb(colors[1]), std::make_tuple(0, 0, 51));
    EXPECT_EQ(Rgb(colors[5]), std::make_tuple(0, 0, 255));
    EXPECT_EQ(Rgb(colors[6]), std::make_tuple(0, 51, 0));
    EXPECT_EQ(Rgb(colors[36]), std::make_tuple(51, 0, 0));
    EXPECT_EQ(Rgb(colors[1 * 36 + 2 * 6 + 3]), std::make_tuple(51, 102, 153));
    EXPECT_EQ(Rgb(colors[215]), std::make_tuple(255, 255, 255));
    for (const PaletteQuad& quad : colors) EXPECT_EQ(quad.reserved, 0);
}

TEST(PaletteColors, DarkAndLightPrimariesThenBlack) {
    const auto colors = foundation::DefaultSharedPaletteColors();
    const std::array<std::tuple<int, int, int>, 14> expected = {{
        {128, 0, 0},
        {0, 128, 0},
        {0, 0, 128},
        {128, 128, 0},
        {128, 0, 128},
        {0, 128, 128},
        {128, 128, 128},
        {192, 0, 0},
        {0, 192, 0},
        {0, 0, 192},
        {192, 192, 0},
        {192, 0, 192},
        {0, 192, 192},
        {192, 192, 192},
    }};
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(Rgb(colors[216 + i]), expected[i]) << 216 + i;
    for (std::size_t i = 230; i < 256; ++i) EXPECT_EQ(Rgb(colors[i]), std::make_tuple(0, 0, 0)) << i;
}

TEST(PaletteColors, BytesAreInRgbQuadOrder) {
    const PaletteQuad quad = Quad(1, 2, 3);
    const auto* bytes = reinterpret_cast<const unsigned char*>(&quad);
    EXPECT_EQ(bytes[0], 3);
    EXPECT_EQ(bytes[1], 2);
    EXPECT_EQ(bytes[2], 1);
    EXPECT_EQ(bytes[3], 0);
}

TEST(SortColorsByHue, SwapsEachSmallerLaterHueIntoPlace) {
    // Hues: blue 159, bright green 80, red 0, dark green 80.
    std::vector<PaletteQuad> colors = {Quad(0, 0, 255), Quad(0, 255, 0), Quad(255, 0, 0), Quad(0, 128, 0)};
    foundation::SortColorsByHue(colors.data(), colors.size());
    ASSERT_EQ(colors.size(), 4u);
    EXPECT_EQ(Rgb(colors[0]), std::make_tuple(255, 0, 0));
    EXPECT_EQ(Rgb(colors[1]), std::make_tuple(0, 255, 0));
    EXPECT_EQ(Rgb(colors[2]), std::make_tuple(0, 128, 0));
    EXPECT_EQ(Rgb(colors[3]), std::make_tuple(0, 0, 255));
}

TEST(SortColorsByHue, EqualHuesCanChangeTheirOrder) {
    std::vector<PaletteQuad> colors = {Quad(0, 255, 0), Quad(0, 128, 0), Quad(255, 0, 0)};
    foundation::SortColorsByHue(colors.data(), colors.size());
    // Red is swapped into position 0 and sends the bright green to the end,
    // behind the dark green: a stable sort would keep bright before dark.
    EXPECT_EQ(Rgb(colors[0]), std::make_tuple(255, 0, 0));
    EXPECT_EQ(Rgb(colors[1]), std::make_tuple(0, 128, 0));
    EXPECT_EQ(Rgb(colors[2]), std::make_tuple(0, 255, 0));
}

TEST(SortColorsByHue, WholePaletteAscendsAndKeepsItsColours) {
    auto colors = foundation::DefaultSharedPaletteColors();
    const auto original = colors;
    foundation::SortColorsByHue(colors.data(), colors.size());
    for (std::size_t i = 1; i < colors.size(); ++i) EXPECT_LE(HueOf(colors[i - 1]), HueOf(colors[i])) << i;

    auto key = [](const PaletteQuad& q) { return (q.red << 16) | (q.green << 8) | q.blue; };
    std::vector<int> before, after;
    for (const auto& q : original) before.push_back(key(q));
    for (const auto& q : colors) after.push_back(key(q));
    std::sort(before.begin(), before.end());
    std::sort(after.begin(), after.end());
    EXPECT_EQ(before, after);

    // Hue 0 holds the greys and the reds; the highest hue of the palette,
    // 231, is the red nearest to magenta.
    EXPECT_EQ(HueOf(colors.front()), 0);
    EXPECT_EQ(Rgb(colors.back()), std::make_tuple(255, 0, 51));
}

TEST(SortColorsByHue, ShortAndNullInputsAreLeftAlone) {
    foundation::SortColorsByHue(nullptr, 5);
    PaletteQuad one = Quad(1, 2, 3);
    foundation::SortColorsByHue(&one, 1);
    EXPECT_EQ(Rgb(one), std::make_tuple(1, 2, 3));
    foundation::SortColorsByHue(&one, 0);
    EXPECT_EQ(Rgb(one), std::make_tuple(1, 2, 3));
}
