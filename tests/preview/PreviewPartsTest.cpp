// The renderer's parts one by one: the record, the type and route of a file
// name, the metafile layout, the packed size, the aspect fit and the scaling.
#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <string>

#include "PreviewTestSupport.h"
#include "browser/PreviewRender.h"
#include "browser/PreviewRoutes.h"

namespace {

using browser::ChoosePreviewRoute;
using browser::FitRectToAspect;
using browser::PreviewFileType;
using browser::PreviewRoute;
using previewtest::Bytes;
using previewtest::MakeRequest;

TEST(PreviewRecord, LayoutMatchesTheMessageContract) {
    EXPECT_EQ(browser::kPreviewReadyMessage, 0x405u);
    EXPECT_EQ(offsetof(browser::PreviewBitmapRecord, reserved), 0u);
    EXPECT_EQ(offsetof(browser::PreviewBitmapRecord, thumbnailSize), 4u);
    EXPECT_EQ(offsetof(browser::PreviewBitmapRecord, fileName), 8u);
    EXPECT_EQ(offsetof(browser::PreviewBitmapRecord, bitmap), 528u);
#if UINTPTR_MAX == 0xFFFFFFFFu
    EXPECT_EQ(sizeof(browser::PreviewBitmapRecord), 684u);
#else
    EXPECT_EQ(sizeof(browser::PreviewBitmapRecord), 704u);
#endif
    EXPECT_EQ(sizeof(browser::PreviewRequest::fileName), 512u);
    EXPECT_EQ(sizeof(browser::PreviewBitmapRecord::fileName), 520u);
}

browser::PreviewRequest Named(const std::string& name) {
    return MakeRequest(name, previewtest::kNoData, 128, nullptr);
}

TEST(PreviewFileType, IsTheLastFourCharactersWithoutLeadingDots) {
    EXPECT_EQ(PreviewFileType(Named("x.jpeg")), "jpeg");
    EXPECT_EQ(PreviewFileType(Named("picture.wmf")), "wmf");
    EXPECT_EQ(PreviewFileType(Named("PICTURE.WMF")), "WMF");
    EXPECT_EQ(PreviewFileType(Named("a.b")), "a.b");
    EXPECT_EQ(PreviewFileType(Named("wmf")), "wmf");
    EXPECT_EQ(PreviewFileType(Named("x.tiff")), "tiff");
    EXPECT_EQ(PreviewFileType(Named("x..ab")), "ab");
    EXPECT_EQ(PreviewFileType(Named("....")), "");
    EXPECT_EQ(PreviewFileType(Named("")), "");
    EXPECT_EQ(PreviewFileType(Named("holiday.2000.jpg")), "jpg");
}

TEST(PreviewFileType, ReadsAnUnterminatedNameOnlyWithinItsField) {
    std::string name(508, 'n');
    name += ".png";
    name += "garbage behind the field";
    const browser::PreviewRequest request = Named(name);
    ASSERT_EQ(browser::PreviewFileNameLength(request), 512u);
    EXPECT_EQ(PreviewFileType(request), "png");
    EXPECT_EQ(ChoosePreviewRoute(request), PreviewRoute::kPlaceholder);
}

TEST(PreviewRoute, WmfGoesToTheMetafileRoute) {
    EXPECT_EQ(ChoosePreviewRoute(Named("clip.wmf")), PreviewRoute::kMetafile);
    EXPECT_EQ(ChoosePreviewRoute(Named("CLIP.WMF")), PreviewRoute::kMetafile);
    EXPECT_EQ(ChoosePreviewRoute(Named("clip.WmF")), PreviewRoute::kMetafile);
    EXPECT_EQ(ChoosePreviewRoute(Named("wmf")), PreviewRoute::kMetafile);
}

TEST(PreviewRoute, EpsTifAndPngAlwaysGetThePlaceholder) {
    for (const char* name : {"a.eps", "a.EPS", "a.tif", "a.TIF", "a.png", "a.Png"})
        EXPECT_EQ(ChoosePreviewRoute(Named(name)), PreviewRoute::kPlaceholder) << name;
}

TEST(PreviewRoute, EverythingElseGoesToTheImagingLayer) {
    for (const char* name :
         {"a.bmp", "a.jpg", "a.jpeg", "a.emf", "a.cmp", "a.b", "x.tiff", "a.gif", "", "noname"})
        EXPECT_EQ(ChoosePreviewRoute(Named(name)), PreviewRoute::kImaging) << name;
}

TEST(MetafileLayout, TheFirstWordTellsTheKind) {
    const uint8_t placeable[] = {0xD7, 0xCD, 0xC6, 0x9A, 0};
    const uint8_t plain[] = {0x01, 0x00, 0x09, 0x00, 0};
    const uint8_t enhanced[] = {0x01, 0x00, 0x00, 0x00, 0};
    const uint8_t bigEndian[] = {0x9A, 0xC6, 0xCD, 0xD7, 0};
    EXPECT_EQ(browser::ReadMetafileLayout(placeable, 5).kind, browser::MetafileLayoutKind::kPlaceable);
    EXPECT_EQ(browser::ReadMetafileLayout(placeable, 5).headerBytes, 22u);
    EXPECT_EQ(browser::ReadMetafileLayout(plain, 5).kind, browser::MetafileLayoutKind::kPlain);
    EXPECT_EQ(browser::ReadMetafileLayout(plain, 5).headerBytes, 0u);
    EXPECT_EQ(browser::ReadMetafileLayout(enhanced, 5).kind, browser::MetafileLayoutKind::kUnknown);
    EXPECT_EQ(browser::ReadMetafileLayout(bigEndian, 5).kind, browser::MetafileLayoutKind::kUnknown);
}

TEST(MetafileLayout, FewerThanFourBytesAreUnknown) {
    const uint8_t placeable[] = {0xD7, 0xCD, 0xC6, 0x9A};
    for (uint32_t length = 0; length < 4; ++length)
        EXPECT_EQ(browser::ReadMetafileLayout(placeable, length).kind, browser::MetafileLayoutKind::kUnknown);
    EXPECT_EQ(browser::ReadMetafileLayout(placeable, 4).kind, browser::MetafileLayoutKind::kPlaceable);
    EXPECT_EQ(browser::ReadMetafileLayout(nullptr, 100).kind, browser::MetafileLayoutKind::kUnknown);
}

TEST(PackedSize, LowWordIsTheWidthAndHighWordTheHeightSignExtended) {
    EXPECT_EQ(browser::PackedSize(128).cx, 128);
    EXPECT_EQ(browser::PackedSize(128).cy, 0);
    EXPECT_EQ(browser::PackedSize(64).cx, 64);
    EXPECT_EQ(browser::PackedSize(64).cy, 0);
    EXPECT_EQ(browser::PackedSize(0x00400080).cx, 128);
    EXPECT_EQ(browser::PackedSize(0x00400080).cy, 64);
    EXPECT_EQ(browser::PackedSize(0xFFFF).cx, -1);
    EXPECT_EQ(browser::PackedSize(0xFFFF).cy, 0);
    EXPECT_EQ(browser::PackedSize(-1).cx, -1);
    EXPECT_EQ(browser::PackedSize(-1).cy, -1);
    EXPECT_EQ(browser::PackedSize(INT32_MIN).cx, 0);
    EXPECT_EQ(browser::PackedSize(INT32_MIN).cy, -32768);
}

RECT Fit(RECT rect, int numerator, int denominator) {
    FitRectToAspect(&rect, numerator, denominator);
    return rect;
}

TEST(FitRectToAspect, AZeroHeightTakesTheBitmapsOwnSize) {
    const RECT fitted = Fit(RECT{0, 0, 128, 0}, 1000, 800);
    EXPECT_EQ(fitted.right, 1000);
    EXPECT_EQ(fitted.bottom, 800);
    const RECT small = Fit(RECT{0, 0, 64, 0}, 3, 5000);
    EXPECT_EQ(small.right, 3);
    EXPECT_EQ(small.bottom, 5000);
}

TEST(FitRectToAspect, WideAndTallBitmapsFitTheSquare) {
    const RECT wide = Fit(RECT{0, 0, 100, 100}, 300, 100);
    EXPECT_EQ(wide.right - wide.left, 100);
    EXPECT_EQ(wide.bottom - wide.top, 33);
    const RECT tall = Fit(RECT{0, 0, 100, 100}, 100, 300);
    EXPECT_EQ(tall.right - tall.left, 33);
    EXPECT_EQ(tall.bottom - tall.top, 100);
}

TEST(FitRectToAspect, MovesOnlyRightAndBottom) {
    const RECT fitted = Fit(RECT{10, 20, 110, 120}, 300, 100);
    EXPECT_EQ(fitted.left, 10);
    EXPECT_EQ(fitted.top, 20);
    EXPECT_EQ(fitted.right, 110);
    EXPECT_EQ(fitted.bottom, 53);
}

TEST(FitRectToAspect, RoundsAsMulDivDoes) {
    // 100 * 2 / 3 = 66.67 rounds up, where a truncating division would give 66.
    const RECT fitted = Fit(RECT{0, 0, 100, 100}, 2, 3);
    EXPECT_EQ(fitted.right, 67);
    EXPECT_EQ(fitted.bottom, 100);
}

TEST(FitRectToAspect, ZeroAspectTermsNeverFault) {
    // MulDiv answers -1 for a zero divisor; the fallback takes the terms.
    const RECT zeroDenominator = Fit(RECT{0, 0, 100, 100}, 5, 0);
    EXPECT_EQ(zeroDenominator.right, 5);
    EXPECT_EQ(zeroDenominator.bottom, 100);
    const RECT zeroNumerator = Fit(RECT{0, 0, 100, 100}, 0, 5);
    EXPECT_EQ(zeroNumerator.right, 0);
    EXPECT_EQ(zeroNumerator.bottom, 100);
    const RECT bothZero = Fit(RECT{0, 0, 0, 0}, 0, 0);
    EXPECT_EQ(bothZero.right, 0);
    EXPECT_EQ(bothZero.bottom, 0);
}

TEST(FitRectToAspect, HugeValuesAreClampedNotOverflowed) {
    const RECT farRight = Fit(RECT{INT_MAX - 10, 0, INT_MAX, 0}, 1000, 800);
    EXPECT_EQ(farRight.right, INT_MAX);
    EXPECT_EQ(farRight.bottom, 800);
    const RECT inverted = Fit(RECT{INT_MAX, INT_MAX, INT_MIN, INT_MIN}, 4, 3);
    EXPECT_EQ(inverted.right, INT_MAX);
    EXPECT_EQ(inverted.bottom, INT_MAX);
    // An overflowing MulDiv answers -1, and the width falls back to the term.
    const RECT overflow = Fit(RECT{0, 0, 10, INT_MAX}, INT_MAX, 1);
    EXPECT_EQ(overflow.right, INT_MAX);
    EXPECT_EQ(overflow.bottom, INT_MAX);
    FitRectToAspect(nullptr, 1, 1);
}

// ---- ScaleBitmapToFit ---------------------------------------------------------------

class ScaleBitmapToFitTest : public ::testing::Test {
protected:
    void TearDown() override {
        imaging::FreeBitmap(&bitmap_);
        EXPECT_EQ(imaging::kernel::LiveStorageCount(), live_);
    }
    void Load(const Bytes& file) {
        ASSERT_FALSE(file.empty());
        imaging::FileInfo info{};
        ASSERT_EQ(
            imaging::QueryMemoryInfo(file.data(), &info, static_cast<uint32_t>(file.size()), 0, nullptr),
            imaging::kSuccess);
        ASSERT_EQ(imaging::LoadBitmapMemory(file.data(), &bitmap_, info.fileBitsPerPixel, info.fileOrder,
                                            static_cast<uint32_t>(file.size()), nullptr),
                  imaging::kSuccess);
    }
    size_t live_ = imaging::kernel::LiveStorageCount();
    imaging::BitmapDescriptor bitmap_{};
};

TEST_F(ScaleBitmapToFitTest, ANullBitmapFails) {
    EXPECT_FALSE(browser::ScaleBitmapToFit(nullptr, 128, 0));
}

TEST_F(ScaleBitmapToFitTest, AnEmptyBitmapFailsAsTheResizeDoes) {
    EXPECT_FALSE(browser::ScaleBitmapToFit(&bitmap_, 128, 0));
}

TEST_F(ScaleBitmapToFitTest, HeightZeroKeepsTheSize) {
    ASSERT_EQ(
        imaging::CreateBitmap(&bitmap_, 1, 300, 100, 24, imaging::kColorOrderBgr, nullptr, 0, nullptr, 0),
        imaging::kSuccess);
    const void* before = bitmap_.storage;
    EXPECT_TRUE(browser::ScaleBitmapToFit(&bitmap_, 128, 0));
    EXPECT_EQ(bitmap_.width, 300);
    EXPECT_EQ(bitmap_.height, 100);
    EXPECT_EQ(bitmap_.bitsPerPixel, 24);
    // The resize ran: it replaced the storage.
    EXPECT_NE(bitmap_.storage, before);
}

TEST_F(ScaleBitmapToFitTest, ARealBoxFitsTheAspect) {
    ASSERT_EQ(
        imaging::CreateBitmap(&bitmap_, 1, 300, 100, 24, imaging::kColorOrderBgr, nullptr, 0, nullptr, 0),
        imaging::kSuccess);
    EXPECT_TRUE(browser::ScaleBitmapToFit(&bitmap_, 100, 100));
    EXPECT_EQ(bitmap_.width, 100);
    EXPECT_EQ(bitmap_.height, 33);
}

TEST_F(ScaleBitmapToFitTest, AOneBitGreyPictureIsResizedFavouringBlack) {
    // Only the favour-black resize keeps a 1-bit picture at 1 bit.
    Load(previewtest::OneBitBmp(40, 20, 0x000000, 0xFFFFFF));
    ASSERT_EQ(bitmap_.bitsPerPixel, 1);
    ASSERT_NE(imaging::IsGrayScaleBitmap(&bitmap_), 0);
    EXPECT_TRUE(browser::ScaleBitmapToFit(&bitmap_, 128, 0));
    EXPECT_EQ(bitmap_.bitsPerPixel, 1);
    EXPECT_EQ(bitmap_.width, 40);
    EXPECT_EQ(bitmap_.height, 20);
}

TEST_F(ScaleBitmapToFitTest, AOneBitColourPictureIsResampled) {
    Load(previewtest::OneBitBmp(40, 20, 0xFF0000, 0x0000FF));
    ASSERT_EQ(bitmap_.bitsPerPixel, 1);
    ASSERT_EQ(imaging::IsGrayScaleBitmap(&bitmap_), 0);
    EXPECT_TRUE(browser::ScaleBitmapToFit(&bitmap_, 128, 0));
    EXPECT_NE(bitmap_.bitsPerPixel, 1);
    EXPECT_EQ(bitmap_.width, 40);
    EXPECT_EQ(bitmap_.height, 20);
}

TEST_F(ScaleBitmapToFitTest, AGreyPictureOfMoreThanOneBitIsResampled) {
    ASSERT_EQ(imaging::CreateBitmap(&bitmap_, 1, 10, 10, 8, imaging::kColorOrderBgr, nullptr, 0, nullptr, 0),
              imaging::kSuccess);
    ASSERT_NE(imaging::IsGrayScaleBitmap(&bitmap_), 0);
    EXPECT_TRUE(browser::ScaleBitmapToFit(&bitmap_, 5, 5));
    EXPECT_EQ(bitmap_.width, 5);
    EXPECT_EQ(bitmap_.height, 5);
    EXPECT_EQ(bitmap_.bitsPerPixel, 8);
}

}  // namespace
