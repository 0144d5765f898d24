// The imaging layer's route (BMP, JPG, JPEG, EMF, CMP and any other type),
// and the types that always get the no-preview picture (EPS, TIF, PNG).
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "PreviewTestSupport.h"
#include "browser/PreviewRender.h"
#include "browser/PreviewRoutes.h"

namespace {

using previewtest::Bytes;
using previewtest::LogCapture;
using previewtest::MakeRequest;
using previewtest::PreviewReceiver;

class ImagingRouteTest : public ::testing::Test {
protected:
    void TearDown() override {
        receiver_.FreeAll();
        EXPECT_EQ(imaging::kernel::LiveStorageCount(), live_) << "pixels were leaked";
    }

    int Render(const std::string& name, const Bytes& data, int32_t size = 64) {
        receiver_.FreeAll();
        return browser::RenderPreview(MakeRequest(name, data, size, receiver_.Handle()));
    }

    // The picture came through the layer at its own size, black on the left.
    void ExpectHalfBlackPicture(int width, int height, const std::string& name) {
        ASSERT_EQ(receiver_.Count(), 1u) << name;
        const imaging::BitmapDescriptor& bitmap = receiver_.LastPixels();
        EXPECT_EQ(bitmap.width, width) << name;
        EXPECT_EQ(bitmap.height, height) << name;
        ASSERT_EQ(bitmap.bitsPerPixel, 24) << name;
        EXPECT_TRUE(previewtest::IsDark(previewtest::PixelAt(bitmap, 2, height / 2))) << name;
        EXPECT_TRUE(previewtest::IsWhite(previewtest::PixelAt(bitmap, width - 3, height / 2))) << name;
        EXPECT_STREQ(receiver_.Last().record.fileName, name.c_str());
    }

    // The no-preview picture of the size went out.
    void ExpectPlaceholder(int32_t size, const std::string& name) {
        ASSERT_EQ(receiver_.Count(), 1u) << name;
        const imaging::BitmapDescriptor& bitmap = receiver_.LastPixels();
        EXPECT_EQ(bitmap.width, size) << name;
        EXPECT_EQ(bitmap.height, size) << name;
        EXPECT_TRUE(previewtest::IsWhite(previewtest::PixelAt(bitmap, 0, 0))) << name;
        EXPECT_GT(previewtest::CountDark(bitmap), 20u) << name;
        EXPECT_EQ(receiver_.Last().record.thumbnailSize, size) << name;
        EXPECT_STREQ(receiver_.Last().record.fileName, name.c_str());
    }

    size_t live_ = imaging::kernel::LiveStorageCount();
    PreviewReceiver receiver_;
    LogCapture log_;
};

TEST_F(ImagingRouteTest, BmpJpgAndJpegComeAtTheirOwnSize) {
    const Bytes bmp = previewtest::HalfBlackPicture(GUID_ContainerFormatBmp, 90, 40);
    const Bytes jpeg = previewtest::HalfBlackPicture(GUID_ContainerFormatJpeg, 96, 48);
    ASSERT_FALSE(bmp.empty());
    ASSERT_FALSE(jpeg.empty());
    for (const int32_t size : {64, 128}) {
        EXPECT_EQ(Render("photo.bmp", bmp, size), 0);
        ExpectHalfBlackPicture(90, 40, "photo.bmp");
        EXPECT_EQ(receiver_.Last().record.thumbnailSize, size);
        EXPECT_EQ(Render("photo.JPG", jpeg, size), 0);
        ExpectHalfBlackPicture(96, 48, "photo.JPG");
        EXPECT_EQ(Render("photo.jpeg", jpeg, size), 0);
        ExpectHalfBlackPicture(96, 48, "photo.jpeg");
    }
    EXPECT_TRUE(log_.Lines().empty());
}

TEST_F(ImagingRouteTest, ALargePictureKeepsItsSizeForTheDialogToFit) {
    const Bytes bmp = previewtest::HalfBlackPicture(GUID_ContainerFormatBmp, 1000, 800);
    ASSERT_FALSE(bmp.empty());
    EXPECT_EQ(Render("big.bmp", bmp, 128), 0);
    ExpectHalfBlackPicture(1000, 800, "big.bmp");
}

TEST_F(ImagingRouteTest, AnEnhancedMetafileIsPlayedByTheLayer) {
    const Bytes emf = previewtest::BlackLeftHalfEmf(60, 40);
    ASSERT_FALSE(emf.empty());
    EXPECT_EQ(Render("drawing.emf", emf, 128), 0);
    ASSERT_EQ(receiver_.Count(), 1u);
    const imaging::BitmapDescriptor& bitmap = receiver_.LastPixels();
    // At its natural size on the screen, give or take the rounding of the frame.
    EXPECT_NEAR(bitmap.width, 60, 2);
    EXPECT_NEAR(bitmap.height, 40, 2);
    EXPECT_TRUE(previewtest::IsDark(previewtest::PixelAt(bitmap, 5, bitmap.height / 2)));
    EXPECT_TRUE(previewtest::IsWhite(previewtest::PixelAt(bitmap, bitmap.width - 5, bitmap.height / 2)));
}

TEST_F(ImagingRouteTest, ACmpFileIsDecodedByItsContent) {
    const Bytes jpeg = previewtest::HalfBlackPicture(GUID_ContainerFormatJpeg, 64, 32);
    ASSERT_FALSE(jpeg.empty());
    EXPECT_EQ(Render("scan.cmp", jpeg), 0);
    ExpectHalfBlackPicture(64, 32, "scan.cmp");
    EXPECT_EQ(Render("scan.CMP", Bytes{'C', 'M', 'P', 0, 1, 2, 3, 4, 5, 6, 7, 8}), 1);
    ExpectPlaceholder(64, "scan.CMP");
}

TEST_F(ImagingRouteTest, PngTifAndEpsAlwaysGetThePlaceholder) {
    const Bytes png = previewtest::HalfBlackPicture(GUID_ContainerFormatPng, 50, 30);
    const Bytes tiff = previewtest::HalfBlackPicture(GUID_ContainerFormatTiff, 50, 30);
    const Bytes bmp = previewtest::HalfBlackPicture(GUID_ContainerFormatBmp, 50, 30);
    ASSERT_FALSE(png.empty());
    ASSERT_FALSE(tiff.empty());
    // The layer could read them all.
    for (const Bytes* file : {&png, &tiff, &bmp}) {
        imaging::FileInfo info{};
        ASSERT_EQ(
            imaging::QueryMemoryInfo(file->data(), &info, static_cast<uint32_t>(file->size()), 0, nullptr),
            imaging::kSuccess);
    }
    for (const int32_t size : {64, 128}) {
        EXPECT_EQ(Render("art.png", png, size), 1);
        ExpectPlaceholder(size, "art.png");
        EXPECT_EQ(Render("art.TIF", tiff, size), 1);
        ExpectPlaceholder(size, "art.TIF");
        EXPECT_EQ(Render("art.eps", bmp, size), 1);
        ExpectPlaceholder(size, "art.eps");
        EXPECT_EQ(Render("art.PNG", png, size), 1);
        ExpectPlaceholder(size, "art.PNG");
    }
    EXPECT_TRUE(log_.Lines().empty());
}

TEST_F(ImagingRouteTest, TiffSpelledWithFourLettersGoesToTheLayer) {
    const Bytes tiff = previewtest::HalfBlackPicture(GUID_ContainerFormatTiff, 50, 30);
    ASSERT_FALSE(tiff.empty());
    EXPECT_EQ(Render("art.tiff", tiff), 0);
    ExpectHalfBlackPicture(50, 30, "art.tiff");
}

TEST_F(ImagingRouteTest, AThreeCharacterNameGoesToTheLayer) {
    const Bytes bmp = previewtest::HalfBlackPicture(GUID_ContainerFormatBmp, 20, 10);
    EXPECT_EQ(Render("a.b", bmp), 0);
    ExpectHalfBlackPicture(20, 10, "a.b");
}

TEST_F(ImagingRouteTest, AWmfNamedBmpIsTheLayersBusiness) {
    // The name chooses the route, the content the decoder.
    const Bytes wmf = previewtest::BlackSquareMetafile();
    EXPECT_EQ(Render("clip.bmp", previewtest::Placeable(wmf)), 0);
    ASSERT_EQ(receiver_.Count(), 1u);
    EXPECT_GT(receiver_.LastPixels().width, 0);
}

TEST_F(ImagingRouteTest, AOneBitGreyPictureKeepsItsDepth) {
    EXPECT_EQ(Render("line.bmp", previewtest::OneBitBmp(33, 17, 0x000000, 0xFFFFFF)), 0);
    ASSERT_EQ(receiver_.Count(), 1u);
    EXPECT_EQ(receiver_.LastPixels().bitsPerPixel, 1);
    EXPECT_EQ(receiver_.LastPixels().width, 33);
    EXPECT_EQ(receiver_.LastPixels().height, 17);
}

TEST_F(ImagingRouteTest, UnreadableFilesGetThePlaceholderWithoutALogEntry) {
    EXPECT_EQ(Render("photo.jpg", Bytes{0xFF, 0xD8, 0xFF, 0xE0, 0, 0, 0, 0}), 1);
    ExpectPlaceholder(64, "photo.jpg");
    EXPECT_EQ(Render("photo.bmp", Bytes{'B', 'M'}), 1);
    ExpectPlaceholder(64, "photo.bmp");
    EXPECT_EQ(Render("photo.bmp", Bytes{}), 1);
    ExpectPlaceholder(64, "photo.bmp");
    Bytes text(300, 'x');
    EXPECT_EQ(Render("notes.emf", text, 128), 1);
    ExpectPlaceholder(128, "notes.emf");
    EXPECT_TRUE(log_.Lines().empty());
}

TEST_F(ImagingRouteTest, ALengthLongerThanNullDataIsRefused) {
    browser::PreviewRequest request = MakeRequest("photo.bmp", previewtest::kNoData, 64, receiver_.Handle());
    request.dataLength = 4096;
    EXPECT_EQ(browser::RenderPreview(request), 1);
    ExpectPlaceholder(64, "photo.bmp");
}

TEST_F(ImagingRouteTest, AShortLengthReadsOnlyThatMuch) {
    // The data runs on behind the given length; the route reads only the length.
    Bytes bmp = previewtest::HalfBlackPicture(GUID_ContainerFormatBmp, 40, 20);
    ASSERT_GT(bmp.size(), 100u);
    browser::PreviewRequest request = MakeRequest("photo.bmp", bmp, 64, receiver_.Handle());
    request.dataLength = 60;
    EXPECT_EQ(browser::RenderPreview(request), 1);
    ExpectPlaceholder(64, "photo.bmp");
}

TEST_F(ImagingRouteTest, DeclinedPicturesAreFreedByTheRenderer) {
    receiver_.SetAnswer(PreviewReceiver::Answer::kCopyAndDecline);
    const Bytes bmp = previewtest::HalfBlackPicture(GUID_ContainerFormatBmp, 30, 30);
    EXPECT_EQ(browser::RenderPreview(MakeRequest("a.bmp", bmp, 64, receiver_.Handle())), 0);
    EXPECT_EQ(browser::RenderPreview(MakeRequest("a.png", bmp, 64, receiver_.Handle())), 1);
    ASSERT_EQ(receiver_.Count(), 2u);
    // What the receiver saw was whole while it ran.
    EXPECT_EQ(receiver_.Messages()[0].pixels.width, 30);
    EXPECT_EQ(receiver_.Messages()[1].pixels.width, 64);
    // TearDown finds no pixels of the renderer left.
}

TEST_F(ImagingRouteTest, TakenPicturesStayWholeAfterTheRendererReturns) {
    const Bytes bmp = previewtest::HalfBlackPicture(GUID_ContainerFormatBmp, 30, 20);
    for (const auto answer : {PreviewReceiver::Answer::kTake, PreviewReceiver::Answer::kTakeAnswering7}) {
        receiver_.SetAnswer(answer);
        receiver_.FreeAll();
        const size_t before = imaging::kernel::LiveStorageCount();
        EXPECT_EQ(Render("a.bmp", bmp), 0);
        ASSERT_EQ(receiver_.Count(), 1u);
        // The receiver's pixels are the only ones the render left alive.
        EXPECT_EQ(imaging::kernel::LiveStorageCount(), before + 1);
        EXPECT_EQ(imaging::kernel::CheckBitmap(&receiver_.LastPixels()), imaging::kSuccess);
        ExpectHalfBlackPicture(30, 20, "a.bmp");
    }
}

}  // namespace
