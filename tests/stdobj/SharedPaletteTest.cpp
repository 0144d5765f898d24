#include "foundation/SharedPalette.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "StdobjTestSupport.h"
#include "foundation/ColorMath.h"
#include "foundation/PaletteColors.h"
#include "foundation/Stdobj.h"
#include "thumbnails/Imaging.h"

namespace {

class SharedPaletteTest : public stdobjtest::FreshStdObjects {};

int HueOf(const RGBQUAD& quad) {
    int hue = 0, saturation = 0, luminance = 0;
    foundation::RgbToHls(&hue, &saturation, &luminance, quad.rgbRed, quad.rgbGreen, quad.rgbBlue);
    return hue;
}

}  // namespace

TEST_F(SharedPaletteTest, IsMadeOnce) {
    foundation::CSharedPalette* palette = foundation::GetSharedPalette();
    ASSERT_NE(palette, nullptr);
    ASSERT_NE(palette->Handle(), nullptr);
    EXPECT_EQ(foundation::GetSharedPalette(), palette);
    EXPECT_EQ(::GetObjectType(palette->Handle()), static_cast<DWORD>(OBJ_PAL));
}

TEST_F(SharedPaletteTest, HoldsTheDefaultColoursOrderedByHue) {
    foundation::CSharedPalette* palette = foundation::GetSharedPalette();
    ASSERT_NE(palette, nullptr);
    WORD count = 0;
    ASSERT_EQ(::GetObjectA(palette->Handle(), sizeof count, &count), static_cast<int>(sizeof count));
    EXPECT_EQ(count, 256);

    std::vector<PALETTEENTRY> entries(256);
    ASSERT_EQ(::GetPaletteEntries(palette->Handle(), 0, 256, entries.data()), 256u);
    const std::vector<RGBQUAD>& colors = palette->Colors();
    ASSERT_EQ(colors.size(), 256u);

    auto expected = foundation::DefaultSharedPaletteColors();
    foundation::SortColorsByHue(expected.data(), expected.size());
    for (std::size_t i = 0; i < 256; ++i) {
        EXPECT_EQ(colors[i].rgbRed, expected[i].red) << i;
        EXPECT_EQ(colors[i].rgbGreen, expected[i].green) << i;
        EXPECT_EQ(colors[i].rgbBlue, expected[i].blue) << i;
        EXPECT_EQ(colors[i].rgbReserved, 0) << i;
        EXPECT_EQ(entries[i].peRed, colors[i].rgbRed) << i;
        EXPECT_EQ(entries[i].peGreen, colors[i].rgbGreen) << i;
        EXPECT_EQ(entries[i].peBlue, colors[i].rgbBlue) << i;
        EXPECT_EQ(entries[i].peFlags, 0) << i;
        if (i > 0) {
            EXPECT_LE(HueOf(colors[i - 1]), HueOf(colors[i])) << i;
        }
    }
    // The palette was sorted: the colour cube's second entry (0,0,51), hue
    // 159, no longer stands at 1.
    EXPECT_FALSE(colors[1].rgbRed == 0 && colors[1].rgbGreen == 0 && colors[1].rgbBlue == 51);
}

TEST_F(SharedPaletteTest, MakesItsColourMatchTable) {
    foundation::CSharedPalette* palette = foundation::GetSharedPalette();
    ASSERT_NE(palette, nullptr);
    EXPECT_NE(palette->MatchTable(), nullptr);
}

TEST_F(SharedPaletteTest, StandsAloneToo) {
    foundation::CSharedPalette palette;
    EXPECT_EQ(palette.Handle(), nullptr);
    EXPECT_TRUE(palette.Colors().empty());
    EXPECT_EQ(palette.MatchTable(), nullptr);
    ASSERT_TRUE(palette.Create());
    const HPALETTE handle = palette.Handle();
    EXPECT_NE(handle, nullptr);
    EXPECT_TRUE(palette.Create()) << "a second call keeps what the first made";
    EXPECT_EQ(palette.Handle(), handle);
    EXPECT_EQ(palette.Colors().size(), 256u);
}

TEST_F(SharedPaletteTest, SelectsAndRealizesIntoAContext) {
    foundation::CSharedPalette* palette = foundation::GetSharedPalette();
    ASSERT_NE(palette, nullptr);
    stdobjtest::DibCanvas canvas(4, 4);
    ASSERT_TRUE(canvas.Ok());
    framework::win32::PaletteSelectionGuard selection(canvas.Dc(), palette->Handle(), true);
    EXPECT_TRUE(selection.Succeeded());
    EXPECT_NE(::RealizePalette(canvas.Dc()), GDI_ERROR);
}
