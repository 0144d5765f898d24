// The thumbnail cell: tile, caption band, picture and outline, read back from
// a memory canvas, with thumbnails made by the imaging layer.
#include <gtest/gtest.h>

#include <cstring>

#include "GalleryTestSupport.h"
#include "foundation/SharedPalette.h"
#include "foundation/Stdobj.h"
#include "gallery/ThumbnailGalleryItem.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/ThumbnailItem.h"

using namespace gallerytest;
using gallery::CThumbnailGalleryItem;

namespace {

const COLORREF kWhite = RGB(255, 255, 255);
const COLORREF kBlack = RGB(0, 0, 0);
const COLORREF kGrey = RGB(0x80, 0x80, 0x80);
const COLORREF kMagenta = RGB(255, 0, 255);
const COLORREF kRed = RGB(220, 20, 30);

#define EXPECT_PIXEL(canvas, x, y, colour) \
    EXPECT_EQ(Hex((canvas).Pixel((x), (y))), Hex(colour)) << "at (" << (x) << ", " << (y) << ")"

std::unique_ptr<thumbnails::CThumbnailItem> MakeThumbnail(int width, int height, COLORREF colour,
                                                          const char* path = "c:\\art\\Sunset.jpg") {
    auto item = std::make_unique<thumbnails::CThumbnailItem>();
    EXPECT_EQ(imaging::CreateBitmap(&item->bitmap, imaging::kMemoryConventional, width, height, 24,
                                    imaging::kColorOrderBgr, nullptr, 0, nullptr, 0),
              imaging::kSuccess);
    EXPECT_EQ(imaging::FillBitmap(&item->bitmap, colour), imaging::kSuccess);
    item->filePath = foundation::CFilePath(path);
    return item;
}

// A cell whose font and colour reduction the tests can see.
class OpenItem : public CThumbnailGalleryItem {
public:
    using CThumbnailGalleryItem::CThumbnailGalleryItem;
    using CThumbnailGalleryItem::font;
    using CThumbnailGalleryItem::reduceColours;
};

// The caption as it should come out: the band along the bottom of `rect`,
// the font of the cell width, the margins of 3 and 4.
void DrawReferenceCaption(HDC dc, const RECT& rect, int cellWidth, const char* text, UINT format) {
    const HBRUSH white = static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH));
    ::FillRect(dc, &rect, white);
    LOGFONTA description;
    std::memset(&description, 0, sizeof description);
    description.lfHeight = cellWidth < 100 ? -9 : -11;
    description.lfWeight = 400;
    description.lfPitchAndFamily = 0x22;
    std::strcpy(description.lfFaceName, "Arial");
    const HFONT font = ::CreateFontIndirectA(&description);
    const HGDIOBJ previous = ::SelectObject(dc, font);
    RECT textRect = rect;
    textRect.top = rect.bottom - (cellWidth < 100 ? 24 : 30);
    textRect.left = rect.left + 3;
    textRect.right = rect.right - 4;
    ::SetBkMode(dc, TRANSPARENT);
    ::SetTextColor(dc, kBlack);
    ::DrawTextA(dc, text, -1, &textRect, format);
    ::SelectObject(dc, previous);
    ::DeleteObject(font);
}

// Whether the two canvases agree on every pixel of `rect`.
bool SameIn(const Canvas& a, const Canvas& b, const RECT& rect) {
    for (int y = rect.top; y < rect.bottom; ++y)
        for (int x = rect.left; x < rect.right; ++x)
            if (a.Pixel(x, y) != b.Pixel(x, y)) return false;
    return true;
}

// The band of a cell drawn at `rect` with an item of `cellWidth`.
RECT Band(const RECT& rect, int cellWidth) {
    return RECT{rect.left, rect.bottom - (cellWidth < 100 ? 24 : 30), rect.right, rect.bottom};
}

// Draws a cell with a blank picture-free caption check: a 1 x 1 white
// picture in the middle leaves the band to the text alone.
struct CaptionCase {
    SIZE cell;
    const char* path;
    const char* title;
};

void ExpectCaptionLikeReference(const CaptionCase& c, UINT otherFormat, bool mustDiffer) {
    auto thumbnail = MakeThumbnail(1, 1, kWhite, c.path);
    CThumbnailGalleryItem item(thumbnail.get(), c.cell, "", FALSE);
    const RECT rect = {0, 0, c.cell.cx - 1, c.cell.cy - 1};
    Canvas drawn(c.cell.cx, c.cell.cy);
    item.Draw(drawn.Dc(), &rect, SRCCOPY, FALSE);
    Canvas reference(c.cell.cx, c.cell.cy);
    DrawReferenceCaption(reference.Dc(), rect, c.cell.cx, c.title, CThumbnailGalleryItem::kCaptionFormat);
    const RECT band = Band(rect, c.cell.cx);
    EXPECT_TRUE(SameIn(drawn, reference, band)) << c.title;
    EXPECT_GT(drawn.Count(band, kBlack), 0) << "the caption is drawn in black";
    if (otherFormat != 0) {
        Canvas other(c.cell.cx, c.cell.cy);
        DrawReferenceCaption(other.Dc(), rect, c.cell.cx, c.title, otherFormat);
        EXPECT_EQ(SameIn(drawn, other, band), !mustDiffer) << "the comparison can tell the formats apart";
    }
}

}  // namespace

TEST(ThumbnailGalleryItem, SizesFromTheCellAndTheBitmap) {
    auto thumbnail = MakeThumbnail(50, 40, kRed);
    CThumbnailGalleryItem item(thumbnail.get(), kLargeCell, "", FALSE);
    EXPECT_EQ(item.GetWidth(FALSE), 145);
    EXPECT_EQ(item.GetHeight(FALSE), 179);
    EXPECT_EQ(item.GetWidth(TRUE), 50);
    EXPECT_EQ(item.GetHeight(TRUE), 40);
    EXPECT_EQ(*item.GetName(), "");
    EXPECT_TRUE(item.IsKindOf(gallery::CTPGalleryItem::StaticRuntimeClass()));
    CThumbnailGalleryItem named(thumbnail.get(), kSmallCell, "kept", TRUE);
    EXPECT_EQ(*named.GetName(), "kept");
}

TEST(ThumbnailGalleryItem, TileCaptionPictureAndOutline) {
    auto thumbnail = MakeThumbnail(50, 40, kRed);
    CThumbnailGalleryItem item(thumbnail.get(), kLargeCell, "", FALSE);
    Canvas canvas(160, 190);
    const RECT rect = {0, 0, 144, 178};
    item.Draw(canvas.Dc(), &rect, SRCCOPY, FALSE);
    // The tile fills the rectangle, and nothing beyond it.
    EXPECT_PIXEL(canvas, 0, 0, kWhite);
    EXPECT_PIXEL(canvas, 143, 0, kWhite);
    EXPECT_PIXEL(canvas, 144, 0, kMagenta);
    EXPECT_PIXEL(canvas, 0, 178, kMagenta);
    // The picture: left (145 - 50) / 2 = 47, top (179 - 25 - 40) / 2 + 3 = 60.
    EXPECT_PIXEL(canvas, 48, 61, kRed);
    EXPECT_PIXEL(canvas, 95, 98, kRed);
    // The outline lies on the picture's outermost pixels.
    EXPECT_PIXEL(canvas, 47, 60, kWhite);
    EXPECT_PIXEL(canvas, 70, 60, kWhite);
    EXPECT_PIXEL(canvas, 96, 99, kWhite);
    EXPECT_PIXEL(canvas, 47, 80, kWhite);
    EXPECT_EQ(canvas.Count(RECT{47, 60, 97, 100}, kRed), 48 * 38);
    EXPECT_EQ(canvas.Count(RECT{0, 0, 144, 178}, kRed), 48 * 38) << "the picture is not scaled";
    // The caption stays in its band of 30.
    EXPECT_EQ(canvas.Count(RECT{0, 0, 144, 148}, kBlack), 0);
    EXPECT_GT(canvas.Count(RECT{0, 148, 144, 178}, kBlack), 0);
    EXPECT_EQ(canvas.Count(RECT{0, 148, 3, 178}, kBlack), 0) << "left margin";
}

TEST(ThumbnailGalleryItem, TheCaptionIsTheThumbnailsTitleInTheLargeBand) {
    ExpectCaptionLikeReference({kLargeCell, "c:\\art\\Sunset.jpg", "Sunset"}, 0, false);
}

TEST(ThumbnailGalleryItem, SmallCellsTakeTheSmallBandAndFont) {
    ExpectCaptionLikeReference({kSmallCell, "c:\\art\\Sunset.jpg", "Sunset"}, 0, false);
    auto thumbnail = MakeThumbnail(1, 1, kWhite, "c:\\art\\Sunset.jpg");
    CThumbnailGalleryItem item(thumbnail.get(), kSmallCell, "", FALSE);
    const RECT rect = {0, 0, 71, 89};
    Canvas drawn(72, 90);
    item.Draw(drawn.Dc(), &rect, SRCCOPY, FALSE);
    EXPECT_EQ(drawn.Count(RECT{0, 0, 71, 65}, kBlack), 0) << "nothing above the band of 24";
}

TEST(ThumbnailGalleryItem, TheBandAndFontChangeBetween99And100) {
    ExpectCaptionLikeReference({SIZE{99, 120}, "c:\\a\\Tall Ships.bmp", "Tall Ships"}, 0, false);
    ExpectCaptionLikeReference({SIZE{100, 120}, "c:\\a\\Tall Ships.bmp", "Tall Ships"}, 0, false);
    // The two renderings differ, so each comparison above has its size right.
    auto thumbnail = MakeThumbnail(1, 1, kWhite, "c:\\a\\Tall Ships.bmp");
    CThumbnailGalleryItem narrow(thumbnail.get(), SIZE{99, 120}, "", FALSE);
    CThumbnailGalleryItem wide(thumbnail.get(), SIZE{100, 120}, "", FALSE);
    const RECT rect = {0, 0, 99, 119};
    Canvas a(100, 120), b(100, 120);
    narrow.Draw(a.Dc(), &rect, SRCCOPY, FALSE);
    wide.Draw(b.Dc(), &rect, SRCCOPY, FALSE);
    EXPECT_FALSE(SameIn(a, b, RECT{0, 0, 99, 119}));
}

TEST(ThumbnailGalleryItem, AnAmpersandIsShownAsItIs) {
    ExpectCaptionLikeReference({kLargeCell, "c:\\art\\Rock & Roll.jpg", "Rock & Roll"},
                               CThumbnailGalleryItem::kCaptionFormat & ~DT_NOPREFIX, true);
}

TEST(ThumbnailGalleryItem, ALongCaptionBreaksAtWordsAndEndsWithAnEllipsis) {
    const CaptionCase longWords{kLargeCell, "c:\\art\\Evening light over the harbour of the old town.jpg",
                                "Evening light over the harbour of the old town"};
    ExpectCaptionLikeReference(longWords, CThumbnailGalleryItem::kCaptionFormat & ~DT_WORDBREAK, true);
    const CaptionCase oneWord{kLargeCell, "c:\\art\\Supercalifragilisticexpialidocious.jpg",
                              "Supercalifragilisticexpialidocious"};
    ExpectCaptionLikeReference(oneWord, CThumbnailGalleryItem::kCaptionFormat & ~DT_END_ELLIPSIS, true);
}

TEST(ThumbnailGalleryItem, ATallPictureRunsUpOverTheTilesTopEdge) {
    auto thumbnail = MakeThumbnail(100, 170, kRed);
    CThumbnailGalleryItem item(thumbnail.get(), kLargeCell, "", FALSE);
    Canvas canvas(145, 400, kMagenta);
    const RECT rect = {0, 179, 144, 357};
    item.Draw(canvas.Dc(), &rect, SRCCOPY, FALSE);
    // top = 179 + (179 - 25 - 170) / 2 + 3 = 174: five rows above the tile.
    EXPECT_PIXEL(canvas, 50, 174, kWhite) << "the outline";
    EXPECT_PIXEL(canvas, 50, 175, kRed) << "no clipping to the tile";
    EXPECT_PIXEL(canvas, 23, 178, kRed);
    EXPECT_PIXEL(canvas, 22, 178, kWhite) << "the left edge of the outline";
    EXPECT_PIXEL(canvas, 10, 178, kMagenta) << "the tile itself starts at its top";
    EXPECT_PIXEL(canvas, 10, 179, kWhite);
}

TEST(ThumbnailGalleryItem, TheDragImageIsThePictureAloneScaled) {
    auto thumbnail = MakeThumbnail(50, 40, kRed);
    CThumbnailGalleryItem item(thumbnail.get(), kLargeCell, "", FALSE);
    Canvas canvas(200, 200);
    const RECT rect = {10, 10, 110, 90};
    item.Draw(canvas.Dc(), &rect, SRCCOPY, TRUE);
    EXPECT_PIXEL(canvas, 10, 10, kRed) << "no outline";
    EXPECT_PIXEL(canvas, 109, 89, kRed) << "scaled to the rectangle";
    EXPECT_PIXEL(canvas, 110, 50, kMagenta) << "no tile";
    EXPECT_EQ(canvas.Count(RECT{0, 0, 200, 200}, kBlack), 0) << "no caption";
    EXPECT_EQ(canvas.Count(RECT{10, 10, 110, 90}, kRed), 100 * 80);
}

TEST(ThumbnailGalleryItem, EachDrawWorksOnItsOwnCopyAndLeavesTheContextAsItWas) {
    auto thumbnail = MakeThumbnail(50, 40, kRed);
    OpenItem item(thumbnail.get(), kLargeCell, "", FALSE);
    Canvas canvas(145, 179);
    const HDC dc = canvas.Dc();
    ::SetTextColor(dc, RGB(1, 2, 3));
    ::SetBkMode(dc, OPAQUE);
    const HGDIOBJ font = ::GetCurrentObject(dc, OBJ_FONT);
    const HGDIOBJ pen = ::GetCurrentObject(dc, OBJ_PEN);
    const HGDIOBJ brush = ::GetCurrentObject(dc, OBJ_BRUSH);
    const HGDIOBJ palette = ::GetCurrentObject(dc, OBJ_PAL);
    const size_t storage = imaging::kernel::LiveStorageCount();
    const void* pixels = thumbnail->bitmap.storage;
    const RECT rect = {0, 0, 144, 178};
    for (int i = 0; i < 3; ++i) item.Draw(dc, &rect, SRCCOPY, FALSE);
    EXPECT_EQ(imaging::kernel::LiveStorageCount(), storage) << "each copy is given back";
    EXPECT_EQ(thumbnail->bitmap.storage, pixels);
    EXPECT_FALSE(item.font) << "the font is deleted after every use";
    EXPECT_EQ(::GetTextColor(dc), RGB(1, 2, 3));
    EXPECT_EQ(::GetBkMode(dc), OPAQUE);
    EXPECT_EQ(::GetCurrentObject(dc, OBJ_FONT), font);
    EXPECT_EQ(::GetCurrentObject(dc, OBJ_PEN), pen);
    EXPECT_EQ(::GetCurrentObject(dc, OBJ_BRUSH), brush);
    EXPECT_EQ(::GetCurrentObject(dc, OBJ_PAL), palette);
}

TEST(ThumbnailGalleryItem, APaintPaletteIsSelectedForTheCellAndPutBack) {
    auto thumbnail = MakeThumbnail(50, 40, kRed);
    CThumbnailGalleryItem item(thumbnail.get(), kLargeCell, "", TRUE);
    Canvas canvas(145, 179);
    const HGDIOBJ palette = ::GetCurrentObject(canvas.Dc(), OBJ_PAL);
    const size_t storage = imaging::kernel::LiveStorageCount();
    const RECT rect = {0, 0, 144, 178};
    item.Draw(canvas.Dc(), &rect, SRCCOPY, FALSE);
    EXPECT_EQ(::GetCurrentObject(canvas.Dc(), OBJ_PAL), palette);
    EXPECT_EQ(imaging::kernel::LiveStorageCount(), storage);
    EXPECT_PIXEL(canvas, 48, 61, kRed) << "the picture's one colour survives the reduction to 8 bits";
    EXPECT_EQ(thumbnail->bitmap.bitsPerPixel, 24) << "the thumbnail itself is not reduced";
}

TEST(ThumbnailGalleryItem, ReducedColoursComeFromTheSharedPalette) {
    auto thumbnail = MakeThumbnail(50, 40, RGB(201, 77, 133));
    OpenItem item(thumbnail.get(), kLargeCell, "", FALSE);
    item.reduceColours = 1;
    Canvas canvas(145, 179);
    const HGDIOBJ palette = ::GetCurrentObject(canvas.Dc(), OBJ_PAL);
    const RECT rect = {0, 0, 144, 178};
    item.Draw(canvas.Dc(), &rect, SRCCOPY, FALSE);
    EXPECT_EQ(::GetCurrentObject(canvas.Dc(), OBJ_PAL), palette);
    const COLORREF painted = canvas.Pixel(60, 80);
    foundation::CSharedPalette* shared = foundation::GetSharedPalette();
    ASSERT_NE(shared, nullptr);
    bool inPalette = false;
    for (const RGBQUAD& entry : shared->Colors())
        inPalette |= RGB(entry.rgbRed, entry.rgbGreen, entry.rgbBlue) == painted;
    EXPECT_TRUE(inPalette) << Hex(painted);
}

TEST(ThumbnailGalleryItem, TheCellDoesNotTouchItsThumbnailWhenItGoes) {
    const size_t storage = imaging::kernel::LiveStorageCount();
    auto thumbnail = MakeThumbnail(50, 40, kRed);
    auto item = std::make_unique<CThumbnailGalleryItem>(thumbnail.get(), kLargeCell, "", FALSE);
    thumbnail.reset();  // the library is emptied first
    item.reset();
    EXPECT_EQ(imaging::kernel::LiveStorageCount(), storage);
}

TEST(ThumbnailGalleryItem, CaptionColourByTheContextsWindow) {
    Fixture<> f(300, 200);
    Canvas canvas(10, 10);
    EXPECT_EQ(CThumbnailGalleryItem::CaptionColourFor(canvas.Dc()), kBlack)
        << "a memory context has no window";
    const HDC dc = ::GetDC(f.gallery.Handle());
    EXPECT_EQ(CThumbnailGalleryItem::CaptionColourFor(dc), kBlack);
    ::EnableWindow(f.gallery.Handle(), FALSE);
    EXPECT_EQ(CThumbnailGalleryItem::CaptionColourFor(dc), kGrey);
    ::EnableWindow(f.gallery.Handle(), TRUE);
    ::ReleaseDC(f.gallery.Handle(), dc);
}

namespace {

struct ThumbnailGallery {
    explicit ThumbnailGallery(int count, const char* path = "c:\\art\\Harbour.jpg") : f(500, 400) {
        for (int i = 0; i < count; ++i) {
            thumbs.push_back(MakeThumbnail(60, 50, ItemColour(i), path));
            f.gallery.AddItem(
                std::make_unique<CThumbnailGalleryItem>(thumbs.back().get(), kLargeCell, "", FALSE), TRUE);
        }
    }
    std::vector<std::unique_ptr<thumbnails::CThumbnailItem>> thumbs;
    Fixture<> f;
};

}  // namespace

// The caption's pixels are those that a paint with captions has and the
// same paint without them has not. On the buffered path they are black, in
// a disabled gallery too, since the buffer's context has no window.
TEST(ThumbnailGalleryItem, ABufferedPaintOfADisabledGalleryKeepsItsCaptionsBlack) {
    ThumbnailGallery captioned(4);
    ThumbnailGallery plain(4, "");
    Canvas without(500, 400);
    plain.f.gallery.PaintInto(without.Dc());
    Canvas enabled(500, 400);
    captioned.f.gallery.PaintInto(enabled.Dc());
    ::EnableWindow(captioned.f.gallery.Handle(), FALSE);
    Canvas disabled(500, 400);
    captioned.f.gallery.PaintInto(disabled.Dc());
    ::EnableWindow(captioned.f.gallery.Handle(), TRUE);

    int captionPixels = 0, black = 0;
    for (int y = 0; y < 400; ++y) {
        for (int x = 0; x < 500; ++x) {
            if (disabled.Pixel(x, y) == without.Pixel(x, y)) continue;
            ++captionPixels;
            black += disabled.Pixel(x, y) == kBlack;
        }
    }
    EXPECT_GT(captionPixels, 4 * 10) << "every cell shows its caption";
    EXPECT_EQ(black, captionPixels) << "no caption pixel is grey, nor of any other colour";
    EXPECT_EQ(std::memcmp(enabled.Pixels(), disabled.Pixels(), 500 * 400 * 4), 0);
}

TEST(ThumbnailGalleryItem, OnlyTheDirectPathShowsADisabledCaptionGrey) {
    ThumbnailGallery g(2);
    ::UpdateWindow(g.f.host.Handle());
    ::UpdateWindow(g.f.gallery.Handle());
    ::EnableWindow(g.f.gallery.Handle(), FALSE);
    gallery::GalleryDrawingFunctions functions;
    functions.createCompatibleBitmap = [](HDC, int, int) -> HBITMAP { return nullptr; };
    DrawingFunctionsScope scope(functions);
    const HDC dc = ::GetDC(g.f.gallery.Handle());
    g.f.gallery.PaintInto(dc);
    int grey = 0, black = 0;
    for (int y = 148; y < 178; ++y) {
        for (int x = 0; x < 144; ++x) {
            const COLORREF pixel = ::GetPixel(dc, x, y);
            grey += pixel == kGrey;
            black += pixel == kBlack;
        }
    }
    ::ReleaseDC(g.f.gallery.Handle(), dc);
    ::EnableWindow(g.f.gallery.Handle(), TRUE);
    EXPECT_GT(grey, 0);
    EXPECT_EQ(black, 0);
}

TEST(ThumbnailGalleryItem, TheGalleryDragsThePictureAtItsOwnSize) {
    ThumbnailGallery g(3);
    g.f.gallery.dragEnabled = TRUE;
    g.f.gallery.Send(WM_LBUTTONDOWN, MK_LBUTTON, Point(20, 30));
    g.f.gallery.Send(WM_MOUSEMOVE, MK_LBUTTON, Point(200, 30));
    EXPECT_EQ(g.f.gallery.mouseState, 2);
    EXPECT_EQ(g.f.gallery.dragRect.right - g.f.gallery.dragRect.left, 60);
    EXPECT_EQ(g.f.gallery.dragRect.bottom - g.f.gallery.dragRect.top, 50);
    g.f.gallery.Send(WM_LBUTTONUP, 0, Point(200, 30));
    EXPECT_EQ(g.f.gallery.mouseState, 0);
}
