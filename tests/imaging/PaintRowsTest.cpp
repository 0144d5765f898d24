// The 32-bit rows that painting hands to GDI, against a pixel-by-pixel
// reading of the picture, with and without the processor's byte shuffles.
#include "thumbnails/PaintRows.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "thumbnails/BitmapKernel.h"

using namespace imaging;

namespace {

// Storage of exactly the picture's rows, so that a read past the last row
// is a read past the allocation (which the sanitizer build reports).
struct Picture {
    std::vector<uint8_t> rows;
    BitmapDescriptor bitmap{};

    Picture(int32_t width, int32_t height, int32_t bits, int32_t order) {
        bitmap.structSize = sizeof bitmap;
        bitmap.width = width;
        bitmap.height = height;
        bitmap.bitsPerPixel = bits;
        bitmap.bytesPerLine = kernel::BytesPerLine(width, bits);
        bitmap.storageSize = static_cast<uint32_t>(bitmap.bytesPerLine) * static_cast<uint32_t>(height);
        bitmap.colorOrder = order;
        bitmap.viewPerspective = kViewTopLeft;
        rows.resize(bitmap.storageSize);
        // Every byte different from its neighbours, padding included.
        for (size_t i = 0; i < rows.size(); ++i) rows[i] = static_cast<uint8_t>(i * 7 + 3);
        bitmap.storage = rows.data();
    }

    // 0xXXRRGGBB as the rows should hold it.
    uint32_t Expected(int32_t x, int32_t y) const {
        const int32_t step = bitmap.bitsPerPixel / 8;
        const uint8_t* p = rows.data() + static_cast<size_t>(y) * bitmap.bytesPerLine + x * step;
        const bool rgb = bitmap.colorOrder == kColorOrderRgb;
        const uint32_t blue = rgb ? p[2] : p[0];
        const uint32_t red = rgb ? p[0] : p[2];
        const uint32_t fourth = step == 4 ? p[3] : 0;
        return fourth << 24 | red << 16 | uint32_t{p[1]} << 8 | blue;
    }
};

}  // namespace

TEST(PaintRows, MatchEveryPixelForEveryWidthDepthOrderAndWay) {
    for (int32_t bits : {24, 32})
        for (int32_t order : {kColorOrderBgr, kColorOrderRgb})
            for (bool shuffles : {false, true})
                // Widths around the steps of 4 and 16 pixels, and a thumbnail's.
                for (int32_t width : {1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 31, 32, 33, 47, 48, 49, 135}) {
                    const int32_t height = 3;
                    Picture picture(width, height, bits, order);
                    std::vector<uint32_t> out(static_cast<size_t>(width) * height + 1, 0xDEADBEEFu);
                    ASSERT_TRUE(kernel::ToPaintRows(picture.bitmap, out.data(), out.size() - 1, shuffles));
                    for (int32_t y = 0; y < height; ++y)
                        for (int32_t x = 0; x < width; ++x)
                            ASSERT_EQ(out[static_cast<size_t>(y) * width + x], picture.Expected(x, y))
                                << bits << " bits, order " << order << ", shuffles " << shuffles << ", width "
                                << width << ", at " << x << "," << y;
                    EXPECT_EQ(out.back(), 0xDEADBEEFu) << "nothing is written past the rows";
                }
}

TEST(PaintRows, OnlyTrueColourPicturesHaveThem) {
    for (int32_t bits : {1, 4, 8}) {
        Picture picture(4, 2, bits, kColorOrderBgr);
        EXPECT_FALSE(kernel::HasPaintRows(picture.bitmap)) << bits;
        uint32_t out[8] = {};
        EXPECT_FALSE(kernel::ToPaintRows(picture.bitmap, out, 8)) << bits;
    }
    Picture odd(4, 2, 24, 7);
    EXPECT_FALSE(kernel::HasPaintRows(odd.bitmap)) << "an order the layer does not know";
    EXPECT_TRUE(kernel::HasPaintRows(Picture(4, 2, 32, kColorOrderRgb).bitmap));
}

TEST(PaintRows, TooLittleRoomWritesNothing) {
    Picture picture(5, 3, 24, kColorOrderBgr);
    std::vector<uint32_t> out(14, 0x12345678u);
    EXPECT_FALSE(kernel::ToPaintRows(picture.bitmap, out.data(), out.size()));
    for (uint32_t word : out) EXPECT_EQ(word, 0x12345678u);
    EXPECT_FALSE(kernel::ToPaintRows(picture.bitmap, nullptr, 100));
}

TEST(PaintRows, InconsistentDescriptorsAreRefused) {
    std::vector<uint32_t> out(64);
    Picture narrowRows(5, 3, 24, kColorOrderBgr);
    narrowRows.bitmap.bytesPerLine = 12;  // 5 pixels need 15 bytes
    EXPECT_FALSE(kernel::ToPaintRows(narrowRows.bitmap, out.data(), out.size()));
    Picture empty(5, 3, 24, kColorOrderBgr);
    empty.bitmap.storage = nullptr;
    EXPECT_FALSE(kernel::ToPaintRows(empty.bitmap, out.data(), out.size()));
    Picture flat(5, 3, 24, kColorOrderBgr);
    flat.bitmap.height = 0;
    EXPECT_FALSE(kernel::ToPaintRows(flat.bitmap, out.data(), out.size()));
}
