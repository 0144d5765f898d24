// The fit of a picture into the 85 by 64 thumbnail box.
#include <gtest/gtest.h>

#include <limits>

#include "thumbnails/ThumbnailFit.h"

using thumbnails::FitIntoThumbnailBox;
using thumbnails::ThumbnailSize;

namespace {

::testing::AssertionResult Fits(int32_t w, int32_t h, int32_t expectedWidth, int32_t expectedHeight) {
    const ThumbnailSize size = FitIntoThumbnailBox(w, h);
    if (size.width == expectedWidth && size.height == expectedHeight) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << w << " x " << h << " gave " << size.width << " x " << size.height;
}

}  // namespace

TEST(ThumbnailFit, EqualProductsTakeTheSecondRule) {
    // 170 x 64 = 10880 = 128 x 85.
    EXPECT_TRUE(Fits(170, 128, 85, 64));
    EXPECT_TRUE(Fits(85, 64, 85, 64));
}

TEST(ThumbnailFit, WideAndTallPictures) {
    EXPECT_TRUE(Fits(200, 100, 85, 42));
    EXPECT_TRUE(Fits(100, 200, 32, 64));
    EXPECT_TRUE(Fits(171, 128, 85, 63)) << "just wider than the box";
}

TEST(ThumbnailFit, SmallPicturesAreEnlarged) {
    EXPECT_TRUE(Fits(10, 10, 64, 64));
    EXPECT_TRUE(Fits(2, 1, 85, 42));
    EXPECT_TRUE(Fits(1, 1, 64, 64));
}

TEST(ThumbnailFit, VeryNarrowPicturesGetTheWidthZero) {
    EXPECT_TRUE(Fits(1, 100, 0, 64));
    EXPECT_TRUE(Fits(100, 1, 85, 0));
}

TEST(ThumbnailFit, LargeSizesDoNotOverflow) {
    const int32_t max = std::numeric_limits<int32_t>::max();
    EXPECT_TRUE(Fits(max, max, 64, 64));
    EXPECT_TRUE(Fits(max, 1, 85, 0));
    EXPECT_TRUE(Fits(1, max, 0, 64));
    EXPECT_TRUE(Fits(2000000000, 1000000000, 85, 42));
}

TEST(ThumbnailFit, SizesNoBitmapHasGiveNoDivisionByZero) {
    EXPECT_TRUE(Fits(0, 0, 0, 64));
    EXPECT_TRUE(Fits(0, -1, 85, 0)) << "0 x 64 > -85: the first rule, dividing by the width 0";
    EXPECT_TRUE(Fits(5, 0, 85, 0));
    const ThumbnailSize clamped = FitIntoThumbnailBox(-1, std::numeric_limits<int32_t>::min());
    EXPECT_EQ(clamped.width, 85);
    EXPECT_EQ(clamped.height, std::numeric_limits<int32_t>::max()) << "clamped, not wrapped";
}
