// PaintBitmap hands true-colour pictures to GDI as 32-bit rows, which GDI
// copies far faster than 24-bit ones. The picture on the device must be
// exactly the one the 24-bit rows give (and, for 32-bit pictures, their own
// rows in blue-green-red order): compared here byte for byte on surfaces of
// every depth, with raster operations that read the destination and the
// brush, one to one, mirrored and scaled.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "framework/win32/GdiHandles.h"
#include "thumbnails/Imaging.h"

using namespace imaging;

namespace {

struct Owned {
    BitmapDescriptor bitmap{};
    ~Owned() { FreeBitmap(&bitmap); }
    BitmapDescriptor* get() { return &bitmap; }
};

// A top-down DIB section of `bits` per pixel (8 with a colour palette, 16
// as 5-5-5) in a memory context, its bytes set to a fixed pattern.
class Surface {
public:
    Surface(int32_t width, int32_t height, int bits) : dc_(::CreateCompatibleDC(nullptr)) {
        struct {
            BITMAPINFOHEADER header;
            RGBQUAD colors[256];
        } info{};
        info.header.biSize = sizeof info.header;
        info.header.biWidth = width;
        info.header.biHeight = -height;
        info.header.biPlanes = 1;
        info.header.biBitCount = static_cast<WORD>(bits);
        info.header.biCompression = BI_RGB;
        if (bits == 8) {
            info.header.biClrUsed = 256;
            for (int i = 0; i < 256; ++i)
                info.colors[i] = RGBQUAD{static_cast<BYTE>(i * 3 / 2), static_cast<BYTE>(255 - i),
                                         static_cast<BYTE>(i * 7), 0};
        }
        void* pixels = nullptr;
        section_ = framework::win32::UniqueBitmap(::CreateDIBSection(
            dc_.Get(), reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS, &pixels, nullptr, 0));
        bytes_ = static_cast<uint8_t*>(pixels);
        size_ = static_cast<size_t>((width * bits + 31) / 32 * 4) * static_cast<size_t>(height);
        previous_ = ::SelectObject(dc_.Get(), section_.Get());
        for (size_t i = 0; i < size_; ++i) bytes_[i] = static_cast<uint8_t>(i * 13 + i / 7);
    }
    ~Surface() { ::SelectObject(dc_.Get(), previous_); }
    bool Made() const { return bytes_ != nullptr; }
    HDC Dc() const { return dc_.Get(); }
    std::vector<uint8_t> Bytes() const {
        ::GdiFlush();
        return std::vector<uint8_t>(bytes_, bytes_ + size_);
    }

private:
    framework::win32::UniqueDc dc_;
    framework::win32::UniqueBitmap section_;
    uint8_t* bytes_ = nullptr;
    size_t size_ = 0;
    HGDIOBJ previous_ = nullptr;
};

// The picture as GDI got it before 32-bit rows: resampled to the target's
// size by the layer when the size differs, in blue-green-red order, at its
// own depth, placed as PaintBitmap places it.
void PaintThroughOwnRows(HDC dc, const BitmapDescriptor& bitmap, const RECT& target, DWORD rop) {
    const int32_t toWidth = target.right - target.left;
    const int32_t toHeight = target.bottom - target.top;
    const int32_t width = toWidth < 0 ? -toWidth : toWidth;
    const int32_t height = toHeight < 0 ? -toHeight : toHeight;
    Owned scaled;
    const BitmapDescriptor* paint = &bitmap;
    if (width != bitmap.width || height != bitmap.height) {
        ASSERT_EQ(kernel::ResizeRegion(bitmap, 0, 0, bitmap.width, bitmap.height, width, height,
                                       kSizeResample, scaled.get()),
                  kSuccess);
        paint = scaled.get();
    }
    Owned ordered;
    if (paint->colorOrder == kColorOrderRgb) {
        ASSERT_EQ(kernel::ConvertBitmap(*paint, 0, kColorOrderBgr, ordered.get()), kSuccess);
        paint = ordered.get();
    }
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = paint->width;
    info.bmiHeader.biHeight = -paint->height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = static_cast<WORD>(paint->bitsPerPixel);
    info.bmiHeader.biCompression = BI_RGB;
    const int x = toWidth < 0 ? target.left - 1 : target.left;
    const int y = toHeight < 0 ? target.top - 1 : target.top;
    ASSERT_NE(::StretchDIBits(dc, x, y, toWidth, toHeight, 0, 0, paint->width, paint->height, paint->storage,
                              &info, DIB_RGB_COLORS, rop),
              0);
}

// Colours that differ in every channel from pixel to pixel, with a fourth
// byte that is not 255 in 32-bit pictures.
void FillPicture(BitmapDescriptor* bitmap) {
    const int32_t step = bitmap->bitsPerPixel / 8;
    for (int32_t y = 0; y < bitmap->height; ++y) {
        uint8_t* row = kernel::Row(*bitmap, y);
        for (int32_t x = 0; x < bitmap->width * step; ++x) row[x] = static_cast<uint8_t>(x * 29 + y * 53 + 7);
    }
}

}  // namespace

TEST(PaintPath, ThirtyTwoBitRowsPaintExactlyWhatTheOwnRowsPaint) {
    const DWORD rops[] = {SRCCOPY, SRCINVERT, SRCAND, SRCPAINT, NOTSRCCOPY, SRCERASE, MERGECOPY, 0x00AC0744};
    const framework::win32::UniqueBrush pattern(::CreateHatchBrush(HS_DIAGCROSS, RGB(40, 160, 90)));
    struct Placement {
        const char* name;
        RECT target;
    };
    for (int32_t bits : {24, 32})
        for (int32_t order : {kColorOrderBgr, kColorOrderRgb})
            for (int32_t width : {1, 5, 17, 33}) {
                const int32_t height = 6;
                Owned picture;
                ASSERT_EQ(CreateBitmap(picture.get(), kMemoryConventional, width, height, bits, order,
                                       nullptr, 0, nullptr, 0),
                          kSuccess);
                FillPicture(picture.get());
                const Placement placements[] = {
                    {"one to one", RECT{3, 2, 3 + width, 2 + height}},
                    {"mirrored across", RECT{3 + width, 2, 3, 2 + height}},
                    {"mirrored upside down", RECT{3, 2 + height, 3 + width, 2}},
                    {"enlarged", RECT{1, 1, 1 + 2 * width + 1, 1 + 2 * height}},
                    {"reduced", RECT{0, 0, (width + 1) / 2, height / 2}},
                };
                for (int surfaceBits : {32, 24, 16, 8})
                    for (const Placement& placement : placements)
                        for (DWORD rop : rops) {
                            const int32_t side = 2 * width + 4;
                            Surface ours(side, 16, surfaceBits);
                            Surface reference(side, 16, surfaceBits);
                            ASSERT_TRUE(ours.Made() && reference.Made());
                            const framework::win32::SelectionGuard brushOurs(ours.Dc(), pattern.Get());
                            const framework::win32::SelectionGuard brushReference(reference.Dc(),
                                                                                  pattern.Get());
                            ASSERT_EQ(PaintBitmap(ours.Dc(), picture.get(), nullptr, nullptr,
                                                  &placement.target, nullptr, rop),
                                      kSuccess);
                            PaintThroughOwnRows(reference.Dc(), picture.bitmap, placement.target, rop);
                            ASSERT_EQ(ours.Bytes(), reference.Bytes())
                                << bits << "-bit picture, order " << order << ", width " << width << ", on "
                                << surfaceBits << " bits, " << placement.name << ", rop " << std::hex << rop;
                        }
            }
}

TEST(PaintPath, ALargePictureAndASmallOneAfterItPaintTheSame) {
    Owned picture;
    ASSERT_EQ(CreateBitmap(picture.get(), kMemoryConventional, 600, 500, 24, kColorOrderRgb, nullptr, 0,
                           nullptr, 0),
              kSuccess);
    FillPicture(picture.get());
    Surface ours(600, 500, 32);
    Surface reference(600, 500, 32);
    ASSERT_TRUE(ours.Made() && reference.Made());
    const RECT target{0, 0, 600, 500};
    ASSERT_EQ(PaintBitmap(ours.Dc(), picture.get(), nullptr, nullptr, &target, nullptr, SRCCOPY), kSuccess);
    PaintThroughOwnRows(reference.Dc(), picture.bitmap, target, SRCCOPY);
    EXPECT_TRUE(ours.Bytes() == reference.Bytes());
    Owned small;
    ASSERT_EQ(
        CreateBitmap(small.get(), kMemoryConventional, 7, 3, 24, kColorOrderBgr, nullptr, 0, nullptr, 0),
        kSuccess);
    FillPicture(small.get());
    const RECT corner{0, 0, 7, 3};
    ASSERT_EQ(PaintBitmap(ours.Dc(), small.get(), nullptr, nullptr, &corner, nullptr, SRCCOPY), kSuccess);
    PaintThroughOwnRows(reference.Dc(), small.bitmap, corner, SRCCOPY);
    EXPECT_TRUE(ours.Bytes() == reference.Bytes());
}

TEST(PaintPath, PaintingLeavesTheContextAsItWas) {
    Owned picture;
    ASSERT_EQ(
        CreateBitmap(picture.get(), kMemoryConventional, 4, 4, 24, kColorOrderBgr, nullptr, 0, nullptr, 0),
        kSuccess);
    Surface surface(8, 8, 32);
    ASSERT_TRUE(surface.Made());
    ::SetStretchBltMode(surface.Dc(), COLORONCOLOR);
    ::SetBrushOrgEx(surface.Dc(), 3, 2, nullptr);
    const int level = ::SaveDC(surface.Dc());
    const RECT target{0, 0, 4, 4};
    const RECT clip{0, 0, 2, 2};
    ASSERT_EQ(PaintBitmap(surface.Dc(), picture.get(), nullptr, nullptr, &target, nullptr, SRCCOPY),
              kSuccess);
    ASSERT_EQ(PaintBitmap(surface.Dc(), picture.get(), nullptr, nullptr, &target, &clip, SRCCOPY), kSuccess);
    EXPECT_EQ(::SaveDC(surface.Dc()), level + 1) << "no saved state left behind";
    ::RestoreDC(surface.Dc(), -1);
    EXPECT_EQ(::GetStretchBltMode(surface.Dc()), COLORONCOLOR);
    POINT origin{};
    ::GetBrushOrgEx(surface.Dc(), &origin);
    EXPECT_EQ(origin.x, 3);
    EXPECT_EQ(origin.y, 2);
    RECT box{};
    ::GetClipBox(surface.Dc(), &box);
    EXPECT_EQ(box.right, 8) << "the clip does not stay";
    ::RestoreDC(surface.Dc(), level);
}
