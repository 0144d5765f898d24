// The gallery's paint, read back pixel by pixel from a memory canvas.
#include <gtest/gtest.h>

#include "GalleryTestSupport.h"

using namespace gallerytest;

namespace {

const COLORREF kGrid = RGB(0xD2, 0xD2, 0xD2);
const COLORREF kWhite = RGB(255, 255, 255);
const COLORREF kMagenta = RGB(255, 0, 255);

COLORREF ButtonFace() {
    return ::GetSysColor(COLOR_BTNFACE);
}
COLORREF Highlight() {
    return ::GetSysColor(COLOR_HIGHLIGHT);
}

#define EXPECT_PIXEL(canvas, x, y, colour) \
    EXPECT_EQ(Hex((canvas).Pixel((x), (y))), Hex(colour)) << "at (" << (x) << ", " << (y) << ")"

// Records the order of the three layers and the context each one gets.
class LayeredGallery : public Gallery {
public:
    std::vector<std::pair<std::string, HDC>> layers;
    void DrawGrid(HDC dc) override {
        layers.emplace_back("grid", dc);
        Gallery::DrawGrid(dc);
    }
    void DrawCells(HDC dc) override {
        layers.emplace_back("cells", dc);
        Gallery::DrawCells(dc);
    }
    void DrawHighlight(HDC dc, BOOL on) override {
        layers.emplace_back("highlight", dc);
        Gallery::DrawHighlight(dc, on);
    }
};

}  // namespace

TEST(GalleryPaint, EmptyGalleryIsAnEmptyWhiteGridOnButtonFace) {
    Fixture<> f(500, 400);  // 3 columns, 3 rows of which the last is partial
    Canvas canvas(500, 400);
    f.gallery.PaintInto(canvas.Dc());
    // Tiles, whether or not an item stands there.
    EXPECT_PIXEL(canvas, 0, 0, kWhite);
    EXPECT_PIXEL(canvas, 143, 177, kWhite);
    EXPECT_PIXEL(canvas, 145, 10, kWhite);
    EXPECT_PIXEL(canvas, 434, 10, kWhite);
    EXPECT_PIXEL(canvas, 10, 179, kWhite);
    EXPECT_PIXEL(canvas, 10, 399, kWhite) << "the partly visible row's tiles reach the bottom";
    // One-pixel lines between cells, and the last column's right edge.
    EXPECT_PIXEL(canvas, 144, 10, kGrid);
    EXPECT_PIXEL(canvas, 289, 10, kGrid);
    EXPECT_PIXEL(canvas, 435, 10, kGrid);
    EXPECT_PIXEL(canvas, 10, 178, kGrid);
    EXPECT_PIXEL(canvas, 10, 357, kGrid);
    EXPECT_PIXEL(canvas, 143, 10, kWhite);
    EXPECT_PIXEL(canvas, 10, 177, kWhite);
    // The strip right of the last whole column.
    for (int y : {0, 100, 200, 399}) {
        EXPECT_PIXEL(canvas, 436, y, ButtonFace());
        EXPECT_PIXEL(canvas, 499, y, ButtonFace());
    }
    EXPECT_EQ(canvas.Count(RECT{0, 0, 500, 400}, Highlight()), 0) << "no highlight";
    EXPECT_EQ(canvas.Count(RECT{0, 0, 500, 400}, kMagenta), 0) << "every pixel is painted";
}

TEST(GalleryPaint, UnderTheLastFullRowIsButtonFace) {
    Fixture<> f(276, 362);  // 2 by 2, the right column cut off, no partial row
    Canvas canvas(276, 362);
    f.gallery.PaintInto(canvas.Dc());
    EXPECT_PIXEL(canvas, 10, 357, kWhite);
    EXPECT_PIXEL(canvas, 10, 358, kGrid) << "the bottom edge of the second row";
    for (int y = 359; y < 362; ++y) {
        EXPECT_PIXEL(canvas, 10, y, ButtonFace());
        EXPECT_PIXEL(canvas, 200, y, ButtonFace());
    }
    EXPECT_PIXEL(canvas, 275, 10, kWhite) << "the second column runs past the edge";
    EXPECT_PIXEL(canvas, 144, 10, kGrid);
}

TEST(GalleryPaint, CellsDrawOnePixelShortOfTheNextCell) {
    Fixture<> f(500, 400);
    f.gallery.Fill(7);
    Canvas canvas(500, 400);
    f.gallery.PaintInto(canvas.Dc());
    for (int i = 0; i < 7; ++i) {
        const SolidItem* item = f.gallery.Solid(i);
        ASSERT_EQ(item->calls.size(), 1u) << i;
        const DrawCall& call = item->calls[0];
        const int left = (i % 3) * 145, top = (i / 3) * 179;
        EXPECT_EQ(call.rect.left, left);
        EXPECT_EQ(call.rect.top, top);
        EXPECT_EQ(call.rect.right, left + 144);
        EXPECT_EQ(call.rect.bottom, top + 178);
        EXPECT_EQ(call.rop, static_cast<DWORD>(SRCCOPY));
        EXPECT_FALSE(call.dragImage);
        EXPECT_NE(call.dc, canvas.Dc()) << "drawn off-screen";
        EXPECT_PIXEL(canvas, left, top, ItemColour(i));
        if (top + 177 < 400) {
            EXPECT_PIXEL(canvas, left + 143, top + 177, ItemColour(i));
        }
    }
    EXPECT_PIXEL(canvas, 144, 10, kGrid) << "the grid line stays between items";
    EXPECT_PIXEL(canvas, 10, 178, kGrid);
    EXPECT_PIXEL(canvas, 10, 399, ItemColour(6)) << "the partial row is drawn and cut off";
    EXPECT_PIXEL(canvas, 150, 370, kWhite) << "past the last item only the tile";
    EXPECT_PIXEL(canvas, 450, 370, ButtonFace());
}

TEST(GalleryPaint, HighlightIsAFrameTwoPixelsInsideTheSelectedCell) {
    Fixture<> f(500, 400);
    f.gallery.Fill(7);
    f.gallery.SetSelection(4);
    Canvas canvas(500, 400);
    f.gallery.PaintInto(canvas.Dc());
    // Cell 4 is (145, 179) - (290, 358); the frame is (147, 181) - (288, 356).
    for (int x = 147; x < 288; ++x) {
        EXPECT_PIXEL(canvas, x, 181, Highlight());
        EXPECT_PIXEL(canvas, x, 355, Highlight());
    }
    for (int y = 181; y < 356; ++y) {
        EXPECT_PIXEL(canvas, 147, y, Highlight());
        EXPECT_PIXEL(canvas, 287, y, Highlight());
    }
    EXPECT_PIXEL(canvas, 146, 180, ItemColour(4));
    EXPECT_PIXEL(canvas, 148, 182, ItemColour(4));
    EXPECT_PIXEL(canvas, 286, 354, ItemColour(4));
    EXPECT_PIXEL(canvas, 288, 356, ItemColour(4));
    EXPECT_EQ(canvas.Count(RECT{0, 0, 500, 400}, Highlight()), 2 * 141 + 2 * 173);
}

TEST(GalleryPaint, CellsAndHighlightFollowTheBarNotTheFirstRow) {
    Fixture<> f(500, 400);
    f.gallery.Fill(30);
    std::vector<const SolidItem*> log;
    for (int i = 0; i < 30; ++i) f.gallery.Solid(i)->drawLog = &log;
    f.gallery.SetTopRow(2, FALSE);
    f.gallery.topRow = 5;
    f.gallery.SetSelection(7);
    Canvas canvas(500, 400);
    f.gallery.PaintInto(canvas.Dc());
    ASSERT_EQ(log.size(), 9u) << "three rows of three, the partial one included";
    for (size_t i = 0; i < log.size(); ++i) EXPECT_EQ(log[i], f.gallery.Solid(6 + static_cast<int>(i)));
    EXPECT_PIXEL(canvas, 10, 10, ItemColour(6));
    EXPECT_PIXEL(canvas, 147, 2, Highlight()) << "item 7 is in the first row shown";
}

TEST(GalleryPaint, LayersInOrderOnTheBuffer) {
    Host host;
    LayeredGallery gallery;
    ASSERT_TRUE(gallery.Create(host.Handle(), RectForClient(300, 200)));
    Canvas canvas(300, 200);
    gallery.PaintInto(canvas.Dc());
    ASSERT_EQ(gallery.layers.size(), 3u);
    EXPECT_EQ(gallery.layers[0].first, "grid");
    EXPECT_EQ(gallery.layers[1].first, "cells");
    EXPECT_EQ(gallery.layers[2].first, "highlight");
    EXPECT_EQ(gallery.layers[0].second, gallery.layers[2].second);
    EXPECT_NE(gallery.layers[0].second, canvas.Dc());
}

TEST(GalleryPaint, WithoutABufferBitmapEverythingGoesStraightToTheTarget) {
    gallery::GalleryDrawingFunctions functions;
    functions.createCompatibleBitmap = [](HDC, int, int) -> HBITMAP { return nullptr; };
    DrawingFunctionsScope scope(functions);
    Host host;
    LayeredGallery gallery;
    ASSERT_TRUE(gallery.Create(host.Handle(), RectForClient(500, 400)));
    gallery.Fill(4);
    gallery.SetSelection(1);
    gallery.layers.clear();
    Canvas canvas(500, 400);
    gallery.PaintInto(canvas.Dc());
    ASSERT_EQ(gallery.layers.size(), 3u);
    for (const auto& layer : gallery.layers) EXPECT_EQ(layer.second, canvas.Dc()) << layer.first;
    EXPECT_EQ(gallery.Solid(0)->calls.size(), 1u);
    EXPECT_EQ(gallery.Solid(0)->calls[0].dc, canvas.Dc());
    EXPECT_PIXEL(canvas, 10, 10, ItemColour(0));
    EXPECT_PIXEL(canvas, 144, 10, kGrid);
    EXPECT_PIXEL(canvas, 147, 2, Highlight());
    EXPECT_PIXEL(canvas, 450, 10, kMagenta) << "no button-face fill on the direct path";
}

TEST(GalleryPaint, WithoutABufferContextToo) {
    gallery::GalleryDrawingFunctions functions;
    functions.createCompatibleDc = [](HDC) -> HDC { return nullptr; };
    DrawingFunctionsScope scope(functions);
    Fixture<> f(500, 400);
    f.gallery.Fill(2);
    Canvas canvas(500, 400);
    f.gallery.PaintInto(canvas.Dc());
    EXPECT_EQ(f.gallery.Solid(1)->calls.size(), 1u);
    EXPECT_PIXEL(canvas, 150, 10, ItemColour(1));
    EXPECT_PIXEL(canvas, 450, 10, kMagenta);
}

TEST(GalleryPaint, AFailedCopyDrawsTheCellsASecondTime) {
    gallery::GalleryDrawingFunctions functions;
    functions.bitBlt = [](HDC, int, int, int, int, HDC, int, int, DWORD) -> BOOL { return FALSE; };
    DrawingFunctionsScope scope(functions);
    Fixture<> f(500, 400);
    f.gallery.Fill(3);
    Canvas canvas(500, 400);
    f.gallery.PaintInto(canvas.Dc());
    const SolidItem* item = f.gallery.Solid(2);
    ASSERT_EQ(item->calls.size(), 2u);
    EXPECT_NE(item->calls[0].dc, canvas.Dc());
    EXPECT_EQ(item->calls[1].dc, canvas.Dc());
    EXPECT_PIXEL(canvas, 300, 10, ItemColour(2));
    EXPECT_PIXEL(canvas, 450, 10, kMagenta);
}

TEST(GalleryPaint, PrintClientComposesTheSamePicture) {
    Fixture<> f(500, 400);
    f.gallery.Fill(5);
    f.gallery.SetSelection(2);
    Canvas direct(500, 400);
    Canvas printed(500, 400, RGB(0, 0, 0));
    f.gallery.PaintInto(direct.Dc());
    f.gallery.Send(WM_PRINTCLIENT, reinterpret_cast<WPARAM>(printed.Dc()), PRF_CLIENT);
    EXPECT_EQ(std::memcmp(direct.Pixels(), printed.Pixels(), 500 * 400 * 4), 0);
}

TEST(GalleryPaint, EraseBackgroundPaintsNothing) {
    Fixture<> f(300, 200);
    Canvas canvas(300, 200);
    EXPECT_EQ(f.gallery.Send(WM_ERASEBKGND, reinterpret_cast<WPARAM>(canvas.Dc()), 0), 0);
    EXPECT_EQ(canvas.Count(RECT{0, 0, 300, 200}, kMagenta), 300 * 200);
}

TEST(GalleryPaint, DisablingRepaintsAndTheBufferedPictureStaysTheSame) {
    Fixture<> f(500, 400);
    f.gallery.Fill(5);
    f.gallery.SetSelection(1);
    Canvas enabled(500, 400);
    f.gallery.PaintInto(enabled.Dc());
    ::ValidateRect(f.gallery.Handle(), nullptr);
    ::EnableWindow(f.gallery.Handle(), FALSE);
    EXPECT_TRUE(::GetUpdateRect(f.gallery.Handle(), nullptr, FALSE));
    Canvas disabled(500, 400);
    f.gallery.PaintInto(disabled.Dc());
    EXPECT_EQ(std::memcmp(enabled.Pixels(), disabled.Pixels(), 500 * 400 * 4), 0);
    ::EnableWindow(f.gallery.Handle(), TRUE);
}

TEST(GalleryPaint, ThePaletteOfTheTargetIsPutBack) {
    Fixture<> f(300, 200);
    Canvas canvas(300, 200);
    const HGDIOBJ before = ::GetCurrentObject(canvas.Dc(), OBJ_PAL);
    f.gallery.PaintInto(canvas.Dc());
    EXPECT_EQ(::GetCurrentObject(canvas.Dc(), OBJ_PAL), before);
}

TEST(GalleryPaint, RealPaintMessagesRunTheLayers) {
    Host host;
    LayeredGallery gallery;
    ASSERT_TRUE(gallery.Create(host.Handle(), RectForClient(300, 200)));
    gallery.Fill(2);
    ::UpdateWindow(host.Handle());
    ::UpdateWindow(gallery.Handle());
    gallery.layers.clear();
    gallery.Solid(1)->calls.clear();
    gallery.Invalidate(true);
    ::UpdateWindow(gallery.Handle());
    ASSERT_EQ(gallery.layers.size(), 3u);
    EXPECT_EQ(gallery.layers[0].first, "grid");
    EXPECT_EQ(gallery.Solid(1)->calls.size(), 1u);
}

namespace {

// The grid as its definition draws it: each tile's cell inflated by 1, one
// after another, filled with the current brush.
void DrawGridTileByTile(HDC dc, SIZE cell, int rows, int columns) {
    const HPEN pen = ::CreatePen(PS_SOLID, 1, kGrid);
    const HGDIOBJ previous = ::SelectObject(dc, pen);
    for (int row = 0; row < rows; ++row)
        for (int col = 0; col < columns; ++col)
            ::Rectangle(dc, col * cell.cx - 1, row * cell.cy - 1, col * cell.cx + cell.cx + 1,
                        row * cell.cy + cell.cy + 1);
    ::SelectObject(dc, previous);
    ::DeleteObject(pen);
}

struct GridCase {
    SIZE cell;
    int cx, cy;
    bool hatched;
    RECT clip;  // empty: none
};

}  // namespace

class GalleryGridPicture : public ::testing::TestWithParam<GridCase> {};

TEST_P(GalleryGridPicture, IsTheSameAsDrawingEveryTile) {
    const GridCase& c = GetParam();
    Fixture<> f(c.cx, c.cy, c.cell);
    Canvas ours(c.cx, c.cy, kMagenta), reference(c.cx, c.cy, kMagenta);
    const HBRUSH hatch = ::CreateHatchBrush(HS_DIAGCROSS, RGB(10, 120, 200));
    for (Canvas* canvas : {&ours, &reference}) {
        if (c.hatched) ::SelectObject(canvas->Dc(), hatch);
        if (c.clip.right > c.clip.left)
            ::IntersectClipRect(canvas->Dc(), c.clip.left, c.clip.top, c.clip.right, c.clip.bottom);
    }
    f.gallery.DrawGrid(ours.Dc());
    DrawGridTileByTile(reference.Dc(), c.cell, f.gallery.visibleRows, f.gallery.columns);
    for (Canvas* canvas : {&ours, &reference}) {
        ::SelectObject(canvas->Dc(), ::GetStockObject(WHITE_BRUSH));
        ::SelectClipRgn(canvas->Dc(), nullptr);
    }
    ::DeleteObject(hatch);
    EXPECT_EQ(std::memcmp(ours.Pixels(), reference.Pixels(), static_cast<size_t>(c.cx) * c.cy * 4), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Grids, GalleryGridPicture,
    ::testing::Values(GridCase{kLargeCell, 500, 400, false, {}}, GridCase{kLargeCell, 276, 362, false, {}},
                      GridCase{kSmallCell, 288, 358, false, {}}, GridCase{SIZE{77, 108}, 276, 362, false, {}},
                      GridCase{SIZE{5, 3}, 60, 40, false, {}}, GridCase{kLargeCell, 500, 400, true, {}},
                      GridCase{kSmallCell, 300, 300, true, {100, 80, 250, 200}},
                      GridCase{kLargeCell, 500, 400, false, {143, 177, 147, 181}}));
