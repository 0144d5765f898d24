// Playing metafiles into bitmaps, centring bitmaps and making enhanced
// metafiles, with GDI under Wine.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "TestPictures.h"
#include "thumbnails/BitmapHelpers.h"
#include "thumbnails/MetafileCheck.h"

using framework::win32::UniqueBitmap;
using framework::win32::UniqueDc;
using framework::win32::UniqueEnhMetaFile;
using framework::win32::UniqueMetaFile;
using framework::win32::WindowDc;
using testpictures::Bytes;
using thumbnails::CenterBitmapContent;
using thumbnails::CreateCheckedMetaFile;
using thumbnails::MakeEnhancedMetafile;
using thumbnails::RenderMetafileToBitmap;

namespace {

constexpr COLORREF kWhite = 0xFFFFFF;

// A device bitmap of 24 bits with the given bytes (rows of 3 x width bytes).
UniqueBitmap Bitmap24(int width, int height, const Bytes& bytes) {
    UniqueBitmap bitmap(::CreateBitmap(width, height, 1, 24, nullptr));
    if (bitmap) ::SetBitmapBits(bitmap.Get(), static_cast<DWORD>(bytes.size()), bytes.data());
    return bitmap;
}

Bytes BitsOf(HBITMAP bitmap) {
    BITMAP info{};
    ::GetObjectA(bitmap, sizeof info, &info);
    Bytes bytes(static_cast<size_t>(info.bmWidthBytes) * static_cast<size_t>(info.bmHeight));
    ::GetBitmapBits(bitmap, static_cast<LONG>(bytes.size()), bytes.data());
    return bytes;
}

// White bytes with the rectangle [left, right) x [top, bottom) of bytes black.
Bytes Picture(int widthBytes, int height, int left, int top, int right, int bottom) {
    Bytes bytes(static_cast<size_t>(widthBytes * height), 0xFF);
    for (int y = top; y < bottom; ++y)
        for (int x = left; x < right; ++x) bytes[static_cast<size_t>(y * widthBytes + x)] = 0x00;
    return bytes;
}

// A reference context whose compatible bitmaps are 24-bit sections, so that
// white is all 0xFF bytes. (A 32-bit screen's white keeps a 0 in every
// fourth byte, which the centring counts as drawing.)
struct Reference24 {
    Reference24() : dc(::CreateCompatibleDC(nullptr)) {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        info.bmiHeader.biWidth = 1;
        info.bmiHeader.biHeight = 1;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 24;
        void* bits = nullptr;
        section.Reset(::CreateDIBSection(dc.Get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
        previous = ::SelectObject(dc.Get(), section.Get());
    }
    ~Reference24() { ::SelectObject(dc.Get(), previous); }
    UniqueBitmap section;
    UniqueDc dc;
    HGDIOBJ previous = nullptr;
};

UniqueMetaFile MetaFileOf(const Bytes& bits) {
    return UniqueMetaFile(::SetMetaFileBitsEx(static_cast<UINT>(bits.size()), bits.data()));
}

// A Windows metafile of a 256 x 192 window with a black block of the given
// width from its top left corner down to its bottom. Played isotropically
// into 128 x 128 it fills 96 rows at the top, half a pixel a unit.
Bytes BlackBlock(int width) {
    return testpictures::SampleWindowsMetafileBits(
        [width](HDC dc) { ::PatBlt(dc, 0, 0, width, 192, BLACKNESS); }, 256, 192);
}

// The drawn (non-0xFF) extent of each row, for failure messages.
std::string Rows(const Bytes& bytes, int widthBytes) {
    std::string out;
    for (size_t row = 0; row * static_cast<size_t>(widthBytes) < bytes.size(); ++row) {
        int first = -1, last = -1;
        for (int x = 0; x < widthBytes; ++x)
            if (bytes[row * static_cast<size_t>(widthBytes) + static_cast<size_t>(x)] != 0xFF) {
                if (first < 0) first = x;
                last = x;
            }
        out += "\n  row " + std::to_string(row) + ": " +
               (first < 0 ? std::string("blank") : std::to_string(first) + ".." + std::to_string(last));
    }
    return out;
}

}  // namespace

// ---- CenterBitmapContent ---------------------------------------------------------------

TEST(CenterBitmapContent, NoBitmapFails) {
    EXPECT_EQ(CenterBitmapContent(nullptr), 0);
}

TEST(CenterBitmapContent, AnAllWhiteBitmapComesBackUnchanged) {
    const Bytes white(12 * 6, 0xFF);
    UniqueBitmap bitmap = Bitmap24(4, 6, white);
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(CenterBitmapContent(bitmap.Get()), 1);
    EXPECT_EQ(BitsOf(bitmap.Get()), white);
}

TEST(CenterBitmapContent, ADrawingTwoRowsTooHighMovesDown) {
    UniqueBitmap bitmap = Bitmap24(4, 8, Picture(12, 8, 0, 1, 12, 3));  // top 1, bottom 5
    EXPECT_EQ(CenterBitmapContent(bitmap.Get()), static_cast<int>(sizeof(BITMAP)));
    EXPECT_EQ(BitsOf(bitmap.Get()), Picture(12, 8, 0, 3, 12, 5));
}

TEST(CenterBitmapContent, AShiftOfOneRowDoesNothing) {
    const Bytes bytes = Picture(12, 8, 0, 3, 12, 8);  // top 3, bottom 0
    UniqueBitmap bitmap = Bitmap24(4, 8, bytes);
    EXPECT_EQ(CenterBitmapContent(bitmap.Get()), static_cast<int>(sizeof(BITMAP)));
    EXPECT_EQ(BitsOf(bitmap.Get()), bytes);
}

TEST(CenterBitmapContent, HorizontalMovesAtTwentyFourBits) {
    UniqueBitmap right = Bitmap24(4, 2, Picture(12, 2, 9, 0, 12, 2));  // left 9, right 0
    EXPECT_NE(CenterBitmapContent(right.Get()), 0);
    EXPECT_EQ(BitsOf(right.Get()), Picture(12, 2, 6, 0, 9, 2)) << "3 bytes to the left";
    UniqueBitmap left = Bitmap24(4, 2, Picture(12, 2, 0, 0, 3, 2));  // left 0, right 9
    EXPECT_NE(CenterBitmapContent(left.Get()), 0);
    EXPECT_EQ(BitsOf(left.Get()), Picture(12, 2, 5, 0, 8, 2)) << "5 bytes to the right, splitting pixels";
}

TEST(CenterBitmapContent, ADrawingNeedingBothMovesGetsOnlyTheHorizontal) {
    // Two pixels in the top left corner of 8 x 8: shiftY -3, shiftX -9.
    const Bytes source = Picture(24, 8, 0, 0, 6, 2);
    UniqueBitmap bitmap = Bitmap24(8, 8, source);
    EXPECT_NE(CenterBitmapContent(bitmap.Get()), 0);
    EXPECT_EQ(BitsOf(bitmap.Get()), Picture(24, 8, 9, 0, 15, 2)) << "moved right only, still at the top";
}

TEST(CenterBitmapContent, OtherDepthsCountBytesToo) {
    // 8 bits, a drawing of one byte column at the left of 16: shiftX -7.
    UniqueBitmap bitmap(::CreateBitmap(16, 2, 1, 8, nullptr));
    ASSERT_TRUE(bitmap);
    const Bytes source = Picture(16, 2, 0, 0, 1, 2);
    ::SetBitmapBits(bitmap.Get(), static_cast<DWORD>(source.size()), source.data());
    EXPECT_NE(CenterBitmapContent(bitmap.Get()), 0);
    EXPECT_EQ(BitsOf(bitmap.Get()), Picture(16, 2, 7, 0, 8, 2));
}

// ---- RenderMetafileToBitmap ----------------------------------------------------------

TEST(RenderMetafileToBitmap, BadArgumentsGiveNothing) {
    UniqueMetaFile metafile = MetaFileOf(BlackBlock(256));
    ASSERT_TRUE(metafile);
    WindowDc screen(nullptr);
    EXPECT_EQ(RenderMetafileToBitmap(metafile.Get(), screen.Get(), 0, 10, kWhite), nullptr);
    EXPECT_EQ(RenderMetafileToBitmap(metafile.Get(), screen.Get(), 10, 0, kWhite), nullptr);
    EXPECT_EQ(RenderMetafileToBitmap(metafile.Get(), screen.Get(), -5, 10, kWhite), nullptr);
    EXPECT_EQ(RenderMetafileToBitmap(nullptr, screen.Get(), 10, 10, kWhite), nullptr);
    EXPECT_EQ(RenderMetafileToBitmap(metafile.Get(), nullptr, 10, 10, kWhite), nullptr);
    // A width of 0 is refused before any context is touched: even an invalid
    // one is never used.
    EXPECT_EQ(RenderMetafileToBitmap(metafile.Get(), reinterpret_cast<HDC>(0x1234), 0, 10, kWhite), nullptr);
}

TEST(RenderMetafileToBitmap, TheDrawingEndsUpInTheMiddle) {
    // The top 96 rows drawn across the whole width: 16 rows down.
    UniqueMetaFile metafile = MetaFileOf(BlackBlock(256));
    Reference24 reference;
    UniqueBitmap bitmap(RenderMetafileToBitmap(metafile.Get(), reference.dc.Get(), 128, 128, kWhite));
    ASSERT_TRUE(bitmap);
    BITMAP info{};
    ::GetObjectA(bitmap.Get(), sizeof info, &info);
    EXPECT_EQ(info.bmWidth, 128);
    EXPECT_EQ(info.bmHeight, 128);
    EXPECT_EQ(info.bmBitsPixel, 24);
    const Bytes bits = BitsOf(bitmap.Get());
    EXPECT_EQ(bits, Picture(384, 128, 0, 16, 384, 112)) << Rows(bits, 384);
}

TEST(RenderMetafileToBitmap, ADrawingNeedingBothMovesIsOnlyMovedAcross) {
    // The left 64 pixels of the top 96 rows: 16 rows down and 96 bytes
    // right, of which only the move to the right remains.
    UniqueMetaFile metafile = MetaFileOf(BlackBlock(128));
    Reference24 reference;
    UniqueBitmap bitmap(RenderMetafileToBitmap(metafile.Get(), reference.dc.Get(), 128, 128, kWhite));
    ASSERT_TRUE(bitmap);
    const Bytes bits = BitsOf(bitmap.Get());
    EXPECT_EQ(bits, Picture(384, 128, 96, 0, 288, 96)) << Rows(bits, 384);
}

TEST(RenderMetafileToBitmap, TheFillIsSquareWhateverTheHeight) {
    // Nothing drawn: the fill covers 16 x 16, rows 16 to 31 stay black, and
    // the centring takes them for the drawing and moves them up 8 rows.
    UniqueMetaFile metafile = MetaFileOf(testpictures::SampleWindowsMetafileBits([](HDC) {}));
    ASSERT_TRUE(metafile);
    Reference24 reference;
    UniqueBitmap bitmap(RenderMetafileToBitmap(metafile.Get(), reference.dc.Get(), 16, 32, kWhite));
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(BitsOf(bitmap.Get()), Picture(48, 32, 0, 8, 48, 24));
}

TEST(RenderMetafileToBitmap, OnTheScreen) {
    UniqueMetaFile metafile = MetaFileOf(testpictures::SampleWindowsMetafileBits());
    WindowDc screen(nullptr);
    UniqueBitmap bitmap(RenderMetafileToBitmap(metafile.Get(), screen.Get(), 128, 128, kWhite));
    ASSERT_TRUE(bitmap);
    BITMAP info{};
    ::GetObjectA(bitmap.Get(), sizeof info, &info);
    EXPECT_EQ(info.bmWidth, 128);
    EXPECT_EQ(info.bmHeight, 128);
    EXPECT_EQ(info.bmBitsPixel, ::GetDeviceCaps(screen.Get(), BITSPIXEL));
}

TEST(RenderMetafileToBitmap, AMetafileThatFailsTheCheckIsNotPlayed) {
    // GDI takes a polygon whose count runs past its record; the check does not.
    Bytes bits = testpictures::SampleWindowsMetafileBits([](HDC dc) {
        const POINT points[3] = {{0, 0}, {10, 0}, {0, 10}};
        ::Polygon(dc, points, 3);
    });
    ASSERT_FALSE(bits.empty());
    size_t at = 18;
    while (at + 6 <= bits.size() && (bits[at + 4] | bits[at + 5] << 8) != 0x0324)
        at += 2 * (bits[at] | bits[at + 1] << 8);
    ASSERT_LT(at + 8, bits.size()) << "the polygon record";
    bits[at + 6] = 200;  // 200 points in a record of 3
    ASSERT_EQ(thumbnails::CheckWindowsMetafile(bits.data(), bits.size()).status,
              thumbnails::MetafileCheckStatus::kBadRecordContent);
    UniqueMetaFile metafile = MetaFileOf(bits);
    ASSERT_TRUE(metafile);
    Reference24 reference;
    EXPECT_EQ(RenderMetafileToBitmap(metafile.Get(), reference.dc.Get(), 64, 64, kWhite), nullptr);
    EXPECT_EQ(MakeEnhancedMetafile(reference.dc.Get(), metafile.Get(), 64, 64), nullptr);
}

TEST(RenderMetafileToBitmap, EscapesAreDroppedNotRefused) {
    auto draw = [](bool escape) {
        return [escape](HDC dc) {
            ::Rectangle(dc, 0, 0, 200, 100);
            const char data[4] = {1, 2, 3, 4};
            if (escape) ::Escape(dc, 0x1234, sizeof data, data, nullptr);
            ::Ellipse(dc, 50, 100, 300, 250);
        };
    };
    const Bytes plain = testpictures::SampleWindowsMetafileBits(draw(false));
    const Bytes withEscape = testpictures::SampleWindowsMetafileBits(draw(true));
    ASSERT_EQ(thumbnails::CheckWindowsMetafile(withEscape.data(), withEscape.size()).status,
              thumbnails::MetafileCheckStatus::kEscapeRecord);
    Reference24 reference;
    UniqueMetaFile a = MetaFileOf(plain), b = MetaFileOf(withEscape);
    framework::win32::UniqueBitmap first(RenderMetafileToBitmap(a.Get(), reference.dc.Get(), 64, 64, kWhite));
    framework::win32::UniqueBitmap second(
        RenderMetafileToBitmap(b.Get(), reference.dc.Get(), 64, 64, kWhite));
    ASSERT_TRUE(first);
    ASSERT_TRUE(second);
    Bytes one(64 * 64 * 4), two(64 * 64 * 4);
    const LONG n = static_cast<LONG>(one.size());
    const LONG got = ::GetBitmapBits(first.Get(), n, one.data());
    ASSERT_GT(got, 0);
    ASSERT_EQ(::GetBitmapBits(second.Get(), n, two.data()), got);
    EXPECT_EQ(one, two) << "the escape draws nothing and is not there";
    EXPECT_NE(std::count(one.begin(), one.begin() + got, 0xFF), got) << "something was drawn";
    UniqueEnhMetaFile enhanced(MakeEnhancedMetafile(reference.dc.Get(), b.Get(), 64, 64));
    EXPECT_TRUE(enhanced);
}

// ---- MakeEnhancedMetafile ---------------------------------------------------------------

TEST(MakeEnhancedMetafile, FromAWindowsMetafile) {
    UniqueMetaFile metafile = MetaFileOf(testpictures::SampleWindowsMetafileBits());
    WindowDc screen(nullptr);
    UniqueEnhMetaFile enhanced(MakeEnhancedMetafile(screen.Get(), metafile.Get(), 100, 100));
    ASSERT_TRUE(enhanced);
    const UINT size = ::GetEnhMetaFileBits(enhanced.Get(), 0, nullptr);
    Bytes bits(size);
    ASSERT_EQ(::GetEnhMetaFileBits(enhanced.Get(), size, bits.data()), size);
    const thumbnails::MetafileCheckResult check = thumbnails::CheckEnhancedMetafile(bits.data(), bits.size());
    EXPECT_TRUE(check.Accepted()) << thumbnails::DescribeMetafileCheckStatus(check.status) << " record "
                                  << check.failingRecord;
}

TEST(MakeEnhancedMetafile, BadArgumentsGiveNothing) {
    UniqueMetaFile metafile = MetaFileOf(testpictures::SampleWindowsMetafileBits());
    WindowDc screen(nullptr);
    EXPECT_EQ(MakeEnhancedMetafile(nullptr, metafile.Get(), 10, 10), nullptr);
    EXPECT_EQ(MakeEnhancedMetafile(screen.Get(), nullptr, 10, 10), nullptr);
    EXPECT_EQ(MakeEnhancedMetafile(screen.Get(), metafile.Get(), 0, 10), nullptr);
    EXPECT_EQ(MakeEnhancedMetafile(screen.Get(), metafile.Get(), 10, -1), nullptr);
}

// ---- CreateCheckedMetaFile ----------------------------------------------------------------

TEST(CreateCheckedMetaFile, OnlyBitsThatPassTheCheck) {
    const Bytes good = testpictures::SampleWindowsMetafileBits();
    UniqueMetaFile metafile(CreateCheckedMetaFile(good.data(), good.size()));
    EXPECT_TRUE(metafile);
    Bytes bad = good;
    bad.resize(bad.size() - 4);  // ending inside its end record
    EXPECT_EQ(CreateCheckedMetaFile(bad.data(), bad.size()), nullptr);
    EXPECT_EQ(CreateCheckedMetaFile(nullptr, 100), nullptr);
    EXPECT_EQ(CreateCheckedMetaFile(good.data(), 0), nullptr);
    const Bytes placeable = testpictures::WithPlaceableHeader(good, 400, 300, 96);
    EXPECT_EQ(CreateCheckedMetaFile(placeable.data(), placeable.size()), nullptr)
        << "the bits behind a placeable header, not the header";
}
