#include "foundation/DrawingRoutines.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

#include "StdobjTestSupport.h"

namespace {

using framework::win32::SelectionGuard;
using framework::win32::UniqueBrush;
using stdobjtest::DibCanvas;

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kInk = RGB(200, 30, 60);

// A canvas with a solid brush of kInk selected.
class InkCanvas : public DibCanvas {
public:
    InkCanvas(int width, int height)
        : DibCanvas(width, height, kWhite),
          brush_(::CreateSolidBrush(kInk)),
          selection_(Dc(), brush_.Get()) {}

private:
    UniqueBrush brush_;
    SelectionGuard selection_;
};

// The rectangles PatBlt was asked for, as an enhanced metafile records them.
struct RecordedBlt {
    RECT rect;
    DWORD rop;
};

class BltRecorder {
public:
    BltRecorder() {
        const RECT frame = {0, 0, 10000, 10000};
        dc_ = ::CreateEnhMetaFileA(nullptr, nullptr, &frame, nullptr);
    }
    ~BltRecorder() {
        if (dc_ != nullptr) ::DeleteEnhMetaFile(::CloseEnhMetaFile(dc_));
    }
    BltRecorder(const BltRecorder&) = delete;
    BltRecorder& operator=(const BltRecorder&) = delete;

    HDC Dc() const { return dc_; }

    std::vector<RecordedBlt> Finish() {
        const HENHMETAFILE metafile = ::CloseEnhMetaFile(dc_);
        dc_ = nullptr;
        std::vector<RecordedBlt> blts;
        ::EnumEnhMetaFile(nullptr, metafile, &Collect, &blts, nullptr);
        ::DeleteEnhMetaFile(metafile);
        return blts;
    }

private:
    static int CALLBACK Collect(HDC, HANDLETABLE*, const ENHMETARECORD* record, int, LPARAM data) {
        if (record->iType == EMR_BITBLT) {
            const auto* blt = reinterpret_cast<const EMRBITBLT*>(record);
            reinterpret_cast<std::vector<RecordedBlt>*>(data)->push_back(
                RecordedBlt{RECT{blt->xDest, blt->yDest, blt->xDest + blt->cxDest, blt->yDest + blt->cyDest},
                            blt->dwRop});
        }
        return 1;
    }

    HDC dc_ = nullptr;
};

bool SameRect(const RECT& a, const RECT& b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

std::string Describe(const RECT& r) {
    return "{" + std::to_string(r.left) + "," + std::to_string(r.top) + "," + std::to_string(r.right) + "," +
           std::to_string(r.bottom) + "}";
}

}  // namespace

// ---- PatBltRect ------------------------------------------------------------------------

TEST(PatBltRasterOperation, FollowsTheDrawingMode) {
    DibCanvas canvas(1, 1);
    ASSERT_TRUE(canvas.Ok());
    EXPECT_EQ(foundation::PatBltRasterOperation(canvas.Dc()), static_cast<DWORD>(PATCOPY));
    ::SetROP2(canvas.Dc(), R2_XORPEN);
    EXPECT_EQ(foundation::PatBltRasterOperation(canvas.Dc()), static_cast<DWORD>(0x5A0049));
    ::SetROP2(canvas.Dc(), R2_NOTXORPEN);
    EXPECT_EQ(foundation::PatBltRasterOperation(canvas.Dc()), static_cast<DWORD>(0xA50065));
    for (int mode : {R2_BLACK, R2_NOT, R2_MERGEPEN, R2_MASKPEN, R2_WHITE, R2_COPYPEN}) {
        ::SetROP2(canvas.Dc(), mode);
        EXPECT_EQ(foundation::PatBltRasterOperation(canvas.Dc()), static_cast<DWORD>(PATCOPY)) << mode;
    }
}

TEST(PatBltRect, PaintsTheRectangleWithTheCurrentBrush) {
    InkCanvas canvas(12, 8);
    ASSERT_TRUE(canvas.Ok());
    foundation::PatBltRect(canvas.Dc(), RECT{2, 1, 7, 4});
    EXPECT_EQ(canvas.Map(kInk),
              "............\n"
              "..#####.....\n"
              "..#####.....\n"
              "..#####.....\n"
              "............\n"
              "............\n"
              "............\n"
              "............\n");
}

TEST(PatBltRect, InvertsUnderTheXorMode) {
    InkCanvas canvas(4, 4);
    ASSERT_TRUE(canvas.Ok());
    ::SetROP2(canvas.Dc(), R2_XORPEN);
    foundation::PatBltRect(canvas.Dc(), RECT{0, 0, 2, 2});
    EXPECT_EQ(canvas.Pixel(0, 0), RGB(255 ^ 200, 255 ^ 30, 255 ^ 60));
    EXPECT_EQ(canvas.Pixel(3, 3), kWhite);
    foundation::PatBltRect(canvas.Dc(), RECT{0, 0, 2, 2});
    EXPECT_EQ(canvas.Pixel(0, 0), kWhite) << "inverting twice gives the picture back";
}

TEST(PatBltRect, UsesPatternXnorDestinationUnderTheNotXorMode) {
    DibCanvas canvas(2, 2, RGB(0x0F, 0xF0, 0x55));
    ASSERT_TRUE(canvas.Ok());
    UniqueBrush brush(::CreateSolidBrush(RGB(0xFF, 0x00, 0xAA)));
    SelectionGuard selection(canvas.Dc(), brush.Get());
    ::SetROP2(canvas.Dc(), R2_NOTXORPEN);
    foundation::PatBltRect(canvas.Dc(), RECT{0, 0, 1, 1});
    // ~(0x0F ^ 0xFF), ~(0xF0 ^ 0x00), ~(0x55 ^ 0xAA).
    EXPECT_EQ(canvas.Pixel(0, 0), RGB(0x0F, 0x0F, 0x00));
    EXPECT_EQ(canvas.Pixel(1, 1), RGB(0x0F, 0xF0, 0x55));
}

TEST(PatBltRect, OutTo20000PaintsOnlyThePartInsideTheClipBox) {
    InkCanvas canvas(48, 48);
    ASSERT_TRUE(canvas.Ok());
    ASSERT_NE(::IntersectClipRect(canvas.Dc(), 8, 10, 40, 30), ERROR);
    foundation::PatBltRect(canvas.Dc(), RECT{-20000, -20000, 20000, 20000});
    EXPECT_EQ(canvas.Count(RECT{8, 10, 40, 30}, kInk), 32 * 20);
    EXPECT_EQ(canvas.Count(kInk), 32 * 20);
}

TEST(PatBltRect, OneSideOutTo20000IsCutToTheClipBox) {
    InkCanvas canvas(48, 48);
    ASSERT_TRUE(canvas.Ok());
    ASSERT_NE(::IntersectClipRect(canvas.Dc(), 8, 10, 40, 30), ERROR);
    foundation::PatBltRect(canvas.Dc(), RECT{-20000, 12, 20, 14});
    EXPECT_EQ(canvas.Count(RECT{8, 12, 20, 14}, kInk), 12 * 2);
    EXPECT_EQ(canvas.Count(kInk), 12 * 2);
}

TEST(PatBltRect, HandsGdiOnlyTheClippedRectangle) {
    BltRecorder recorder;
    ASSERT_NE(recorder.Dc(), nullptr);
    ASSERT_NE(::IntersectClipRect(recorder.Dc(), 100, 200, 300, 400), ERROR);
    foundation::PatBltRect(recorder.Dc(), RECT{-20000, 250, 20000, 20000});
    foundation::PatBltRect(recorder.Dc(), RECT{-16000, -16000, 16000, 16000});
    foundation::PatBltRect(recorder.Dc(), RECT{-16001, 210, 150, 220});
    const std::vector<RecordedBlt> blts = recorder.Finish();
    ASSERT_EQ(blts.size(), 3u);
    EXPECT_TRUE(SameRect(blts[0].rect, RECT{100, 250, 300, 400})) << Describe(blts[0].rect);
    EXPECT_EQ(blts[0].rop, static_cast<DWORD>(PATCOPY));
    EXPECT_TRUE(SameRect(blts[1].rect, RECT{-16000, -16000, 16000, 16000}))
        << "within +-16000 the rectangle goes as it is: " << Describe(blts[1].rect);
    EXPECT_TRUE(SameRect(blts[2].rect, RECT{100, 210, 150, 220})) << Describe(blts[2].rect);
}

TEST(PatBltRect, NothingLeftInsideTheClipBoxPaintsNothing) {
    BltRecorder recorder;
    ASSERT_NE(recorder.Dc(), nullptr);
    ASSERT_NE(::IntersectClipRect(recorder.Dc(), 100, 200, 300, 400), ERROR);
    foundation::PatBltRect(recorder.Dc(), RECT{20000, 20000, 30000, 30000});
    foundation::PatBltRect(recorder.Dc(), RECT{-30000, 0, 50, 20000});
    EXPECT_TRUE(recorder.Finish().empty());

    InkCanvas canvas(8, 8);
    foundation::PatBltRect(canvas.Dc(), RECT{20000, 20000, 30000, 30000});
    EXPECT_EQ(canvas.Count(kInk), 0);
}

TEST(PatBltRect, ExtremeCoordinatesAreSafe) {
    InkCanvas canvas(8, 8);
    ASSERT_TRUE(canvas.Ok());
    foundation::PatBltRect(canvas.Dc(), RECT{INT_MIN, INT_MIN, INT_MAX, INT_MAX});
    EXPECT_EQ(canvas.Count(kInk), 64);
    canvas.Fill(kWhite);
    foundation::PatBltRect(canvas.Dc(), RECT{INT_MAX, INT_MAX, INT_MIN, INT_MIN});
    EXPECT_EQ(canvas.Count(kInk), 0) << "an inverted rectangle beyond the limits is empty";
}

// ---- Brush fill and frames -------------------------------------------------------------

TEST(FillRectWithBrush, PaintsWithTheBrushAndPutsTheOldOneBack) {
    DibCanvas canvas(6, 6);
    ASSERT_TRUE(canvas.Ok());
    UniqueBrush brush(::CreateSolidBrush(kInk));
    const HGDIOBJ before = ::GetCurrentObject(canvas.Dc(), OBJ_BRUSH);
    foundation::FillRectWithBrush(canvas.Dc(), RECT{1, 1, 3, 4}, brush.Get());
    EXPECT_EQ(::GetCurrentObject(canvas.Dc(), OBJ_BRUSH), before);
    EXPECT_EQ(canvas.Count(RECT{1, 1, 3, 4}, kInk), 6);
    EXPECT_EQ(canvas.Count(kInk), 6);
}

TEST(FillRectWithBrush, NoBrushPaintsNothing) {
    InkCanvas canvas(4, 4);
    ASSERT_TRUE(canvas.Ok());
    const HGDIOBJ before = ::GetCurrentObject(canvas.Dc(), OBJ_BRUSH);
    foundation::FillRectWithBrush(canvas.Dc(), RECT{0, 0, 4, 4}, nullptr);
    EXPECT_EQ(canvas.Count(kInk), 0) << "not even with the brush that was selected";
    EXPECT_EQ(::GetCurrentObject(canvas.Dc(), OBJ_BRUSH), before);
}

TEST(FillRectWithBrush, FollowsTheDrawingModeAsPatBltRectDoes) {
    DibCanvas canvas(2, 1, RGB(0, 0, 0));
    ASSERT_TRUE(canvas.Ok());
    UniqueBrush brush(::CreateSolidBrush(kInk));
    ::SetROP2(canvas.Dc(), R2_XORPEN);
    foundation::FillRectWithBrush(canvas.Dc(), RECT{0, 0, 1, 1}, brush.Get());
    foundation::FillRectWithBrush(canvas.Dc(), RECT{0, 0, 2, 1}, brush.Get());
    EXPECT_EQ(canvas.Pixel(0, 0), RGB(0, 0, 0));
    EXPECT_EQ(canvas.Pixel(1, 0), kInk);
}

TEST(FrameRectThick, FourStripsInsideTheRectangle) {
    InkCanvas canvas(12, 10);
    ASSERT_TRUE(canvas.Ok());
    foundation::FrameRectThick(canvas.Dc(), 2, RECT{1, 1, 11, 9});
    EXPECT_EQ(canvas.Map(kInk),
              "............\n"
              ".##########.\n"
              ".##########.\n"
              ".##......##.\n"
              ".##......##.\n"
              ".##......##.\n"
              ".##......##.\n"
              ".##########.\n"
              ".##########.\n"
              "............\n");
}

TEST(FrameRectThick, StripsDoNotOverlapUnderXor) {
    InkCanvas canvas(6, 6);
    ASSERT_TRUE(canvas.Ok());
    ::SetROP2(canvas.Dc(), R2_XORPEN);
    const COLORREF inverted = RGB(255 ^ 200, 255 ^ 30, 255 ^ 60);
    foundation::FrameRectThick(canvas.Dc(), 1, RECT{0, 0, 6, 6});
    EXPECT_EQ(canvas.Count(inverted), 20) << canvas.Map(inverted);
    canvas.Fill(kWhite);
    foundation::FrameRectThick(canvas.Dc(), 100, RECT{0, 0, 6, 6});
    EXPECT_EQ(canvas.Count(inverted), 36) << "a thickness beyond half fills the rectangle once";
}

TEST(FrameRectThick, NoThicknessDrawsNothing) {
    InkCanvas canvas(6, 6);
    ASSERT_TRUE(canvas.Ok());
    foundation::FrameRectThick(canvas.Dc(), 0, RECT{0, 0, 6, 6});
    foundation::FrameRectThick(canvas.Dc(), -3, RECT{0, 0, 6, 6});
    foundation::FrameRectThick(canvas.Dc(), 2, RECT{4, 4, 2, 2});
    EXPECT_EQ(canvas.Count(kInk), 0);
}

TEST(FrameRectThick, ExtremeArgumentsAreSafe) {
    InkCanvas canvas(6, 6);
    ASSERT_TRUE(canvas.Ok());
    foundation::FrameRectThick(canvas.Dc(), INT_MAX, RECT{INT_MIN, INT_MIN, INT_MAX, INT_MAX});
    EXPECT_EQ(canvas.Count(kInk), 36);
    canvas.Fill(kWhite);
    foundation::FrameRectThick(canvas.Dc(), 1, RECT{INT_MIN, INT_MIN, INT_MAX, INT_MAX});
    EXPECT_EQ(canvas.Count(kInk), 0) << "the frame lies far outside";
}

TEST(FrameRectOneLine, TopAndSidesOpenAtTheBottom) {
    InkCanvas canvas(8, 6);
    ASSERT_TRUE(canvas.Ok());
    foundation::FrameRectOneLine(canvas.Dc(), RECT{1, 1, 7, 5});
    EXPECT_EQ(canvas.Map(kInk),
              "........\n"
              ".######.\n"
              ".#....#.\n"
              ".#....#.\n"
              ".#....#.\n"
              "........\n");
}

TEST(FrameRectOneLine, NarrowRectanglesPaintEachPixelOnce) {
    InkCanvas canvas(3, 4);
    ASSERT_TRUE(canvas.Ok());
    ::SetROP2(canvas.Dc(), R2_XORPEN);
    const COLORREF inverted = RGB(255 ^ 200, 255 ^ 30, 255 ^ 60);
    foundation::FrameRectOneLine(canvas.Dc(), RECT{1, 0, 2, 4});
    EXPECT_EQ(canvas.Map(inverted),
              ".#.\n"
              ".#.\n"
              ".#.\n"
              ".#.\n");
    foundation::FrameRectOneLine(canvas.Dc(), RECT{2, 2, 1, 1});
    EXPECT_EQ(canvas.Count(inverted), 4);
}

// ---- FillBetweenRects ----------------------------------------------------------------------

TEST(FillBetweenRects, PaintsAroundTheInnerRectangle) {
    InkCanvas canvas(10, 8);
    ASSERT_TRUE(canvas.Ok());
    foundation::FillBetweenRects(canvas.Dc(), RECT{1, 1, 9, 7}, RECT{3, 2, 6, 5});
    EXPECT_EQ(canvas.Map(kInk),
              "..........\n"
              ".########.\n"
              ".##...###.\n"
              ".##...###.\n"
              ".##...###.\n"
              ".########.\n"
              ".########.\n"
              "..........\n");
}

TEST(FillBetweenRects, CopiesThePatternWhateverTheDrawingMode) {
    InkCanvas canvas(4, 4);
    ASSERT_TRUE(canvas.Ok());
    ::SetROP2(canvas.Dc(), R2_XORPEN);
    foundation::FillBetweenRects(canvas.Dc(), RECT{0, 0, 4, 4}, RECT{1, 1, 3, 3});
    EXPECT_EQ(canvas.Count(kInk), 12);
    foundation::FillBetweenRects(canvas.Dc(), RECT{0, 0, 4, 4}, RECT{1, 1, 3, 3});
    EXPECT_EQ(canvas.Count(kInk), 12);
}

TEST(FillBetweenRects, LeavesOutEmptyStrips) {
    BltRecorder recorder;
    ASSERT_NE(recorder.Dc(), nullptr);
    foundation::FillBetweenRects(recorder.Dc(), RECT{0, 0, 10, 10}, RECT{0, 0, 10, 5});
    foundation::FillBetweenRects(recorder.Dc(), RECT{0, 0, 10, 10}, RECT{0, 0, 10, 10});
    const std::vector<RecordedBlt> blts = recorder.Finish();
    ASSERT_EQ(blts.size(), 1u);
    EXPECT_TRUE(SameRect(blts[0].rect, RECT{0, 5, 10, 10})) << Describe(blts[0].rect);
    EXPECT_EQ(blts[0].rop, static_cast<DWORD>(PATCOPY));
}

TEST(FillBetweenRects, NeverPaintsOutsideTheOuterRectangle) {
    InkCanvas canvas(10, 10);
    ASSERT_TRUE(canvas.Ok());
    foundation::FillBetweenRects(canvas.Dc(), RECT{2, 2, 8, 8}, RECT{5, 0, 20, 4});
    EXPECT_EQ(canvas.Map(kInk),
              "..........\n"
              "..........\n"
              "..###.....\n"
              "..###.....\n"
              "..######..\n"
              "..######..\n"
              "..######..\n"
              "..######..\n"
              "..........\n"
              "..........\n");
    canvas.Fill(kWhite);
    foundation::FillBetweenRects(canvas.Dc(), RECT{2, 2, 8, 8}, RECT{50, 50, 60, 60});
    EXPECT_EQ(canvas.Count(kInk), 36) << "an inner rectangle outside leaves all of the outer one";
    canvas.Fill(kWhite);
    foundation::FillBetweenRects(canvas.Dc(), RECT{8, 8, 2, 2}, RECT{3, 3, 4, 4});
    EXPECT_EQ(canvas.Count(kInk), 0) << "an empty outer rectangle has nothing to paint";
    foundation::FillBetweenRects(canvas.Dc(), RECT{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, RECT{1, 1, 9, 9});
}

// ---- Lines and bitmaps ---------------------------------------------------------------------

TEST(DrawLine, DrawsWithTheCurrentPenAndMovesThePosition) {
    DibCanvas canvas(12, 4);
    ASSERT_TRUE(canvas.Ok());
    framework::win32::UniquePen pen(::CreatePen(PS_SOLID, 0, kInk));
    SelectionGuard selection(canvas.Dc(), pen.Get());
    foundation::DrawLine(canvas.Dc(), 2, 1, 9, 1);
    EXPECT_EQ(canvas.Map(kInk),
              "............\n"
              "..#######...\n"
              "............\n"
              "............\n");
    POINT position = {};
    ASSERT_TRUE(::GetCurrentPositionEx(canvas.Dc(), &position));
    EXPECT_EQ(position.x, 9);
    EXPECT_EQ(position.y, 1);
}

TEST(BlitBitmap, CopiesPartOfTheBitmap) {
    DibCanvas source(4, 4, RGB(0, 0, 255));
    ASSERT_TRUE(source.Ok());
    ::SetPixel(source.Dc(), 1, 1, kInk);
    ::SetPixel(source.Dc(), 2, 1, RGB(0, 255, 0));
    // The bitmap must leave its own context before it is blitted.
    framework::win32::UniqueBitmap bitmap(::CreateCompatibleBitmap(source.Dc(), 4, 4));
    {
        framework::win32::UniqueDc copy(::CreateCompatibleDC(source.Dc()));
        SelectionGuard selection(copy.Get(), bitmap.Get());
        ::BitBlt(copy.Get(), 0, 0, 4, 4, source.Dc(), 0, 0, SRCCOPY);
    }
    DibCanvas target(8, 8);
    ASSERT_TRUE(target.Ok());
    EXPECT_TRUE(foundation::BlitBitmap(target.Dc(), 5, 6, 2, 1, bitmap.Get(), 1, 1, SRCCOPY));
    EXPECT_EQ(target.Pixel(5, 6), kInk);
    EXPECT_EQ(target.Pixel(6, 6), RGB(0, 255, 0));
    EXPECT_EQ(target.Count(kWhite), 62);

    // The raster operation is the caller's.
    EXPECT_TRUE(foundation::BlitBitmap(target.Dc(), 0, 0, 1, 1, bitmap.Get(), 0, 0, SRCINVERT));
    EXPECT_EQ(target.Pixel(0, 0), RGB(255, 255, 0));

    // The bitmap is free again afterwards.
    framework::win32::UniqueDc other(::CreateCompatibleDC(nullptr));
    SelectionGuard again(other.Get(), bitmap.Get());
    EXPECT_TRUE(again.Succeeded());
}

TEST(BlitBitmap, NoBitmapCopiesNothing) {
    DibCanvas target(2, 2);
    ASSERT_TRUE(target.Ok());
    EXPECT_FALSE(foundation::BlitBitmap(target.Dc(), 0, 0, 2, 2, nullptr, 0, 0, SRCCOPY));
    EXPECT_EQ(target.Count(kWhite), 4);
}

// ---- 3-D and hot frames --------------------------------------------------------------------

struct OwnedWindow {
    explicit OwnedWindow(HWND window) : handle(window) {}
    ~OwnedWindow() {
        if (handle != nullptr) ::DestroyWindow(handle);
    }
    OwnedWindow(const OwnedWindow&) = delete;
    OwnedWindow& operator=(const OwnedWindow&) = delete;
    HWND handle;
};

// Puts the cursor back where the test found it.
class CursorKeeper {
public:
    CursorKeeper() { ::GetCursorPos(&saved_); }
    ~CursorKeeper() { ::SetCursorPos(saved_.x, saved_.y); }
    CursorKeeper(const CursorKeeper&) = delete;
    CursorKeeper& operator=(const CursorKeeper&) = delete;

private:
    POINT saved_ = {};
};

class FrameColours : public ::testing::Test {
protected:
    FrameColours()
        : colors_({COLOR_BTNFACE, COLOR_BTNSHADOW, COLOR_BTNHIGHLIGHT},
                  {RGB(10, 20, 200), RGB(60, 60, 60), RGB(250, 240, 5)}) {}
    static constexpr COLORREF kFace = RGB(10, 20, 200);
    static constexpr COLORREF kShadow = RGB(60, 60, 60);
    static constexpr COLORREF kHighlight = RGB(250, 240, 5);
    stdobjtest::SysColorsOverride colors_;
};

TEST_F(FrameColours, Draw3dFrameTopLeftOverBottomRight) {
    ASSERT_TRUE(colors_.Succeeded());
    DibCanvas canvas(8, 6);
    ASSERT_TRUE(canvas.Ok());
    const COLORREF background = ::SetBkColor(canvas.Dc(), RGB(1, 2, 3));
    foundation::Draw3dFrame(canvas.Dc(), RECT{1, 1, 7, 5}, COLOR_BTNHIGHLIGHT, COLOR_BTNSHADOW);
    EXPECT_EQ(canvas.Map(kHighlight, 'H'),
              "........\n"
              ".HHHHH..\n"
              ".H......\n"
              ".H......\n"
              "........\n"
              "........\n");
    EXPECT_EQ(canvas.Map(kShadow, 'S'),
              "........\n"
              "......S.\n"
              "......S.\n"
              "......S.\n"
              ".SSSSSS.\n"
              "........\n");
    EXPECT_EQ(::GetBkColor(canvas.Dc()), RGB(1, 2, 3)) << "the background colour is put back";
    ::SetBkColor(canvas.Dc(), background);
}

TEST_F(FrameColours, Draw3dFrameUsesTheColoursOfNow) {
    ASSERT_TRUE(colors_.Succeeded());
    DibCanvas canvas(4, 4);
    foundation::Draw3dFrame(canvas.Dc(), RECT{0, 0, 4, 4}, COLOR_BTNFACE, COLOR_BTNFACE);
    EXPECT_EQ(canvas.Count(kFace), 12);
}

TEST_F(FrameColours, HotFramePressedIsSunken) {
    ASSERT_TRUE(colors_.Succeeded());
    for (DWORD flags : {0x10000u, 0x20000u, 0x30000u, 0x10001u}) {
        DibCanvas canvas(5, 5);
        RECT inner = {};
        foundation::DrawHotFrame(canvas.Dc(), &inner, RECT{0, 0, 5, 5}, flags);
        EXPECT_EQ(canvas.Pixel(0, 0), kShadow) << flags;
        EXPECT_EQ(canvas.Pixel(4, 4), kHighlight) << flags;
        EXPECT_TRUE(SameRect(inner, RECT{1, 1, 4, 4})) << Describe(inner);
    }
}

TEST_F(FrameColours, HotFrameWithoutAWindowIsFlat) {
    ASSERT_TRUE(colors_.Succeeded());
    DibCanvas canvas(5, 5);
    foundation::DrawHotFrame(canvas.Dc(), nullptr, RECT{0, 0, 5, 5}, 0x0FFFF);
    EXPECT_EQ(canvas.Count(kFace), 16);
    EXPECT_EQ(canvas.Count(kWhite), 9);
}

TEST_F(FrameColours, HotFrameOfAWindowFollowsTheCursor) {
    ASSERT_TRUE(colors_.Succeeded());
    const OwnedWindow window(::CreateWindowExA(0, "STATIC", "", WS_POPUP | WS_VISIBLE, 100, 100, 50, 50,
                                               nullptr, nullptr, ::GetModuleHandleA(nullptr), nullptr));
    ASSERT_NE(window.handle, nullptr);
    const CursorKeeper cursorKeeper;
    framework::win32::WindowDc dc(window.handle);
    ASSERT_TRUE(dc);
    ASSERT_EQ(::WindowFromDC(dc.Get()), window.handle);

    // The frame is drawn on the window; what it chose shows in a copy of it.
    auto frameColours = [&](POINT client) {
        POINT screen = client;
        ::ClientToScreen(window.handle, &screen);
        ::SetCursorPos(screen.x, screen.y);
        POINT cursor = {};
        EXPECT_TRUE(::GetCursorPos(&cursor));
        EXPECT_EQ(cursor.x, screen.x);
        EXPECT_EQ(cursor.y, screen.y);
        foundation::DrawHotFrame(dc.Get(), nullptr, RECT{0, 0, 10, 10}, 0);
        DibCanvas copy(10, 10);
        ::BitBlt(copy.Dc(), 0, 0, 10, 10, dc.Get(), 0, 0, SRCCOPY);
        return std::make_pair(copy.Pixel(0, 0), copy.Pixel(9, 9));
    };
    const auto hot = frameColours(POINT{5, 5});
    EXPECT_EQ(hot.first, kHighlight);
    EXPECT_EQ(hot.second, kShadow);
    const auto cold = frameColours(POINT{30, 30});
    EXPECT_EQ(cold.first, kFace);
    EXPECT_EQ(cold.second, kFace);
    const auto edge = frameColours(POINT{10, 5});
    EXPECT_EQ(edge.first, kFace) << "the right edge is outside";
}
