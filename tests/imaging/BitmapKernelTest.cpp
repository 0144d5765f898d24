#include "thumbnails/BitmapKernel.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using namespace imaging;

namespace {

// Gives the bitmap back at the end of the test, whatever happens.
struct Owned {
    BitmapDescriptor bitmap{};
    ~Owned() { FreeBitmap(&bitmap); }
    BitmapDescriptor* operator->() { return &bitmap; }
    BitmapDescriptor* get() { return &bitmap; }
};

int Create(BitmapDescriptor* bitmap, int32_t width, int32_t height, int32_t bits,
           int32_t order = kColorOrderBgr, const RgbQuad* palette = nullptr) {
    return CreateBitmap(bitmap, kMemoryConventional, width, height, bits, order, palette, 0, nullptr, 0);
}

uint8_t* Pixel(const BitmapDescriptor& bitmap, int32_t x, int32_t y) {
    return kernel::Row(bitmap, y) + static_cast<size_t>(x) * (bitmap.bitsPerPixel / 8);
}

void SetBgr(const BitmapDescriptor& bitmap, int32_t x, int32_t y, uint8_t b, uint8_t g, uint8_t r) {
    uint8_t* p = Pixel(bitmap, x, y);
    p[0] = b;
    p[1] = g;
    p[2] = r;
}

uint32_t IndexAt(const BitmapDescriptor& bitmap, int32_t x, int32_t y) {
    const uint8_t* row = kernel::Row(bitmap, y);
    switch (bitmap.bitsPerPixel) {
        case 1: return (row[x / 8] >> (7 - x % 8)) & 1;
        case 4: return x % 2 == 0 ? row[x / 2] >> 4 : row[x / 2] & 15;
        default: return row[x];
    }
}

}  // namespace

TEST(ImagingConstants, HaveTheirFixedValues) {
    EXPECT_EQ(kSuccess, 1);
    EXPECT_EQ(kErrorUnknownFormat, -9);
    EXPECT_EQ(kColorOrderBgr, 1);
    EXPECT_EQ(kMemoryConventional, 1);
    EXPECT_EQ(kFormatBmp, 6);
    EXPECT_EQ(kSizeResample, 2u);
    EXPECT_EQ(kSizeResampleFavourBlack, 3u);
    EXPECT_EQ(kColorReductionUserPalette, 0x70030u);
    EXPECT_EQ(sizeof(FileInfo), 1128u);
    EXPECT_EQ(offsetof(FileInfo, fileBitsPerPixel), 28u);
    EXPECT_EQ(offsetof(FileInfo, fileOrder), 64u);
    if (sizeof(void*) == 4) {
        EXPECT_EQ(sizeof(BitmapDescriptor), 156u);
    }
}

TEST(CreateBitmap, MakesAZeroedBitmapWithDibRows) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 5, 3, 24), kSuccess);
    EXPECT_EQ(bitmap->structSize, sizeof(BitmapDescriptor));
    EXPECT_EQ(bitmap->width, 5);
    EXPECT_EQ(bitmap->height, 3);
    EXPECT_EQ(bitmap->bitsPerPixel, 24);
    EXPECT_EQ(bitmap->bytesPerLine, 16);  // 15 bytes padded to 4
    EXPECT_EQ(bitmap->storageSize, 48u);
    EXPECT_EQ(bitmap->colorOrder, kColorOrderBgr);
    EXPECT_EQ(bitmap->viewPerspective, kViewTopLeft);
    EXPECT_EQ(bitmap->palette, nullptr);
    const uint8_t* bytes = static_cast<const uint8_t*>(bitmap->storage);
    for (uint32_t i = 0; i < bitmap->storageSize; ++i) ASSERT_EQ(bytes[i], 0);
    EXPECT_EQ(kernel::CheckBitmap(bitmap.get()), kSuccess);
}

TEST(CreateBitmap, StorageHoldsAPathTextEvenForTinyPictures) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 1, 1, 1), kSuccess);
    // A 1x1 picture has 4 bytes of rows; the storage still takes 260 characters.
    std::memset(bitmap->storage, 'x', 260);
    static_cast<char*>(bitmap->storage)[259] = '\0';
    EXPECT_EQ(bitmap->palette[1].red, 255) << "the palette lies beyond the reserved bytes";
}

TEST(CreateBitmap, PaletteDepthsGetAGreyRampOrTheGivenColours) {
    Owned grey;
    ASSERT_EQ(Create(grey.get(), 3, 2, 4), kSuccess);
    EXPECT_EQ(grey->colorCount, 16);
    EXPECT_EQ(grey->palette[0].red, 0);
    EXPECT_EQ(grey->palette[15].blue, 255);
    EXPECT_EQ(grey->palette[5].green, 85);
    EXPECT_EQ(IsGrayScaleBitmap(grey.get()), 1);

    RgbQuad colors[2] = {{255, 0, 0, 0}, {0, 0, 255, 0}};  // blue, red
    Owned own;
    ASSERT_EQ(Create(own.get(), 9, 1, 1, kColorOrderBgr, colors), kSuccess);
    EXPECT_EQ(own->colorCount, 2);
    EXPECT_EQ(own->palette[1].red, 255);
    EXPECT_EQ(IsGrayScaleBitmap(own.get()), 0);
}

TEST(CreateBitmap, RefusesWhatItDoesNotOffer) {
    BitmapDescriptor bitmap{};
    EXPECT_EQ(CreateBitmap(&bitmap, 2, 4, 4, 24, 0, nullptr, 0, nullptr, 0), kErrorInvalidParameter)
        << "memory kind";
    EXPECT_EQ(Create(&bitmap, 4, 4, 16), kErrorInvalidParameter);
    EXPECT_EQ(Create(&bitmap, 0, 4, 24), kErrorInvalidParameter);
    EXPECT_EQ(Create(&bitmap, 4, -1, 24), kErrorInvalidParameter);
    EXPECT_EQ(Create(&bitmap, 4, 4, 24, 7), kErrorInvalidParameter);
    uint8_t data[64] = {};
    EXPECT_EQ(CreateBitmap(&bitmap, 1, 4, 4, 24, 0, nullptr, 0, data, sizeof data), kErrorUnsupported);
    EXPECT_EQ(CreateBitmap(&bitmap, 1, 4, 4, 24, 0, nullptr, 4, nullptr, 0), kErrorUnsupported);
    EXPECT_EQ(bitmap.storage, nullptr);
}

TEST(CreateBitmap, LimitsAreCheckedBeforeAllocating) {
    BitmapDescriptor bitmap{};
    EXPECT_EQ(Create(&bitmap, kMaxSide + 1, 1, 1), kErrorTooLarge);
    EXPECT_EQ(Create(&bitmap, 1, kMaxSide + 1, 1), kErrorTooLarge);
    EXPECT_EQ(Create(&bitmap, kMaxSide, kMaxSide, 32), kErrorTooLarge) << "1 GiB is beyond the storage cap";
    EXPECT_EQ(Create(&bitmap, 0x7FFFFFFF, 0x7FFFFFFF, 32), kErrorTooLarge);
    EXPECT_EQ(bitmap.storage, nullptr);
}

TEST(FillBitmap, TakesAColorrefInEitherOrder) {
    Owned bgr, rgb;
    ASSERT_EQ(Create(bgr.get(), 3, 2, 24), kSuccess);
    ASSERT_EQ(Create(rgb.get(), 3, 2, 32, kColorOrderRgb), kSuccess);
    const uint32_t color = 0x00306090;  // red 0x90, green 0x60, blue 0x30
    ASSERT_EQ(FillBitmap(bgr.get(), color), kSuccess);
    ASSERT_EQ(FillBitmap(rgb.get(), color), kSuccess);
    for (int32_t y = 0; y < 2; ++y)
        for (int32_t x = 0; x < 3; ++x) {
            EXPECT_EQ(Pixel(*bgr.get(), x, y)[0], 0x30);
            EXPECT_EQ(Pixel(*bgr.get(), x, y)[2], 0x90);
            EXPECT_EQ(Pixel(*rgb.get(), x, y)[0], 0x90);
            EXPECT_EQ(Pixel(*rgb.get(), x, y)[2], 0x30);
            EXPECT_EQ(Pixel(*rgb.get(), x, y)[3], 255);
        }
}

TEST(FillBitmap, PalettePicturesTakeTheNearestEntry) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 11, 3, 1), kSuccess);
    ASSERT_EQ(FillBitmap(bitmap.get(), 0xFFFFFF), kSuccess);
    for (int32_t x = 0; x < 11; ++x) EXPECT_EQ(IndexAt(bitmap.bitmap, x, 2), 1u);
    ASSERT_EQ(FillBitmap(bitmap.get(), 0x101010), kSuccess);
    for (int32_t x = 0; x < 11; ++x) EXPECT_EQ(IndexAt(bitmap.bitmap, x, 0), 0u);
}

TEST(CopyBitmap, MakesIndependentPixels) {
    Owned source, copy;
    ASSERT_EQ(Create(source.get(), 4, 4, 8), kSuccess);
    kernel::Row(source.bitmap, 1)[2] = 99;
    source->xResolution = 300;
    ASSERT_EQ(CopyBitmap(copy.get(), source.get()), kSuccess);
    EXPECT_NE(copy->storage, source->storage);
    EXPECT_NE(copy->palette, source->palette);
    EXPECT_EQ(kernel::Row(copy.bitmap, 1)[2], 99);
    EXPECT_EQ(copy->palette[200].red, 200);
    EXPECT_EQ(copy->xResolution, 300);
    kernel::Row(source.bitmap, 1)[2] = 1;
    EXPECT_EQ(kernel::Row(copy.bitmap, 1)[2], 99);
    EXPECT_EQ(CopyBitmap(source.get(), source.get()), kErrorInvalidParameter);
}

TEST(DescriptorCopies, ShareStorageAndAreGivenBackOnce) {
    const size_t before = kernel::LiveStorageCount();
    BitmapDescriptor original{};
    ASSERT_EQ(Create(&original, 8, 8, 24), kSuccess);
    BitmapDescriptor second = original;  // a copy of the words: the same pixels
    EXPECT_EQ(second.storage, original.storage);
    Pixel(second, 3, 3)[1] = 42;
    EXPECT_EQ(Pixel(original, 3, 3)[1], 42);
    EXPECT_EQ(kernel::LiveStorageCount(), before + 1);

    EXPECT_EQ(FreeBitmap(&original), kSuccess);
    EXPECT_EQ(original.storage, nullptr) << "a freed descriptor is empty";
    EXPECT_EQ(kernel::LiveStorageCount(), before);
    // The other copy is stale now: every operation refuses it.
    EXPECT_EQ(kernel::CheckBitmap(&second), kErrorInvalidBitmap);
    EXPECT_EQ(FillBitmap(&second, 0), kErrorInvalidBitmap);
    EXPECT_EQ(SizeBitmap(&second, 2, 2, kSizeResample), kErrorInvalidBitmap);
    BitmapDescriptor third{};
    EXPECT_EQ(CopyBitmap(&third, &second), kErrorInvalidBitmap);
    EXPECT_EQ(IsGrayScaleBitmap(&second), 0);
    EXPECT_EQ(FreeBitmap(&second), kErrorInvalidBitmap) << "not given back twice";
    EXPECT_EQ(second.storage, nullptr);
    EXPECT_EQ(FreeBitmap(&second), kSuccess) << "an empty descriptor frees as nothing";
    EXPECT_EQ(FreeBitmap(nullptr), kErrorInvalidParameter);
}

TEST(DescriptorCopies, InconsistentFieldsAreRefused) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 8, 8, 24), kSuccess);
    BitmapDescriptor widened = bitmap.bitmap;
    widened.width = 100;  // rows would run past the storage
    EXPECT_EQ(kernel::CheckBitmap(&widened), kErrorInvalidBitmap);
    BitmapDescriptor deeper = bitmap.bitmap;
    deeper.bitsPerPixel = 32;
    EXPECT_EQ(kernel::CheckBitmap(&deeper), kErrorInvalidBitmap);
    BitmapDescriptor turned = bitmap.bitmap;
    turned.viewPerspective = 4;
    EXPECT_EQ(kernel::CheckBitmap(&turned), kErrorInvalidBitmap);
    BitmapDescriptor zero{};
    EXPECT_EQ(kernel::CheckBitmap(&zero), kErrorInvalidBitmap);
    EXPECT_EQ(kernel::CheckBitmap(nullptr), kErrorInvalidParameter);
}

TEST(SizeBitmap, ResamplesInPlaceKeepingTrueColour) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 4, 2, 24), kSuccess);
    for (int32_t y = 0; y < 2; ++y)
        for (int32_t x = 0; x < 4; ++x) SetBgr(bitmap.bitmap, x, y, static_cast<uint8_t>(x * 40), 10, 200);
    ASSERT_EQ(SizeBitmap(bitmap.get(), 2, 1, kSizeResample), kSuccess);
    EXPECT_EQ(bitmap->width, 2);
    EXPECT_EQ(bitmap->height, 1);
    EXPECT_EQ(bitmap->bitsPerPixel, 24);
    EXPECT_EQ(Pixel(bitmap.bitmap, 0, 0)[0], 20);
    EXPECT_EQ(Pixel(bitmap.bitmap, 1, 0)[0], 100);
    EXPECT_EQ(Pixel(bitmap.bitmap, 1, 0)[2], 200);
    EXPECT_EQ(kernel::CheckBitmap(bitmap.get()), kSuccess);
}

TEST(SizeBitmap, ZeroOrHugeSizesFailAndLeaveTheBitmap) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 4, 4, 24), kSuccess);
    void* storage = bitmap->storage;
    EXPECT_EQ(SizeBitmap(bitmap.get(), 0, 64, kSizeResample), kErrorInvalidParameter);
    EXPECT_EQ(SizeBitmap(bitmap.get(), 4, -3, kSizeResample), kErrorInvalidParameter);
    EXPECT_EQ(SizeBitmap(bitmap.get(), kMaxSide + 1, 4, kSizeResample), kErrorTooLarge);
    EXPECT_EQ(SizeBitmap(bitmap.get(), 2, 2, 1), kErrorInvalidParameter) << "flags";
    EXPECT_EQ(bitmap->storage, storage);
    EXPECT_EQ(bitmap->width, 4);
}

TEST(SizeBitmap, GreyPalettePicturesBecomeEightBitGrey) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 4, 4, 1), kSuccess);                       // black and white
    for (int32_t y = 0; y < 4; ++y) kernel::Row(bitmap.bitmap, y)[0] = 0xA0;  // pixels 0 and 2 white
    ASSERT_EQ(SizeBitmap(bitmap.get(), 2, 2, kSizeResample), kSuccess);
    EXPECT_EQ(bitmap->bitsPerPixel, 8);
    EXPECT_EQ(IsGrayScaleBitmap(bitmap.get()), 1);
    EXPECT_EQ(IndexAt(bitmap.bitmap, 0, 0), 128u);  // half white, rounded up
    EXPECT_EQ(IndexAt(bitmap.bitmap, 1, 1), 128u);
    EXPECT_EQ(bitmap->palette[128].green, 128);
}

TEST(SizeBitmap, ColourPalettePicturesBecomeTwentyFourBit) {
    RgbQuad colors[2] = {{0, 0, 255, 0}, {255, 0, 0, 0}};  // red, blue
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 2, 1, 1, kColorOrderBgr, colors), kSuccess);
    kernel::Row(bitmap.bitmap, 0)[0] = 0x40;  // red, blue
    ASSERT_EQ(SizeBitmap(bitmap.get(), 1, 1, kSizeResample), kSuccess);
    EXPECT_EQ(bitmap->bitsPerPixel, 24);
    EXPECT_EQ(Pixel(bitmap.bitmap, 0, 0)[0], 128);
    EXPECT_EQ(Pixel(bitmap.bitmap, 0, 0)[1], 0);
    EXPECT_EQ(Pixel(bitmap.bitmap, 0, 0)[2], 128);
}

TEST(SizeBitmap, FavourBlackKeepsOneBitAndItsThinLines) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 40, 40, 1), kSuccess);
    ASSERT_EQ(FillBitmap(bitmap.get(), 0xFFFFFF), kSuccess);
    for (int32_t y = 0; y < 40; ++y) kernel::Row(bitmap.bitmap, y)[2] = 0xEF;  // pixel 19 black
    ASSERT_EQ(SizeBitmap(bitmap.get(), 10, 10, kSizeResampleFavourBlack), kSuccess);
    EXPECT_EQ(bitmap->bitsPerPixel, 1);
    EXPECT_EQ(bitmap->palette[0].red, 0);
    for (int32_t y = 0; y < 10; ++y)
        for (int32_t x = 0; x < 10; ++x) EXPECT_EQ(IndexAt(bitmap.bitmap, x, y), x == 4 ? 0u : 1u);
}

TEST(SizeBitmap, FavourBlackFollowsTheDarkerEntryWhereverItIs) {
    RgbQuad inverted[2] = {{255, 255, 255, 0}, {0, 0, 0, 0}};  // index 1 is black
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 8, 2, 1, kColorOrderBgr, inverted), kSuccess);
    kernel::Row(bitmap.bitmap, 1)[0] = 0x01;  // one black pixel, bottom right
    ASSERT_EQ(SizeBitmap(bitmap.get(), 2, 1, kSizeResampleFavourBlack), kSuccess);
    EXPECT_EQ(IndexAt(bitmap.bitmap, 0, 0), 0u);
    EXPECT_EQ(IndexAt(bitmap.bitmap, 1, 0), 1u);
}

TEST(ReduceBitmapDepth, FewColoursAreKeptExactly) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 5, 3, 24), kSuccess);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 5; ++x)
            SetBgr(bitmap.bitmap, x, y, static_cast<uint8_t>(x * 50), static_cast<uint8_t>(y * 7), 3);
    ASSERT_EQ(ReduceBitmapDepth(bitmap.get(), 8), kSuccess);
    EXPECT_EQ(bitmap->bitsPerPixel, 8);
    EXPECT_EQ(bitmap->colorCount, 15);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 5; ++x) {
            const RgbQuad& c = bitmap->palette[IndexAt(bitmap.bitmap, x, y)];
            EXPECT_EQ(c.blue, x * 50);
            EXPECT_EQ(c.green, y * 7);
            EXPECT_EQ(c.red, 3);
        }
}

TEST(ReduceBitmapDepth, ManyColoursGetANearbyPalette) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 64, 64, 24), kSuccess);
    for (int32_t y = 0; y < 64; ++y)
        for (int32_t x = 0; x < 64; ++x)
            SetBgr(bitmap.bitmap, x, y, static_cast<uint8_t>(x * 4), static_cast<uint8_t>(y * 4),
                   static_cast<uint8_t>((x + y) * 2));
    Owned original;
    ASSERT_EQ(CopyBitmap(original.get(), bitmap.get()), kSuccess);
    ASSERT_EQ(ReduceBitmapDepth(bitmap.get(), 8), kSuccess);
    EXPECT_EQ(bitmap->colorCount, 256);
    int worst = 0;
    for (int32_t y = 0; y < 64; ++y)
        for (int32_t x = 0; x < 64; ++x) {
            const RgbQuad& c = bitmap->palette[IndexAt(bitmap.bitmap, x, y)];
            const uint8_t* p = Pixel(original.bitmap, x, y);
            worst =
                std::max({worst, std::abs(c.blue - p[0]), std::abs(c.green - p[1]), std::abs(c.red - p[2])});
        }
    EXPECT_LE(worst, 24) << "4096 colours into 256 entries";
}

TEST(ReduceBitmapDepth, GreyPicturesGetAGreyRamp) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 300, 1, 24), kSuccess);
    for (int32_t x = 0; x < 300; ++x) {
        const uint8_t level = static_cast<uint8_t>(x % 256);
        SetBgr(bitmap.bitmap, x, 0, level, level, level);
    }
    ASSERT_EQ(ReduceBitmapDepth(bitmap.get(), 4), kSuccess);
    EXPECT_EQ(bitmap->colorCount, 16);
    EXPECT_EQ(IsGrayScaleBitmap(bitmap.get()), 1);
    EXPECT_EQ(IndexAt(bitmap.bitmap, 255, 0), 15u);
    EXPECT_EQ(IndexAt(bitmap.bitmap, 0, 0), 0u);
    EXPECT_EQ(IndexAt(bitmap.bitmap, 136, 0), 8u);  // 136 * 15 / 255 = 8
}

TEST(ReduceBitmapDepth, WiderDepthsKeepTheIndicesColours) {
    RgbQuad colors[2] = {{10, 20, 30, 0}, {40, 50, 60, 0}};
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 3, 1, 1, kColorOrderBgr, colors), kSuccess);
    kernel::Row(bitmap.bitmap, 0)[0] = 0x40;
    ASSERT_EQ(ReduceBitmapDepth(bitmap.get(), 8), kSuccess);
    EXPECT_EQ(IndexAt(bitmap.bitmap, 1, 0), 1u);
    EXPECT_EQ(bitmap->palette[1].red, 60);
    ASSERT_EQ(ReduceBitmapDepth(bitmap.get(), 24), kSuccess);
    EXPECT_EQ(Pixel(bitmap.bitmap, 1, 0)[0], 40);
    EXPECT_EQ(Pixel(bitmap.bitmap, 2, 0)[2], 30);
    EXPECT_EQ(ReduceBitmapDepth(bitmap.get(), 16), kErrorInvalidParameter);
}

TEST(IsGrayScaleBitmap, LooksAtEveryPixelOfTrueColour) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 7, 7, 24), kSuccess);
    ASSERT_EQ(FillBitmap(bitmap.get(), 0x808080), kSuccess);
    EXPECT_EQ(IsGrayScaleBitmap(bitmap.get()), 1);
    SetBgr(bitmap.bitmap, 6, 6, 128, 128, 129);
    EXPECT_EQ(IsGrayScaleBitmap(bitmap.get()), 0);
    EXPECT_EQ(IsGrayScaleBitmap(nullptr), 0);
}

TEST(ColorMatchTables, ReduceToTheGivenColours) {
    const RgbQuad colors[4] = {{0, 0, 0, 0}, {255, 255, 255, 0}, {0, 0, 255, 0}, {0, 200, 0, 0}};
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 4, 1, 24), kSuccess);
    SetBgr(bitmap.bitmap, 0, 0, 250, 250, 250);  // nearly white
    SetBgr(bitmap.bitmap, 1, 0, 0, 0, 200);      // dark red
    SetBgr(bitmap.bitmap, 2, 0, 0, 200, 0);      // exactly the green entry
    SetBgr(bitmap.bitmap, 3, 0, 20, 10, 0);      // nearly black
    ColorMatchTable* table = CreateColorMatchTable(colors, 4);
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(SetColorMatchTable(table), kSuccess);
    ASSERT_EQ(ReduceBitmapColors(bitmap.get(), bitmap.get(), 8, kColorReductionUserPalette, colors, nullptr,
                                 4, nullptr, nullptr),
              kSuccess);
    EXPECT_EQ(bitmap->bitsPerPixel, 8);
    EXPECT_EQ(bitmap->colorCount, 4);
    EXPECT_EQ(IndexAt(bitmap.bitmap, 0, 0), 1u);
    EXPECT_EQ(IndexAt(bitmap.bitmap, 1, 0), 2u);
    EXPECT_EQ(IndexAt(bitmap.bitmap, 2, 0), 3u);
    EXPECT_EQ(IndexAt(bitmap.bitmap, 3, 0), 0u);
    EXPECT_EQ(FreeColorMatchTable(table), kSuccess);
    EXPECT_EQ(SetColorMatchTable(table), kErrorInvalidParameter) << "a freed table is not taken";
    EXPECT_EQ(FreeColorMatchTable(table), kErrorInvalidParameter);
    EXPECT_EQ(SetColorMatchTable(nullptr), kSuccess);
}

TEST(ColorMatchTables, ASeparateTargetLeavesTheSource) {
    const RgbQuad colors[2] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
    Owned source, target;
    ASSERT_EQ(Create(source.get(), 2, 2, 32), kSuccess);
    ASSERT_EQ(FillBitmap(source.get(), 0xF0F0F0), kSuccess);
    ASSERT_EQ(ReduceBitmapColors(source.get(), target.get(), 1, kColorReductionUserPalette, colors, nullptr,
                                 2, nullptr, nullptr),
              kSuccess);
    EXPECT_EQ(source->bitsPerPixel, 32);
    EXPECT_EQ(target->bitsPerPixel, 1);
    EXPECT_EQ(IndexAt(target.bitmap, 1, 1), 1u);
}

TEST(ColorMatchTables, RefuseWhatTheyDoNotOffer) {
    const RgbQuad colors[2] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 2, 2, 24), kSuccess);
    EXPECT_EQ(ReduceBitmapColors(bitmap.get(), bitmap.get(), 8, 0x1234, colors, nullptr, 2, nullptr, nullptr),
              kErrorUnsupported);
    EXPECT_EQ(ReduceBitmapColors(bitmap.get(), bitmap.get(), 1, kColorReductionUserPalette, colors, nullptr,
                                 3, nullptr, nullptr),
              kErrorInvalidParameter)
        << "three colours do not fit one bit";
    EXPECT_EQ(ReduceBitmapColors(bitmap.get(), bitmap.get(), 8, kColorReductionUserPalette, nullptr, nullptr,
                                 2, nullptr, nullptr),
              kErrorInvalidParameter);
    EXPECT_EQ(CreateColorMatchTable(colors, 0), nullptr);
    EXPECT_EQ(CreateColorMatchTable(colors, 257), nullptr);
    EXPECT_EQ(CreateColorMatchTable(nullptr, 2), nullptr);
    EXPECT_EQ(bitmap->bitsPerPixel, 24);
}

TEST(Bmp24, IsAWholeBottomUpFile) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 3, 2, 8), kSuccess);
    kernel::Row(bitmap.bitmap, 0)[0] = 255;  // top left white
    bitmap->xResolution = 96;
    const uint64_t size = kernel::Bmp24FileSize(bitmap.bitmap);
    ASSERT_EQ(size, 54u + 12u * 2u);
    std::vector<uint8_t> file(static_cast<size_t>(size));
    ASSERT_EQ(kernel::EncodeBmp24(bitmap.bitmap, file.data(), file.size()), kSuccess);
    EXPECT_EQ(file[0], 'B');
    EXPECT_EQ(file[1], 'M');
    EXPECT_EQ(file[2], 78);
    EXPECT_EQ(file[10], 54);
    EXPECT_EQ(file[18], 3);
    EXPECT_EQ(file[22], 2);
    EXPECT_EQ(file[28], 24);
    EXPECT_EQ(file[38] | file[39] << 8, 3779) << "96 dots per inch in pixels per metre";
    // The top row is stored last.
    EXPECT_EQ(file[54 + 12], 255);
    EXPECT_EQ(file[54 + 12 + 2], 255);
    EXPECT_EQ(file[54], 0);
    EXPECT_EQ(kernel::EncodeBmp24(bitmap.bitmap, file.data(), file.size() - 1), kErrorInvalidParameter);
}

TEST(CompositeOnWhite, BlendsByAlpha) {
    Owned bitmap;
    ASSERT_EQ(Create(bitmap.get(), 2, 1, 32), kSuccess);
    uint8_t* p = Pixel(bitmap.bitmap, 0, 0);
    p[0] = 0;
    p[1] = 100;
    p[2] = 200;
    p[3] = 0;  // fully transparent
    uint8_t* q = Pixel(bitmap.bitmap, 1, 0);
    q[0] = 0;
    q[3] = 128;  // half
    kernel::CompositeOnWhite(bitmap.get());
    EXPECT_EQ(p[0], 255);
    EXPECT_EQ(p[2], 255);
    EXPECT_EQ(p[3], 255);
    EXPECT_EQ(q[0], 127);
}
