// The metafile route: Windows metafiles, plain and placeable, played into a
// 128 x 128 bitmap; every failure ends in the no-preview picture, with the
// log entries of each step.
#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <regex>
#include <string>
#include <vector>

#include "PreviewTestSupport.h"
#include "browser/NoPreviewPicture.h"
#include "browser/PreviewRender.h"
#include "browser/PreviewRoutes.h"

namespace {

using previewtest::Bytes;
using previewtest::LogCapture;
using previewtest::MakeRequest;
using previewtest::PreviewReceiver;

// The number behind "Line " in a log line, or -1.
long LoggedLine(const std::string& line) {
    std::smatch match;
    static const std::regex pattern("^GraphicDlg, Line ([0-9]+): .*$");
    if (!std::regex_match(line, match, pattern)) return -1;
    return std::stol(match[1].str());
}

bool IsStepFailure(const std::string& line) {
    static const std::regex pattern("^GraphicDlg, Line [0-9]+: Error number = -?[0-9]+$");
    return std::regex_match(line, pattern);
}

// True when the bitmap holds exactly the no-preview picture of this size.
bool IsNoPreviewPicture(const imaging::BitmapDescriptor& bitmap, int32_t size) {
    imaging::BitmapDescriptor expected{};
    if (browser::MakeNoPreviewPicture(size, &expected) != imaging::kSuccess) return false;
    const bool same = bitmap.width == expected.width && bitmap.height == expected.height &&
                      bitmap.bitsPerPixel == expected.bitsPerPixel &&
                      bitmap.storageSize == expected.storageSize && bitmap.storage != nullptr &&
                      std::memcmp(bitmap.storage, expected.storage, expected.storageSize) == 0;
    imaging::FreeBitmap(&expected);
    return same;
}

class MetafileRouteTest : public ::testing::Test {
protected:
    void TearDown() override {
        receiver_.FreeAll();
        EXPECT_EQ(imaging::kernel::LiveStorageCount(), live_) << "pixels were leaked";
    }

    int Render(const std::string& name, const Bytes& data, int32_t size) {
        return browser::RenderPreview(MakeRequest(name, data, size, receiver_.Handle()));
    }

    // Renders data that must end in the no-preview picture, with one log entry
    // of a failed step; gives that entry.
    std::string ExpectPlaceholderAfterStepFailure(const Bytes& data, int32_t size = 64) {
        log_.Clear();
        receiver_.FreeAll();
        EXPECT_EQ(Render("clip.wmf", data, size), 1);
        EXPECT_EQ(receiver_.Count(), 1u);
        if (receiver_.Count() != 1) return std::string();
        EXPECT_TRUE(IsNoPreviewPicture(receiver_.LastPixels(), size));
        EXPECT_EQ(log_.Lines().size(), 1u);
        if (log_.Lines().size() != 1) return std::string();
        EXPECT_TRUE(IsStepFailure(log_.Lines()[0])) << log_.Lines()[0];
        return log_.Lines()[0];
    }

    size_t live_ = imaging::kernel::LiveStorageCount();
    PreviewReceiver receiver_;
    LogCapture log_;
    // Requests point into it, so it outlives them.
    const Bytes wmf_ = previewtest::BlackSquareMetafile();
};

TEST_F(MetafileRouteTest, APlainMetafileBecomesA128SquareAtEitherThumbnailSize) {
    const Bytes bits = previewtest::BlackSquareMetafile();
    ASSERT_FALSE(bits.empty());
    for (const int32_t size : {128, 64}) {
        receiver_.FreeAll();
        EXPECT_EQ(Render("Clip.WMF", bits, size), 0) << size;
        ASSERT_EQ(receiver_.Count(), 1u);
        const PreviewReceiver::Received& message = receiver_.Last();
        EXPECT_EQ(message.wParam, 0u);
        EXPECT_EQ(message.record.reserved, 0u);
        EXPECT_EQ(message.record.thumbnailSize, size);
        EXPECT_STREQ(message.record.fileName, "Clip.WMF");
        const imaging::BitmapDescriptor& bitmap = receiver_.LastPixels();
        EXPECT_EQ(bitmap.width, 128);
        EXPECT_EQ(bitmap.height, 128);
        EXPECT_EQ(bitmap.bitsPerPixel, 24);
        // The square fills the middle on a white ground.
        EXPECT_TRUE(previewtest::IsDark(previewtest::PixelAt(bitmap, 64, 64)));
        EXPECT_TRUE(previewtest::IsWhite(previewtest::PixelAt(bitmap, 2, 2)));
        EXPECT_TRUE(previewtest::IsWhite(previewtest::PixelAt(bitmap, 125, 125)));
    }
    EXPECT_TRUE(log_.Lines().empty());
}

TEST_F(MetafileRouteTest, APlaceableMetafileIsPlayedBehindItsHeader) {
    const Bytes bits = previewtest::BlackSquareMetafile();
    ASSERT_FALSE(bits.empty());
    EXPECT_EQ(Render("clip.wmf", previewtest::Placeable(bits), 64), 0);
    ASSERT_EQ(receiver_.Count(), 1u);
    const imaging::BitmapDescriptor& bitmap = receiver_.LastPixels();
    EXPECT_EQ(bitmap.width, 128);
    EXPECT_EQ(bitmap.height, 128);
    EXPECT_TRUE(previewtest::IsDark(previewtest::PixelAt(bitmap, 64, 64)));
    EXPECT_TRUE(previewtest::IsWhite(previewtest::PixelAt(bitmap, 2, 2)));
    EXPECT_TRUE(log_.Lines().empty());
}

TEST_F(MetafileRouteTest, APlaceableHeaderWithABadChecksumStillPlays) {
    // The first word decides the layout; the header's other fields are not read.
    Bytes data = previewtest::Placeable(previewtest::BlackSquareMetafile());
    data[20] ^= 0xFF;
    EXPECT_EQ(Render("clip.wmf", data, 128), 0);
    ASSERT_EQ(receiver_.Count(), 1u);
    EXPECT_EQ(receiver_.LastPixels().width, 128);
    EXPECT_TRUE(previewtest::IsDark(previewtest::PixelAt(receiver_.LastPixels(), 64, 64)));
}

TEST_F(MetafileRouteTest, AFirstWordOfNeitherKindGetsThePlaceholder) {
    const Bytes emf = previewtest::BlackLeftHalfEmf(40, 40);
    ASSERT_FALSE(emf.empty());
    ExpectPlaceholderAfterStepFailure(emf);
    ExpectPlaceholderAfterStepFailure(Bytes{'B', 'M', 0, 0, 0, 0, 0, 0});
    Bytes swapped = previewtest::BlackSquareMetafile();
    std::swap(swapped[0], swapped[3]);
    ExpectPlaceholderAfterStepFailure(swapped);
}

TEST_F(MetafileRouteTest, FewerThanFourBytesGetThePlaceholder) {
    const Bytes placeable = previewtest::PlaceableHeader(0, 0, 100, 100, 1440);
    const std::string unknown = ExpectPlaceholderAfterStepFailure(Bytes{'B', 'M', 0, 0});
    for (size_t length = 0; length < 4; ++length) {
        const Bytes head(placeable.begin(), placeable.begin() + static_cast<std::ptrdiff_t>(length));
        // The same step refuses them as it refuses an unknown first word.
        EXPECT_EQ(LoggedLine(ExpectPlaceholderAfterStepFailure(head)), LoggedLine(unknown)) << length;
    }
}

TEST_F(MetafileRouteTest, NullDataWithALengthGetsThePlaceholder) {
    log_.Clear();
    browser::PreviewRequest request = MakeRequest("clip.wmf", previewtest::kNoData, 64, receiver_.Handle());
    request.dataLength = 1000;
    EXPECT_EQ(browser::RenderPreview(request), 1);
    ASSERT_EQ(receiver_.Count(), 1u);
    EXPECT_TRUE(IsNoPreviewPicture(receiver_.LastPixels(), 64));
    ASSERT_EQ(log_.Lines().size(), 1u);
    EXPECT_TRUE(IsStepFailure(log_.Lines()[0]));
}

// ---- The 22-byte rule --------------------------------------------------------------

struct CreateCalls {
    int count = 0;
    size_t lastSize = 0;
};
CreateCalls g_create;

HMETAFILE CountingCreate(const uint8_t* bits, size_t size) {
    ++g_create.count;
    g_create.lastSize = size;
    return browser::DefaultMetafileRouteOperations().createMetafile(bits, size);
}

TEST_F(MetafileRouteTest, APlaceableMetafileOfExactly22BytesStopsBeforeTheMetafileIsMade) {
    browser::MetafileRouteOperations operations = browser::DefaultMetafileRouteOperations();
    operations.createMetafile = &CountingCreate;
    g_create = CreateCalls{};
    const Bytes header = previewtest::PlaceableHeader(0, 0, 100, 100, 1440);
    ASSERT_EQ(header.size(), 22u);
    EXPECT_EQ(browser::RenderPreviewWith(MakeRequest("clip.wmf", header, 64, receiver_.Handle()), operations),
              1);
    EXPECT_EQ(g_create.count, 0);
    ASSERT_EQ(receiver_.Count(), 1u);
    EXPECT_TRUE(IsNoPreviewPicture(receiver_.LastPixels(), 64));

    Bytes longer = header;
    longer.push_back(0);
    EXPECT_EQ(browser::RenderPreviewWith(MakeRequest("clip.wmf", longer, 64, receiver_.Handle()), operations),
              1);
    EXPECT_EQ(g_create.count, 1);
    EXPECT_EQ(g_create.lastSize, 1u);
}

TEST_F(MetafileRouteTest, Of22And23BytesOnly23ReachTheMetafileStep) {
    const Bytes header = previewtest::PlaceableHeader(0, 0, 100, 100, 1440);
    const std::string at22 = ExpectPlaceholderAfterStepFailure(header);
    Bytes longer = header;
    longer.push_back(0);
    const std::string at23 = ExpectPlaceholderAfterStepFailure(longer);
    // A plain metafile whose bits fail the check stops at the metafile step too.
    Bytes brokenPlain = previewtest::BlackSquareMetafile();
    brokenPlain.resize(10);
    const std::string atMetafileStep = ExpectPlaceholderAfterStepFailure(brokenPlain);
    EXPECT_NE(LoggedLine(at22), LoggedLine(at23));
    EXPECT_EQ(LoggedLine(at23), LoggedLine(atMetafileStep));
    // A placeable header cut anywhere short of its end stops where 22 bytes do.
    for (size_t length = 4; length < 22; ++length) {
        const Bytes cut(header.begin(), header.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(LoggedLine(ExpectPlaceholderAfterStepFailure(cut)), LoggedLine(at22)) << length;
    }
}

TEST_F(MetafileRouteTest, DamagedMetafilesGetThePlaceholder) {
    const Bytes bits = previewtest::BlackSquareMetafile();
    // Cut short inside its first record (ending on a record's end would play
    // as if the end record came there).
    ExpectPlaceholderAfterStepFailure(Bytes(bits.begin(), bits.begin() + 18 + 4));
    ExpectPlaceholderAfterStepFailure(previewtest::Placeable(Bytes(bits.begin(), bits.begin() + 18)));
    // A header whose size ends inside the first record: the smaller of it and
    // the data is taken, and the record does not lie inside it.
    Bytes endsInARecord = bits;
    endsInARecord[6] = 9 + 3;
    endsInARecord[7] = 0;
    endsInARecord[8] = 0;
    endsInARecord[9] = 0;
    ASSERT_GT(bits[18], 3) << "the first record is longer than three words";
    ExpectPlaceholderAfterStepFailure(endsInARecord);
    // The first record's size made huge.
    Bytes hugeRecord = bits;
    hugeRecord[18] = 0xFF;
    hugeRecord[19] = 0xFF;
    hugeRecord[20] = 0xFF;
    hugeRecord[21] = 0x7F;
    ExpectPlaceholderAfterStepFailure(hugeRecord);
}

// ---- The device bitmap and the screen context ----------------------------------------

TEST_F(MetafileRouteTest, TheScreenContextIsNotReleased) {
    HDC first = ::GetDC(nullptr);
    ::ReleaseDC(nullptr, first);
    HDC again = ::GetDC(nullptr);
    ::ReleaseDC(nullptr, again);
    if (first != again) GTEST_SKIP() << "the screen's contexts are not reused here";
    EXPECT_EQ(Render("clip.wmf", previewtest::BlackSquareMetafile(), 64), 0);
    ASSERT_EQ(receiver_.Count(), 1u);
    // The route took the cached context and kept it, so the next one is another.
    HDC after = ::GetDC(nullptr);
    EXPECT_NE(after, first);
    ::ReleaseDC(nullptr, after);
}

struct RouteCalls {
    int screen = 0;
    int renderWidth = 0;
    int renderHeight = 0;
    COLORREF background = 0;
    std::vector<std::string> deletions;
};
RouteCalls g_route;

HDC CountingScreen() {
    ++g_route.screen;
    return browser::DefaultMetafileRouteOperations().screenContext();
}

HBITMAP RecordingRender(HMETAFILE metafile, HDC reference, int width, int height, COLORREF background) {
    g_route.renderWidth = width;
    g_route.renderHeight = height;
    g_route.background = background;
    return browser::DefaultMetafileRouteOperations().renderToBitmap(metafile, reference, width, height,
                                                                    background);
}

BOOL RecordingDeleteMetafile(HMETAFILE metafile) {
    g_route.deletions.push_back("metafile");
    return browser::DefaultMetafileRouteOperations().deleteMetafile(metafile);
}

BOOL RecordingDeleteBitmap(HGDIOBJ bitmap) {
    g_route.deletions.push_back("bitmap");
    return browser::DefaultMetafileRouteOperations().deleteBitmap(bitmap);
}

browser::MetafileRouteOperations RecordingOperations() {
    browser::MetafileRouteOperations operations = browser::DefaultMetafileRouteOperations();
    operations.screenContext = &CountingScreen;
    operations.renderToBitmap = &RecordingRender;
    operations.deleteMetafile = &RecordingDeleteMetafile;
    operations.deleteBitmap = &RecordingDeleteBitmap;
    return operations;
}

TEST_F(MetafileRouteTest, PlaysInto128By128OnWhiteThenDeletesMetafileAndBitmap) {
    g_route = RouteCalls{};
    const browser::PreviewRequest request = MakeRequest("clip.wmf", wmf_, 64, receiver_.Handle());
    EXPECT_TRUE(browser::RenderMetafilePreview(request, RecordingOperations()));
    EXPECT_EQ(g_route.screen, 1);
    EXPECT_EQ(g_route.renderWidth, 128);
    EXPECT_EQ(g_route.renderHeight, 128);
    EXPECT_EQ(g_route.background, 0xFFFFFFu);
    EXPECT_EQ(g_route.deletions, (std::vector<std::string>{"metafile", "bitmap"}));
    EXPECT_EQ(receiver_.Count(), 1u);
}

TEST_F(MetafileRouteTest, AFailedStepStillDeletesWhatWasMade) {
    g_route = RouteCalls{};
    browser::MetafileRouteOperations operations = RecordingOperations();
    operations.renderToBitmap = [](HMETAFILE, HDC, int, int, COLORREF) -> HBITMAP {
        ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    };
    const browser::PreviewRequest request = MakeRequest("clip.wmf", wmf_, 64, receiver_.Handle());
    EXPECT_FALSE(browser::RenderMetafilePreview(request, operations));
    EXPECT_EQ(g_route.deletions, (std::vector<std::string>{"metafile"}));
    ASSERT_EQ(log_.Lines().size(), 1u);
    EXPECT_TRUE(IsStepFailure(log_.Lines()[0]));
    EXPECT_NE(log_.Lines()[0].find("Error number = 8"), std::string::npos) << log_.Lines()[0];
    EXPECT_EQ(receiver_.Count(), 0u);
}

TEST_F(MetafileRouteTest, AThrownStepIsLoggedWithTheLastError) {
    browser::MetafileRouteOperations operations = browser::DefaultMetafileRouteOperations();
    operations.createMetafile = [](const uint8_t*, size_t) -> HMETAFILE {
        ::SetLastError(4321);
        return nullptr;
    };
    const browser::PreviewRequest request = MakeRequest("clip.wmf", wmf_, 64, receiver_.Handle());
    EXPECT_EQ(browser::RenderPreviewWith(request, operations), 1);
    ASSERT_EQ(log_.Lines().size(), 1u);
    EXPECT_TRUE(
        std::regex_match(log_.Lines()[0], std::regex("^GraphicDlg, Line [0-9]+: Error number = 4321$")))
        << log_.Lines()[0];
    ASSERT_EQ(receiver_.Count(), 1u);
    EXPECT_TRUE(IsNoPreviewPicture(receiver_.LastPixels(), 64));
}

TEST_F(MetafileRouteTest, ANullScreenContextIsAFailedStep) {
    g_route = RouteCalls{};
    browser::MetafileRouteOperations operations = RecordingOperations();
    operations.screenContext = []() -> HDC { return nullptr; };
    const browser::PreviewRequest request = MakeRequest("clip.wmf", wmf_, 64, receiver_.Handle());
    EXPECT_EQ(browser::RenderPreviewWith(request, operations), 1);
    ASSERT_EQ(log_.Lines().size(), 1u);
    EXPECT_TRUE(IsStepFailure(log_.Lines()[0]));
    EXPECT_EQ(g_route.deletions, (std::vector<std::string>{"metafile"}));
}

TEST_F(MetafileRouteTest, AFailedConversionIsLoggedWithTheLayersResult) {
    g_route = RouteCalls{};
    browser::MetafileRouteOperations operations = RecordingOperations();
    operations.convertFromDeviceBitmap = [](HDC, imaging::BitmapDescriptor*, HBITMAP, uint32_t) {
        return imaging::kErrorPlatform;
    };
    const browser::PreviewRequest request = MakeRequest("clip.wmf", wmf_, 64, receiver_.Handle());
    EXPECT_EQ(browser::RenderPreviewWith(request, operations), 1);
    ASSERT_EQ(log_.Lines().size(), 1u);
    EXPECT_TRUE(std::regex_match(log_.Lines()[0], std::regex("^GraphicDlg, Line [0-9]+: Error number = -6$")))
        << log_.Lines()[0];
    EXPECT_EQ(g_route.deletions, (std::vector<std::string>{"metafile", "bitmap"}));
    ASSERT_EQ(receiver_.Count(), 1u);
    EXPECT_TRUE(IsNoPreviewPicture(receiver_.LastPixels(), 64));
}

TEST_F(MetafileRouteTest, AFailedScalingIsLoggedBareAndItsPixelsAreFreed) {
    browser::MetafileRouteOperations operations = RecordingOperations();
    operations.scaleBitmapToFit = [](imaging::BitmapDescriptor*, int, int) { return false; };
    const browser::PreviewRequest request = MakeRequest("clip.wmf", wmf_, 128, receiver_.Handle());
    EXPECT_EQ(browser::RenderPreviewWith(request, operations), 1);
    ASSERT_EQ(log_.Lines().size(), 1u);
    EXPECT_TRUE(std::regex_match(log_.Lines()[0], std::regex("^GraphicDlg, Line [0-9]+: $")))
        << log_.Lines()[0];
    ASSERT_EQ(receiver_.Count(), 1u);
    EXPECT_TRUE(IsNoPreviewPicture(receiver_.LastPixels(), 128));
}

TEST_F(MetafileRouteTest, ScalingIsAskedForThePackedThumbnailSize) {
    static int askedWidth = -1;
    static int askedHeight = -1;
    browser::MetafileRouteOperations operations = browser::DefaultMetafileRouteOperations();
    operations.scaleBitmapToFit = [](imaging::BitmapDescriptor* bitmap, int width, int height) {
        askedWidth = width;
        askedHeight = height;
        return browser::ScaleBitmapToFit(bitmap, width, height);
    };
    for (const int32_t size : {64, 128}) {
        const browser::PreviewRequest request = MakeRequest("clip.wmf", wmf_, size, receiver_.Handle());
        EXPECT_EQ(browser::RenderPreviewWith(request, operations), 0);
        EXPECT_EQ(askedWidth, size);
        EXPECT_EQ(askedHeight, 0);
    }
}

TEST_F(MetafileRouteTest, FailedDeletionsAreLoggedWithTheLastErrorInOrder) {
    browser::MetafileRouteOperations operations = browser::DefaultMetafileRouteOperations();
    operations.deleteMetafile = [](HMETAFILE metafile) -> BOOL {
        ::DeleteMetaFile(metafile);
        ::SetLastError(1234);
        return FALSE;
    };
    operations.deleteBitmap = [](HGDIOBJ bitmap) -> BOOL {
        ::DeleteObject(bitmap);
        ::SetLastError(5678);
        return FALSE;
    };
    const browser::PreviewRequest request = MakeRequest("clip.wmf", wmf_, 64, receiver_.Handle());
    // The picture still goes out: the deletions come after the message.
    EXPECT_EQ(browser::RenderPreviewWith(request, operations), 0);
    ASSERT_EQ(receiver_.Count(), 1u);
    EXPECT_EQ(receiver_.LastPixels().width, 128);
    ASSERT_EQ(log_.Lines().size(), 2u);
    EXPECT_TRUE(
        std::regex_match(log_.Lines()[0], std::regex("^GraphicDlg, Line [0-9]+: Error number = 1234$")))
        << log_.Lines()[0];
    EXPECT_TRUE(
        std::regex_match(log_.Lines()[1], std::regex("^GraphicDlg, Line [0-9]+: Error number = 5678$")))
        << log_.Lines()[1];
}

TEST_F(MetafileRouteTest, AnExceptionOtherThanAStepEscapesToTheCatchAll) {
    g_route = RouteCalls{};
    browser::MetafileRouteOperations operations = RecordingOperations();
    operations.renderToBitmap = [](HMETAFILE, HDC, int, int, COLORREF) -> HBITMAP { throw std::bad_alloc(); };
    const browser::PreviewRequest request = MakeRequest("clip.wmf", wmf_, 64, receiver_.Handle());
    EXPECT_EQ(browser::RenderPreviewWith(request, operations), 0);
    EXPECT_EQ(receiver_.Count(), 0u);
    EXPECT_EQ(g_route.deletions, (std::vector<std::string>{"metafile"}));
    ASSERT_EQ(log_.Lines().size(), 1u);
    EXPECT_TRUE(std::regex_match(log_.Lines()[0], std::regex("^GraphicDlg, Line [0-9]+: Exception$")))
        << log_.Lines()[0];
}

// ---- Who frees the pixels -------------------------------------------------------------

TEST_F(MetafileRouteTest, DeclinedPicturesAreFreedByTheRenderer) {
    receiver_.SetAnswer(PreviewReceiver::Answer::kDecline);
    EXPECT_EQ(Render("clip.wmf", previewtest::BlackSquareMetafile(), 64), 0);
    EXPECT_EQ(Render("clip.wmf", Bytes{1, 2, 3}, 64), 1);
    EXPECT_EQ(receiver_.Count(), 2u);
    // TearDown finds no live storage beyond what there was.
}

TEST_F(MetafileRouteTest, APictureForNoWindowIsFreed) {
    const Bytes tooShort{1, 2};
    EXPECT_EQ(browser::RenderPreview(MakeRequest("clip.wmf", wmf_, 64, nullptr)), 0);
    EXPECT_EQ(browser::RenderPreview(MakeRequest("clip.wmf", tooShort, 64, nullptr)), 1);
}

}  // namespace
