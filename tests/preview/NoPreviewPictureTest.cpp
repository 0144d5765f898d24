// The no-preview picture: its layout, its serif face, its pixels, and what
// happens when it cannot be made.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <regex>
#include <string>

#include "PreviewTestSupport.h"
#include "browser/NoPreviewFace.h"
#include "browser/NoPreviewPicture.h"
#include "browser/PreviewRender.h"
#include "browser/PreviewRoutes.h"

namespace {

using framework::win32::SelectionGuard;
using framework::win32::UniqueBitmap;
using framework::win32::UniqueDc;
using framework::win32::UniqueFont;
using previewtest::Bytes;
using previewtest::LogCapture;
using previewtest::MakeRequest;
using previewtest::PreviewReceiver;

imaging::BitmapDescriptor Shape(int32_t width, int32_t height, int32_t viewPerspective = 1) {
    imaging::BitmapDescriptor bitmap{};
    bitmap.width = width;
    bitmap.height = height;
    bitmap.viewPerspective = viewPerspective;
    return bitmap;
}

void ExpectLine(const browser::NoPreviewTextLine& line, const char* text, int x, int y) {
    EXPECT_STREQ(line.text, text);
    EXPECT_EQ(line.x, x) << text;
    EXPECT_EQ(line.y, y) << text;
}

TEST(NoPreviewLayout, At128TheLinesBeginAtTheirPointsInBookman25) {
    const browser::NoPreviewLayout layout = browser::LayoutNoPreviewPicture(Shape(128, 128));
    EXPECT_EQ(layout.fontHeight, 25);
    EXPECT_STREQ(layout.face, "Bookman Old Style");
    ExpectLine(layout.lines[0], " No", 42, 16);
    ExpectLine(layout.lines[1], "Preview", 21, 41);
    ExpectLine(layout.lines[2], "Available", 16, 66);
}

TEST(NoPreviewLayout, At64TheLinesBeginAtTheirPointsInTimes16) {
    const browser::NoPreviewLayout layout = browser::LayoutNoPreviewPicture(Shape(64, 64));
    EXPECT_EQ(layout.fontHeight, 16);
    EXPECT_STREQ(layout.face, "Times New Roman");
    ExpectLine(layout.lines[0], " No", 21, 8);
    ExpectLine(layout.lines[1], "Preview", 10, 24);
    ExpectLine(layout.lines[2], "Available", 8, 40);
}

TEST(NoPreviewLayout, OnlyAStoredWidthOfExactly128TakesBookman) {
    const browser::NoPreviewLayout other = browser::LayoutNoPreviewPicture(Shape(100, 100));
    EXPECT_STREQ(other.face, "Times New Roman");
    EXPECT_EQ(other.fontHeight, 25);
    const browser::NoPreviewLayout wider = browser::LayoutNoPreviewPicture(Shape(129, 129));
    EXPECT_STREQ(wider.face, "Times New Roman");
    EXPECT_EQ(wider.fontHeight, 32);
    // Stored 128 wide but turned: the face follows the stored width, the
    // sizes the displayed ones.
    const browser::NoPreviewLayout turned = browser::LayoutNoPreviewPicture(Shape(128, 64, 5));
    EXPECT_STREQ(turned.face, "Bookman Old Style");
    EXPECT_EQ(turned.fontHeight, 25);
    ExpectLine(turned.lines[0], " No", 21, 16);
    ExpectLine(turned.lines[1], "Preview", 10, 41);
    ExpectLine(turned.lines[2], "Available", 8, 66);
}

TEST(NoPreviewLayout, OrientationsFourFiveSevenAndEightSwapTheSides) {
    for (int32_t view = 0; view <= 9; ++view) {
        const SIZE shown = browser::DisplayedSize(Shape(30, 70, view));
        const bool turned = view == 4 || view == 5 || view == 7 || view == 8;
        EXPECT_EQ(shown.cx, turned ? 70 : 30) << view;
        EXPECT_EQ(shown.cy, turned ? 30 : 70) << view;
    }
}

TEST(NoPreviewLayout, TinyAndEmptySizesStayDefined) {
    const browser::NoPreviewLayout empty = browser::LayoutNoPreviewPicture(Shape(0, 0));
    EXPECT_EQ(empty.fontHeight, 0);
    ExpectLine(empty.lines[2], "Available", 0, 0);
    const browser::NoPreviewLayout one = browser::LayoutNoPreviewPicture(Shape(1, 1));
    EXPECT_EQ(one.fontHeight, 0);
}

// ---- The face ----------------------------------------------------------------------

class NoPreviewFaceTest : public ::testing::Test {
protected:
    UniqueDc dc_{::CreateCompatibleDC(nullptr)};
};

// The family and face of the font a LOGFONT gives.
struct FontIdentity {
    std::string face;
    BYTE family = 0;
};

FontIdentity Identify(HDC dc, const LOGFONTA& request) {
    FontIdentity identity;
    UniqueFont font(::CreateFontIndirectA(&request));
    SelectionGuard selection(dc, font.Get());
    char face[LF_FACESIZE] = {};
    ::GetTextFaceA(dc, LF_FACESIZE, face);
    TEXTMETRICA metrics{};
    ::GetTextMetricsA(dc, &metrics);
    identity.face = face;
    identity.family = static_cast<BYTE>(metrics.tmPitchAndFamily & 0xF0);
    return identity;
}

TEST_F(NoPreviewFaceTest, BothSizesAskForTheirFaceAndGetASerifOne) {
    ASSERT_TRUE(dc_);
    for (const int32_t size : {64, 128}) {
        const browser::NoPreviewLayout layout = browser::LayoutNoPreviewPicture(Shape(size, size));
        const LOGFONTA font = browser::NoPreviewFont(dc_.Get(), layout);
        EXPECT_EQ(font.lfHeight, layout.fontHeight);
        EXPECT_EQ(font.lfWidth, 0);
        EXPECT_EQ(font.lfWeight, 0);
        EXPECT_EQ(font.lfCharSet, 0);
        EXPECT_EQ(font.lfPitchAndFamily, 0);
        const FontIdentity drawn = Identify(dc_.Get(), font);
        EXPECT_EQ(drawn.family, FF_ROMAN) << size << ": " << drawn.face;
        EXPECT_EQ(::lstrcmpiA(drawn.face.c_str(), font.lfFaceName), 0)
            << drawn.face << " for " << font.lfFaceName;
        // Where the asked face is there, it is the one.
        const std::string mapped = browser::MappedFaceName(dc_.Get(), layout.face, layout.fontHeight);
        if (::lstrcmpiA(mapped.c_str(), layout.face) == 0) {
            EXPECT_STREQ(font.lfFaceName, layout.face);
        }
    }
}

TEST_F(NoPreviewFaceTest, AMissingFaceIsReplacedByAnInstalledSerifFace) {
    ASSERT_TRUE(dc_);
    const char* missing = "Lumbrel No Such Face";
    const std::string mapped = browser::MappedFaceName(dc_.Get(), missing, 20);
    ASSERT_FALSE(mapped.empty());
    ASSERT_NE(mapped, missing);
    const std::string resolved = browser::ResolveSerifFace(dc_.Get(), missing, 20);
    if (resolved == missing) GTEST_SKIP() << "no serif face is installed at all";
    EXPECT_TRUE(browser::IsInstalledSerifFace(dc_.Get(), resolved.c_str(), 20)) << resolved;
}

TEST_F(NoPreviewFaceTest, TheFallbacksAreNearestFirst) {
    const auto& bookman = browser::SerifFallbackFaces("Bookman Old Style");
    const auto& times = browser::SerifFallbackFaces("Times New Roman");
    ASSERT_FALSE(bookman.empty());
    ASSERT_FALSE(times.empty());
    EXPECT_STREQ(bookman.front(), "URW Bookman");
    EXPECT_STREQ(times.front(), "Liberation Serif");
    EXPECT_EQ(&browser::SerifFallbackFaces("bookman old style"), &bookman);
    EXPECT_EQ(&browser::SerifFallbackFaces(nullptr), &times);
}

TEST_F(NoPreviewFaceTest, ASansSerifMappingIsNotAccepted) {
    ASSERT_TRUE(dc_);
    LOGFONTA sans{};
    sans.lfHeight = 20;
    sans.lfPitchAndFamily = FF_SWISS;
    const FontIdentity swiss = Identify(dc_.Get(), sans);
    if (swiss.family != FF_SWISS) GTEST_SKIP() << "no sans-serif face to try";
    EXPECT_FALSE(browser::IsInstalledSerifFace(dc_.Get(), swiss.face.c_str(), 20)) << swiss.face;
}

// ---- The picture ---------------------------------------------------------------------

class NoPreviewPictureTest : public ::testing::Test {
protected:
    void TearDown() override {
        receiver_.FreeAll();
        EXPECT_EQ(imaging::kernel::LiveStorageCount(), live_) << "pixels were leaked";
    }

    const imaging::BitmapDescriptor& RenderPlaceholder(int32_t size) {
        receiver_.FreeAll();
        const Bytes content{1, 2, 3};
        EXPECT_EQ(browser::RenderPreview(MakeRequest("art.png", content, size, receiver_.Handle())), 1);
        EXPECT_EQ(receiver_.Count(), 1u);
        return receiver_.LastPixels();
    }

    size_t live_ = imaging::kernel::LiveStorageCount();
    PreviewReceiver receiver_;
    LogCapture log_;
};

TEST_F(NoPreviewPictureTest, IsAWhiteSquareOfTheThumbnailSize) {
    for (const int32_t size : {64, 128, 100}) {
        const imaging::BitmapDescriptor& bitmap = RenderPlaceholder(size);
        ASSERT_EQ(receiver_.Count(), 1u);
        EXPECT_EQ(bitmap.width, size);
        EXPECT_EQ(bitmap.height, size);
        EXPECT_EQ(bitmap.bitsPerPixel, 24);
        EXPECT_EQ(receiver_.Last().record.thumbnailSize, size);
        EXPECT_STREQ(receiver_.Last().record.fileName, "art.png");
        EXPECT_EQ(receiver_.Last().record.reserved, 0u);
        // Nothing above the first line, white corners.
        const browser::NoPreviewLayout layout = browser::LayoutNoPreviewPicture(bitmap);
        EXPECT_FALSE(previewtest::FindInk(bitmap, 0, 0, size, layout.lines[0].y).any);
        EXPECT_TRUE(previewtest::IsWhite(previewtest::PixelAt(bitmap, size - 1, size - 1)));
    }
    EXPECT_TRUE(log_.Lines().empty());
}

// Where the first ink of a text drawn at (x, y) in the font of `dc` begins:
// behind its leading blanks and the first glyph's left bearing, and below the
// top of its tallest glyph.
POINT ExpectedInkStart(HDC dc, const char* text, int x, int y) {
    TEXTMETRICA metrics{};
    ::GetTextMetricsA(dc, &metrics);
    const size_t blanks = std::strspn(text, " ");
    SIZE lead{0, 0};
    if (blanks > 0) ::GetTextExtentPoint32A(dc, text, static_cast<int>(blanks), &lead);
    ABC first{};
    ::GetCharABCWidthsA(dc, static_cast<UINT>(static_cast<unsigned char>(text[blanks])),
                        static_cast<UINT>(static_cast<unsigned char>(text[blanks])), &first);
    LONG tallest = 0;
    const MAT2 identity{{0, 1}, {0, 0}, {0, 0}, {0, 1}};
    for (const char* c = text + blanks; *c != '\0'; ++c) {
        GLYPHMETRICS glyph{};
        if (::GetGlyphOutlineA(dc, static_cast<UINT>(static_cast<unsigned char>(*c)), GGO_METRICS, &glyph, 0,
                               nullptr, &identity) != GDI_ERROR)
            tallest = std::max(tallest, glyph.gmptGlyphOrigin.y);
    }
    return POINT{x + lead.cx + first.abcA, y + metrics.tmAscent - tallest};
}

// The start points of the three lines, and the font height, as the picture
// is described for the two thumbnail sizes.
struct DescribedPicture {
    int32_t size;
    int fontHeight;
    POINT points[3];
};
constexpr DescribedPicture kDescribedPictures[] = {{128, 25, {{42, 16}, {21, 41}, {16, 66}}},
                                                   {64, 16, {{21, 8}, {10, 24}, {8, 40}}}};
constexpr const char* kLineTexts[3] = {" No", "Preview", "Available"};

TEST_F(NoPreviewPictureTest, EachLinesFirstInkLiesAtItsStartPoint) {
    UniqueDc dc(::CreateCompatibleDC(nullptr));
    ASSERT_TRUE(dc);
    for (const DescribedPicture& described : kDescribedPictures) {
        const int32_t size = described.size;
        const imaging::BitmapDescriptor& bitmap = RenderPlaceholder(size);
        ASSERT_EQ(receiver_.Count(), 1u);
        const LOGFONTA request = browser::NoPreviewFont(dc.Get(), browser::LayoutNoPreviewPicture(bitmap));
        ASSERT_EQ(request.lfHeight, described.fontHeight);
        UniqueFont font(::CreateFontIndirectA(&request));
        SelectionGuard selection(dc.Get(), font.Get());
        for (int i = 0; i < 3; ++i) {
            const POINT start = described.points[i];
            const char* text = kLineTexts[i];
            // A line's ink stays in its own band of one font height.
            const previewtest::InkBox ink =
                previewtest::FindInk(bitmap, 0, start.y, size, start.y + described.fontHeight);
            ASSERT_TRUE(ink.any) << size << " " << text;
            const POINT expected = ExpectedInkStart(dc.Get(), text, start.x, start.y);
            // Smoothing can darken or spare a pixel at a glyph's edge.
            EXPECT_NEAR(ink.left, expected.x, 2) << size << " \"" << text << "\" in " << request.lfFaceName;
            EXPECT_NEAR(ink.top, expected.y, 2) << size << " \"" << text << "\" in " << request.lfFaceName;
            EXPECT_GE(ink.left, start.x) << text;
            EXPECT_GE(ink.top, start.y) << text;
        }
    }
}

TEST_F(NoPreviewPictureTest, TheLeadingBlankOfNoIsDrawn) {
    UniqueDc dc(::CreateCompatibleDC(nullptr));
    const imaging::BitmapDescriptor& bitmap = RenderPlaceholder(128);
    ASSERT_EQ(receiver_.Count(), 1u);
    const browser::NoPreviewLayout layout = browser::LayoutNoPreviewPicture(bitmap);
    const LOGFONTA request = browser::NoPreviewFont(dc.Get(), layout);
    UniqueFont font(::CreateFontIndirectA(&request));
    SelectionGuard selection(dc.Get(), font.Get());
    SIZE blank{0, 0};
    ASSERT_TRUE(::GetTextExtentPoint32A(dc.Get(), " ", 1, &blank));
    ASSERT_GT(blank.cx, 2);
    const previewtest::InkBox ink = previewtest::FindInk(bitmap, 0, 16, 128, 41);
    ASSERT_TRUE(ink.any);
    // Without the blank the N would begin at 42 or within a pixel of it.
    EXPECT_GE(ink.left, 42 + blank.cx - 1);
}

// The three texts drawn by GDI itself, at the points of the picture's
// description and in the face the picture uses, on a white DIB.
Bytes ReferenceDrawing(int32_t size, const char* face, int fontHeight, const POINT (&points)[3]) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = size;
    info.bmiHeader.biHeight = -size;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    UniqueDc dc(::CreateCompatibleDC(nullptr));
    void* bits = nullptr;
    UniqueBitmap section(::CreateDIBSection(dc.Get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!section || bits == nullptr) return {};
    const size_t stride = (static_cast<size_t>(size) * 3 + 3) / 4 * 4;
    std::memset(bits, 0xFF, stride * static_cast<size_t>(size));
    Bytes pixels;
    {
        SelectionGuard bitmapSelection(dc.Get(), section.Get());
        LOGFONTA request{};
        request.lfHeight = fontHeight;
        ::lstrcpynA(request.lfFaceName, face, LF_FACESIZE);
        UniqueFont font(::CreateFontIndirectA(&request));
        SelectionGuard fontSelection(dc.Get(), font.Get());
        for (int i = 0; i < 3; ++i)
            ::TextOutA(dc.Get(), points[i].x, points[i].y, kLineTexts[i],
                       static_cast<int>(std::strlen(kLineTexts[i])));
        ::GdiFlush();
        const auto* begin = static_cast<const uint8_t*>(bits);
        pixels.assign(begin, begin + stride * static_cast<size_t>(size));
    }
    return pixels;
}

TEST_F(NoPreviewPictureTest, MatchesTheTextsDrawnAtTheDescribedPoints) {
    UniqueDc dc(::CreateCompatibleDC(nullptr));
    for (const DescribedPicture& described : kDescribedPictures) {
        const imaging::BitmapDescriptor& bitmap = RenderPlaceholder(described.size);
        ASSERT_EQ(receiver_.Count(), 1u);
        const LOGFONTA request = browser::NoPreviewFont(dc.Get(), browser::LayoutNoPreviewPicture(bitmap));
        const Bytes reference =
            ReferenceDrawing(described.size, request.lfFaceName, described.fontHeight, described.points);
        ASSERT_EQ(reference.size(), bitmap.storageSize);
        EXPECT_EQ(std::memcmp(reference.data(), bitmap.storage, reference.size()), 0)
            << described.size << " in " << request.lfFaceName;
    }
}

TEST_F(NoPreviewPictureTest, SmallAndLargeDifferInFaceWhereSerifFacesDiffer) {
    UniqueDc dc(::CreateCompatibleDC(nullptr));
    const LOGFONTA large = browser::NoPreviewFont(dc.Get(), browser::LayoutNoPreviewPicture(Shape(128, 128)));
    const LOGFONTA small = browser::NoPreviewFont(dc.Get(), browser::LayoutNoPreviewPicture(Shape(64, 64)));
    const bool bothAsked = ::lstrcmpiA(large.lfFaceName, "Bookman Old Style") == 0 &&
                           ::lstrcmpiA(small.lfFaceName, "Times New Roman") == 0;
    // Where the two faces are missing, each has its own nearest stand-in when
    // the system has more than one serif face.
    if (!bothAsked) {
        int serifFaces = 0;
        for (const char* face : {"DejaVu Serif", "Liberation Serif"})
            serifFaces += browser::IsInstalledSerifFace(dc.Get(), face, 20) ? 1 : 0;
        if (serifFaces < 2) GTEST_SKIP() << "fewer than two stand-in serif faces here";
    }
    EXPECT_NE(::lstrcmpiA(large.lfFaceName, small.lfFaceName), 0) << large.lfFaceName;
}

TEST_F(NoPreviewPictureTest, TheRecordCarriesTheWholeFileName) {
    std::string longest(511, 'a');
    receiver_.FreeAll();
    EXPECT_EQ(browser::RenderPreview(MakeRequest(longest, previewtest::kNoData, 64, receiver_.Handle())), 1);
    ASSERT_EQ(receiver_.Count(), 1u);
    EXPECT_EQ(std::string(receiver_.Last().record.fileName), longest);

    // A name that fills its field has no terminator there; the record adds one.
    std::string unterminated(512, 'b');
    unterminated.replace(508, 4, ".png");
    receiver_.FreeAll();
    EXPECT_EQ(browser::RenderPreview(
                  MakeRequest(unterminated + "tail", previewtest::kNoData, 64, receiver_.Handle())),
              1);
    ASSERT_EQ(receiver_.Count(), 1u);
    EXPECT_EQ(std::string(receiver_.Last().record.fileName), unterminated);
    EXPECT_EQ(receiver_.Last().record.fileName[512], '\0');
}

TEST_F(NoPreviewPictureTest, ASizeTheLayerRefusesSendsNothingAndLogsTheException) {
    for (const int32_t size : {0, -64, 20000}) {
        log_.Clear();
        receiver_.FreeAll();
        EXPECT_EQ(
            browser::RenderPreview(MakeRequest("art.png", previewtest::kNoData, size, receiver_.Handle())), 0)
            << size;
        EXPECT_EQ(receiver_.Count(), 0u) << size;
        ASSERT_EQ(log_.Lines().size(), 1u) << size;
        EXPECT_TRUE(std::regex_match(log_.Lines()[0], std::regex("^GraphicDlg, Line [0-9]+: Exception$")))
            << log_.Lines()[0];
    }
}

TEST_F(NoPreviewPictureTest, MakingItChecksItsArguments) {
    EXPECT_EQ(browser::MakeNoPreviewPicture(64, nullptr), imaging::kErrorInvalidParameter);
    EXPECT_EQ(browser::DrawNoPreviewText(nullptr), imaging::kErrorInvalidParameter);
    imaging::BitmapDescriptor empty{};
    EXPECT_NE(browser::DrawNoPreviewText(&empty), imaging::kSuccess);
    imaging::BitmapDescriptor untouched{};
    untouched.width = 77;
    EXPECT_NE(browser::MakeNoPreviewPicture(0, &untouched), imaging::kSuccess);
    EXPECT_EQ(untouched.width, 77);
    EXPECT_EQ(untouched.storage, nullptr);
}

TEST_F(NoPreviewPictureTest, ATinyPictureIsStillMade) {
    for (const int32_t size : {1, 2, 7}) {
        imaging::BitmapDescriptor bitmap{};
        EXPECT_EQ(browser::MakeNoPreviewPicture(size, &bitmap), imaging::kSuccess) << size;
        EXPECT_EQ(bitmap.width, size);
        imaging::FreeBitmap(&bitmap);
    }
}

}  // namespace
