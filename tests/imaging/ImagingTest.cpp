// The imaging interface on Windows: decoding, information, saving, drawing
// and painting, with pictures the tests make themselves.
#include "thumbnails/Imaging.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "support/PictureFactory.h"
#include "support/TempDir.h"

using namespace imaging;
using picturefactory::Bgra;
using picturefactory::Bytes;

namespace {

// Every test must give back all the storage it was handed.
class Imaging : public ::testing::Test {
protected:
    void SetUp() override { live_ = kernel::LiveStorageCount(); }
    void TearDown() override { EXPECT_EQ(kernel::LiveStorageCount(), live_) << "storage left behind"; }

private:
    size_t live_ = 0;
};

struct Owned {
    BitmapDescriptor bitmap{};
    ~Owned() {
        ReleaseBitmap(&bitmap);
        FreeBitmap(&bitmap);
    }
    BitmapDescriptor* get() { return &bitmap; }
    BitmapDescriptor* operator->() { return &bitmap; }
};

int Load(const Bytes& bytes, BitmapDescriptor* bitmap, int32_t bits = 24, int32_t order = kColorOrderBgr) {
    return LoadBitmapMemory(bytes.data(), bitmap, bits, order, static_cast<uint32_t>(bytes.size()), nullptr);
}

int Query(const Bytes& bytes, FileInfo* info) {
    std::memset(info, 0, sizeof *info);
    return QueryMemoryInfo(bytes.data(), info, static_cast<uint32_t>(bytes.size()), 0, nullptr);
}

Bgra PixelOf(const BitmapDescriptor& bitmap, int32_t x, int32_t y) {
    const uint8_t* row = kernel::Row(bitmap, y);
    switch (bitmap.bitsPerPixel) {
        case 24:
        case 32: {
            const uint8_t* p = row + static_cast<size_t>(x) * (bitmap.bitsPerPixel / 8);
            const bool rgb = bitmap.colorOrder == kColorOrderRgb;
            return Bgra{rgb ? p[2] : p[0], p[1], rgb ? p[0] : p[2],
                        static_cast<uint8_t>(bitmap.bitsPerPixel == 32 ? p[3] : 255)};
        }
        default: {
            uint32_t index = row[x];
            if (bitmap.bitsPerPixel == 1) index = (row[x / 8] >> (7 - x % 8)) & 1;
            if (bitmap.bitsPerPixel == 4) index = x % 2 == 0 ? row[x / 2] >> 4 : row[x / 2] & 15;
            const RgbQuad& c = bitmap.palette[index];
            return Bgra{c.blue, c.green, c.red, 255};
        }
    }
}

// Largest channel difference between the bitmap and the pattern.
int Difference(const BitmapDescriptor& bitmap, const picturefactory::Pattern& pattern) {
    int worst = 0;
    for (int32_t y = 0; y < bitmap.height; ++y)
        for (int32_t x = 0; x < bitmap.width; ++x) {
            const Bgra a = PixelOf(bitmap, x, y);
            const Bgra b = pattern(x, y);
            worst = std::max({worst, std::abs(a.b - b.b), std::abs(a.g - b.g), std::abs(a.r - b.r)});
        }
    return worst;
}

Bgra Grey(int32_t x, int32_t y) {
    const uint8_t level = static_cast<uint8_t>(x * 23 + y * 41);
    return Bgra{level, level, level, 255};
}

// A palette of 8 distinct colours for indexed pictures.
const std::vector<WICColor> kEightColours = {0xFF000000, 0xFFFFFFFF, 0xFFFF0000, 0xFF00FF00,
                                             0xFF0000FF, 0xFFFFFF00, 0xFF808080, 0xFF204060};

Bgra FromWic(WICColor c) {
    return Bgra{static_cast<uint8_t>(c), static_cast<uint8_t>(c >> 8), static_cast<uint8_t>(c >> 16), 255};
}

uint32_t EightIndex(int32_t x, int32_t y) {
    return static_cast<uint32_t>(x * 3 + y) % 8;
}

Bytes EncodeIndexed(const GUID& container, uint32_t width, uint32_t height, uint32_t bits,
                    const std::vector<WICColor>& palette,
                    const std::function<uint32_t(int32_t, int32_t)>& index, std::string* error = nullptr) {
    const WICPixelFormatGUID format = bits == 1   ? GUID_WICPixelFormat1bppIndexed
                                      : bits == 2 ? GUID_WICPixelFormat2bppIndexed
                                      : bits == 4 ? GUID_WICPixelFormat4bppIndexed
                                                  : GUID_WICPixelFormat8bppIndexed;
    picturefactory::Encoding encoding = picturefactory::Encode(
        container, format, width, height, picturefactory::Indices(width, height, bits, index),
        picturefactory::Stride(width, bits), palette);
    if (error != nullptr) *error = encoding.error;
    return encoding.bytes;
}

// Without sharp edges, which lossy coding would blur.
Bgra SmoothGrey(int32_t x, int32_t y) {
    const uint8_t level = static_cast<uint8_t>(30 + x * 15 + y * 9);
    return Bgra{level, level, level, 255};
}

Bytes EncodeGrey8(const GUID& container, uint32_t width, uint32_t height) {
    return picturefactory::Encode(
               container, GUID_WICPixelFormat8bppGray, width, height,
               picturefactory::Indices(width, height, 8,
                                       [](int32_t x, int32_t y) { return SmoothGrey(x, y).b; }),
               picturefactory::Stride(width, 8))
        .bytes;
}

struct Container {
    const char* name;
    const GUID* guid;
    int32_t format;
    int tolerance;  // lossy formats
};

const Container kLossless[] = {
    {"BMP", &GUID_ContainerFormatBmp, kFormatBmp, 0},
    {"PNG", &GUID_ContainerFormatPng, kFormatPng, 0},
    {"TIFF", &GUID_ContainerFormatTiff, kFormatTiff, 0},
};

}  // namespace

// ---- Decoding and information -------------------------------------------------

TEST_F(Imaging, TrueColourRoundTripsAtOddSizes) {
    const std::pair<uint32_t, uint32_t> sizes[] = {{1, 1}, {1, 9}, {9, 1}, {13, 7}, {64, 3}};
    for (const Container& container : kLossless) {
        for (const auto& [width, height] : sizes) {
            SCOPED_TRACE(std::string(container.name) + " " + std::to_string(width) + "x" +
                         std::to_string(height));
            const Bytes file =
                picturefactory::EncodeBgr24(*container.guid, width, height, picturefactory::Colourful);
            ASSERT_FALSE(file.empty());
            FileInfo info;
            ASSERT_EQ(Query(file, &info), kSuccess);
            EXPECT_EQ(info.structSize, sizeof(FileInfo));
            EXPECT_EQ(info.format, container.format);
            EXPECT_EQ(info.width, static_cast<int32_t>(width));
            EXPECT_EQ(info.height, static_cast<int32_t>(height));
            EXPECT_EQ(info.fileBitsPerPixel, 24);
            EXPECT_EQ(info.fileOrder, kColorOrderBgr);
            EXPECT_EQ(info.fileSize, file.size());
            EXPECT_STREQ(info.formatName, container.name);

            Owned bitmap;
            ASSERT_EQ(Load(file, bitmap.get(), info.fileBitsPerPixel, info.fileOrder), kSuccess);
            EXPECT_EQ(bitmap->width, static_cast<int32_t>(width));
            EXPECT_EQ(bitmap->height, static_cast<int32_t>(height));
            EXPECT_EQ(bitmap->bitsPerPixel, 24);
            EXPECT_EQ(kernel::CheckBitmap(bitmap.get()), kSuccess);
            EXPECT_EQ(Difference(bitmap.bitmap, picturefactory::Colourful), 0);
        }
    }
}

TEST_F(Imaging, JpegRoundTripsWithinItsLoss) {
    const Bytes file =
        picturefactory::EncodeBgr24(GUID_ContainerFormatJpeg, 40, 24, [](int32_t x, int32_t y) {
            return Bgra{static_cast<uint8_t>(x * 6), static_cast<uint8_t>(y * 10), 128, 255};
        });
    FileInfo info;
    ASSERT_EQ(Query(file, &info), kSuccess);
    EXPECT_EQ(info.format, kFormatJpeg);
    EXPECT_EQ(info.fileBitsPerPixel, 24);
    Owned bitmap;
    ASSERT_EQ(Load(file, bitmap.get(), info.fileBitsPerPixel, info.fileOrder), kSuccess);
    EXPECT_LE(Difference(bitmap.bitmap,
                         [](int32_t x, int32_t y) {
                             return Bgra{static_cast<uint8_t>(x * 6), static_cast<uint8_t>(y * 10), 128, 255};
                         }),
              20);
}

TEST_F(Imaging, GreyPicturesLoadAsEightBitGrey) {
    for (const GUID* container :
         {&GUID_ContainerFormatPng, &GUID_ContainerFormatTiff, &GUID_ContainerFormatJpeg}) {
        const Bytes file = EncodeGrey8(*container, 11, 5);
        ASSERT_FALSE(file.empty());
        FileInfo info;
        ASSERT_EQ(Query(file, &info), kSuccess);
        EXPECT_EQ(info.fileBitsPerPixel, 8);
        EXPECT_EQ(info.isGrayScale, 1);
        Owned bitmap;
        ASSERT_EQ(Load(file, bitmap.get(), 0), kSuccess) << "the file's own depth";
        EXPECT_EQ(bitmap->bitsPerPixel, 8);
        EXPECT_EQ(IsGrayScaleBitmap(bitmap.get()), 1);
        const int tolerance = container == &GUID_ContainerFormatJpeg ? 12 : 0;
        EXPECT_LE(Difference(bitmap.bitmap, SmoothGrey), tolerance);
    }
}

TEST_F(Imaging, IndexedPicturesKeepTheirPaletteAtTheirOwnDepth) {
    struct Case {
        const GUID* container;
        uint32_t bits;
        int32_t loadBits;
    };
    const Case cases[] = {
        {&GUID_ContainerFormatPng, 8, 8},  {&GUID_ContainerFormatPng, 4, 4},
        {&GUID_ContainerFormatPng, 2, 4},  {&GUID_ContainerFormatGif, 8, 8},
        {&GUID_ContainerFormatBmp, 8, 8},  {&GUID_ContainerFormatBmp, 4, 4},
        {&GUID_ContainerFormatTiff, 8, 8}, {&GUID_ContainerFormatTiff, 4, 4},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.bits) + " bits, container " + std::to_string(c.container->Data1));
        const uint32_t colours = std::min<uint32_t>(1u << c.bits, 8);
        const std::vector<WICColor> palette(kEightColours.begin(), kEightColours.begin() + colours);
        auto index = [&](int32_t x, int32_t y) { return EightIndex(x, y) % colours; };
        std::string error;
        const Bytes file = EncodeIndexed(*c.container, 13, 6, c.bits, palette, index, &error);
        ASSERT_FALSE(file.empty()) << error;
        FileInfo info;
        ASSERT_EQ(Query(file, &info), kSuccess);
        EXPECT_EQ(info.fileBitsPerPixel, c.loadBits);
        EXPECT_EQ(info.storedBitsPerPixel, static_cast<int32_t>(c.bits));
        EXPECT_GE(info.colorCount, static_cast<int32_t>(colours));
        Owned own;
        ASSERT_EQ(Load(file, own.get(), info.fileBitsPerPixel, info.fileOrder), kSuccess);
        EXPECT_EQ(own->bitsPerPixel, c.loadBits);
        auto expected = [&](int32_t x, int32_t y) { return FromWic(palette[index(x, y)]); };
        EXPECT_EQ(Difference(own.bitmap, expected), 0);
        Owned wide;
        ASSERT_EQ(Load(file, wide.get(), 24), kSuccess);
        EXPECT_EQ(Difference(wide.bitmap, expected), 0);
    }
}

TEST_F(Imaging, OneBitPicturesLoadAtOneBit) {
    const std::vector<WICColor> blackWhite = {0xFF000000, 0xFFFFFFFF};
    auto index = [](int32_t x, int32_t y) { return static_cast<uint32_t>((x / 2 + y) % 2); };
    for (const GUID* container :
         {&GUID_ContainerFormatPng, &GUID_ContainerFormatBmp, &GUID_ContainerFormatTiff}) {
        std::string error;
        const Bytes file = EncodeIndexed(*container, 17, 3, 1, blackWhite, index, &error);
        ASSERT_FALSE(file.empty()) << error;
        FileInfo info;
        ASSERT_EQ(Query(file, &info), kSuccess);
        EXPECT_EQ(info.fileBitsPerPixel, 1);
        EXPECT_EQ(info.isGrayScale, 1);
        Owned bitmap;
        ASSERT_EQ(Load(file, bitmap.get(), 1), kSuccess);
        EXPECT_EQ(bitmap->bitsPerPixel, 1);
        EXPECT_EQ(IsGrayScaleBitmap(bitmap.get()), 1);
        EXPECT_EQ(
            Difference(bitmap.bitmap, [&](int32_t x, int32_t y) { return FromWic(blackWhite[index(x, y)]); }),
            0);
        // The browser's road for such a picture.
        ASSERT_EQ(SizeBitmap(bitmap.get(), 9, 2, kSizeResampleFavourBlack), kSuccess);
        EXPECT_EQ(bitmap->bitsPerPixel, 1);
    }
}

TEST_F(Imaging, LoadsAtEveryDepthAndOrderAskedFor) {
    const Bytes file = picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 21, 9, picturefactory::Colourful);
    for (int32_t bits : {1, 4, 8, 24, 32}) {
        for (int32_t order : {kColorOrderRgb, kColorOrderBgr}) {
            SCOPED_TRACE(std::to_string(bits) + " bits, order " + std::to_string(order));
            Owned bitmap;
            ASSERT_EQ(Load(file, bitmap.get(), bits, order), kSuccess);
            EXPECT_EQ(bitmap->bitsPerPixel, bits);
            EXPECT_EQ(kernel::CheckBitmap(bitmap.get()), kSuccess);
            if (bits >= 24) {
                EXPECT_EQ(bitmap->colorOrder, order);
                EXPECT_EQ(Difference(bitmap.bitmap, picturefactory::Colourful), 0);
            } else {
                EXPECT_GE(bitmap->colorCount, 2);
                EXPECT_LE(bitmap->colorCount, 1 << bits);
            }
        }
    }
    // The bytes themselves are swapped between the orders.
    Owned rgb, bgr;
    ASSERT_EQ(Load(file, rgb.get(), 24, kColorOrderRgb), kSuccess);
    ASSERT_EQ(Load(file, bgr.get(), 24, kColorOrderBgr), kSuccess);
    EXPECT_EQ(kernel::Row(rgb.bitmap, 2)[3 * 5], kernel::Row(bgr.bitmap, 2)[3 * 5 + 2]);
    Owned eight;
    ASSERT_EQ(Load(file, eight.get(), 8), kSuccess);
    EXPECT_EQ(eight->colorCount, 189) << "21 x 9 distinct colours fit a palette exactly";
    EXPECT_EQ(Difference(eight.bitmap, picturefactory::Colourful), 0);
}

TEST_F(Imaging, TransparencyIsLaidOnWhiteUnlessThirtyTwoBitsAreAsked) {
    auto pattern = [](int32_t x, int32_t) {
        return x == 0 ? Bgra{10, 20, 30, 0} : Bgra{10, 20, 30, 255};  // the first column transparent
    };
    const picturefactory::Encoding png =
        picturefactory::Encode(GUID_ContainerFormatPng, GUID_WICPixelFormat32bppBGRA, 4, 2,
                               picturefactory::Bgra32(4, 2, pattern), 16);
    ASSERT_FALSE(png.bytes.empty()) << png.error;
    FileInfo info;
    ASSERT_EQ(Query(png.bytes, &info), kSuccess);
    EXPECT_EQ(info.hasAlpha, 1);
    EXPECT_EQ(info.fileBitsPerPixel, 32);
    Owned opaque;
    ASSERT_EQ(Load(png.bytes, opaque.get(), 24), kSuccess);
    EXPECT_EQ(PixelOf(opaque.bitmap, 0, 1).r, 255);
    EXPECT_EQ(PixelOf(opaque.bitmap, 0, 1).b, 255);
    EXPECT_EQ(PixelOf(opaque.bitmap, 1, 1).r, 30);
    Owned alpha;
    ASSERT_EQ(Load(png.bytes, alpha.get(), 32), kSuccess);
    EXPECT_EQ(PixelOf(alpha.bitmap, 0, 0).a, 0);
    EXPECT_EQ(PixelOf(alpha.bitmap, 3, 0).a, 255);
    EXPECT_EQ(PixelOf(alpha.bitmap, 3, 0).g, 20);
}

TEST_F(Imaging, IconsLoadTheirLargestImage) {
    const Bytes png = picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 48, 48, picturefactory::Colourful);
    const Bytes icon = picturefactory::IconFile({
        picturefactory::DibIconImage(16, 16, Grey),
        picturefactory::IconImage{48, 48, png},
        picturefactory::DibIconImage(32, 32, Grey),
    });
    FileInfo info;
    ASSERT_EQ(Query(icon, &info), kSuccess);
    EXPECT_EQ(info.format, kFormatIcon);
    EXPECT_EQ(info.width, 48);
    EXPECT_EQ(info.pageCount, 3);
    EXPECT_EQ(info.pageNumber, 1);
    Owned bitmap;
    ASSERT_EQ(Load(icon, bitmap.get(), 24), kSuccess);
    EXPECT_EQ(bitmap->width, 48);
    EXPECT_EQ(Difference(bitmap.bitmap, picturefactory::Colourful), 0);

    const Bytes dibOnly = picturefactory::IconFile({picturefactory::DibIconImage(32, 32, Grey)});
    Owned dib;
    ASSERT_EQ(Load(dibOnly, dib.get(), 24), kSuccess);
    EXPECT_EQ(dib->width, 32);
    EXPECT_EQ(dib->height, 32);
    EXPECT_EQ(Difference(dib.bitmap, Grey), 0);
}

TEST_F(Imaging, EnhancedMetafilesArePlayedOntoWhite) {
    const Bytes emf = picturefactory::BlackLeftHalfEmf(5000, 2500);  // 50 x 25 mm
    ASSERT_FALSE(emf.empty());
    FileInfo info;
    ASSERT_EQ(Query(emf, &info), kSuccess);
    EXPECT_EQ(info.format, kFormatEmf);
    EXPECT_EQ(info.fileBitsPerPixel, 24);
    EXPECT_GT(info.width, 100);
    EXPECT_NEAR(static_cast<double>(info.width) / info.height, 2.0, 0.1);
    Owned bitmap;
    ASSERT_EQ(Load(emf, bitmap.get(), info.fileBitsPerPixel, info.fileOrder), kSuccess);
    EXPECT_EQ(bitmap->width, info.width);
    EXPECT_EQ(bitmap->height, info.height);
    const Bgra left = PixelOf(bitmap.bitmap, bitmap->width / 4, bitmap->height / 2);
    const Bgra right = PixelOf(bitmap.bitmap, bitmap->width * 3 / 4, bitmap->height / 2);
    EXPECT_EQ(left.r + left.g + left.b, 0);
    EXPECT_EQ(right.r + right.g + right.b, 3 * 255);
}

TEST_F(Imaging, WindowsMetafilesArePlayedOntoWhite) {
    for (bool placeable : {true, false}) {
        SCOPED_TRACE(placeable ? "placeable" : "plain");
        const Bytes wmf = picturefactory::BlackLeftHalfWmf(1440, 720, placeable);  // 1 x 0.5 inch
        ASSERT_FALSE(wmf.empty());
        FileInfo info;
        ASSERT_EQ(Query(wmf, &info), kSuccess);
        EXPECT_EQ(info.format, kFormatWmf);
        Owned bitmap;
        ASSERT_EQ(Load(wmf, bitmap.get(), 24), kSuccess);
        if (placeable) {
            // One inch at the screen's resolution.
            EXPECT_NEAR(bitmap->width, info.xResolution, 2);
            EXPECT_NEAR(bitmap->height, info.yResolution / 2, 2);
        }
        const Bgra left = PixelOf(bitmap.bitmap, bitmap->width / 4, bitmap->height / 2);
        const Bgra right = PixelOf(bitmap.bitmap, bitmap->width * 3 / 4, bitmap->height / 2);
        EXPECT_EQ(left.r + left.g + left.b, 0);
        EXPECT_EQ(right.r + right.g + right.b, 3 * 255);
    }
}

TEST_F(Imaging, MetafilesOfManyRecordKindsKeepTheirDrawing) {
    for (const Bytes& metafile : {picturefactory::SamplerEmf(), picturefactory::SamplerWmf()}) {
        SCOPED_TRACE(metafile.size());
        ASSERT_FALSE(metafile.empty());
        Owned bitmap;
        ASSERT_EQ(Load(metafile, bitmap.get(), 24), kSuccess);
        int red = 0, green = 0, blue = 0;
        for (int32_t y = 0; y < bitmap->height; ++y)
            for (int32_t x = 0; x < bitmap->width; ++x) {
                const Bgra c = PixelOf(bitmap.bitmap, x, y);
                red += c.r > 150 && c.g < 80 && c.b < 80;
                green += c.g > 60 && c.r < 40 && c.b < 40;
                blue += c.b > 200 && c.r < 60 && c.g < 60;
            }
        EXPECT_GT(red, 20) << "the brush filled the shapes";
        EXPECT_GT(green, 5) << "the dashed pen drew outlines";
        EXPECT_GT(blue, 0) << "the bitmap was drawn";
    }
}

TEST_F(Imaging, NonPicturesAreUnknownFormats) {
    const std::string text = "GIF is only mentioned here, this is text";
    const Bytes bytes(text.begin(), text.end());
    FileInfo info;
    EXPECT_EQ(Query(bytes, &info), kErrorUnknownFormat);
    Owned bitmap;
    EXPECT_EQ(Load(bytes, bitmap.get()), kErrorUnknownFormat);
    EXPECT_EQ(bitmap->storage, nullptr);
    const uint8_t nothing = 0;
    EXPECT_EQ(QueryMemoryInfo(&nothing, &info, 0, 0, nullptr), kErrorUnknownFormat);
}

TEST_F(Imaging, BadArgumentsAreRefused) {
    const Bytes file = picturefactory::EncodeBgr24(GUID_ContainerFormatBmp, 4, 4, picturefactory::Colourful);
    Owned bitmap;
    FileInfo info;
    const uint32_t size = static_cast<uint32_t>(file.size());
    EXPECT_EQ(LoadBitmapMemory(nullptr, bitmap.get(), 24, 1, size, nullptr), kErrorInvalidParameter);
    EXPECT_EQ(LoadBitmapMemory(file.data(), nullptr, 24, 1, size, nullptr), kErrorInvalidParameter);
    EXPECT_EQ(LoadBitmapMemory(file.data(), bitmap.get(), 16, 1, size, nullptr), kErrorInvalidParameter);
    EXPECT_EQ(LoadBitmapMemory(file.data(), bitmap.get(), 24, 2, size, nullptr), kErrorInvalidParameter);
    EXPECT_EQ(LoadBitmapMemory(file.data(), bitmap.get(), 24, 1, size, &info), kErrorInvalidParameter);
    EXPECT_EQ(QueryMemoryInfo(file.data(), nullptr, size, 0, nullptr), kErrorInvalidParameter);
    EXPECT_EQ(QueryMemoryInfo(file.data(), &info, size, 1, nullptr), kErrorInvalidParameter);
    EXPECT_EQ(QueryFileInfo(nullptr, &info, 0, nullptr), kErrorInvalidParameter);
    EXPECT_EQ(bitmap->storage, nullptr);
}

TEST_F(Imaging, OversizeHeadersAreRefusedBeforeDecoding) {
    Bytes bmp = picturefactory::EncodeBgr24(GUID_ContainerFormatBmp, 4, 4, picturefactory::Colourful);
    const int32_t huge = 20000;
    std::memcpy(bmp.data() + 18, &huge, 4);
    std::memcpy(bmp.data() + 22, &huge, 4);
    FileInfo info;
    EXPECT_EQ(Query(bmp, &info), kErrorTooLarge);
    Owned bitmap;
    EXPECT_EQ(Load(bmp, bitmap.get()), kErrorTooLarge);

    Bytes png = picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 4, 4, picturefactory::Colourful);
    png[16] = 0x00;
    png[17] = 0x01;  // width 65540 and more
    EXPECT_EQ(Load(png, bitmap.get()), kErrorTooLarge);

    Bytes jpeg = picturefactory::EncodeBgr24(GUID_ContainerFormatJpeg, 8, 8, picturefactory::Colourful);
    for (size_t i = 2; i + 8 < jpeg.size(); ++i) {
        if (jpeg[i] == 0xFF && jpeg[i + 1] == 0xC0) {
            jpeg[i + 5] = 0xFF;  // height 65288 and more
            jpeg[i + 7] = 0xFF;
            break;
        }
    }
    EXPECT_EQ(Load(jpeg, bitmap.get()), kErrorTooLarge);
    EXPECT_EQ(bitmap->storage, nullptr);
}

TEST_F(Imaging, TruncatedPicturesFailCleanly) {
    std::vector<Bytes> files = {
        picturefactory::EncodeBgr24(GUID_ContainerFormatBmp, 16, 16, picturefactory::Colourful),
        picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 16, 16, picturefactory::Colourful),
        picturefactory::EncodeBgr24(GUID_ContainerFormatJpeg, 16, 16, picturefactory::Colourful),
        picturefactory::EncodeBgr24(GUID_ContainerFormatTiff, 16, 16, picturefactory::Colourful),
        EncodeIndexed(GUID_ContainerFormatGif, 16, 16, 8, kEightColours, EightIndex),
        picturefactory::IconFile({picturefactory::DibIconImage(16, 16, Grey)}),
        picturefactory::BlackLeftHalfEmf(2000, 1000),
        picturefactory::BlackLeftHalfWmf(400, 200, true),
    };
    for (const Bytes& file : files) {
        ASSERT_FALSE(file.empty());
        Owned whole;
        ASSERT_EQ(Load(file, whole.get()), kSuccess);
        // Short enough that the picture cannot be whole.
        for (size_t keep : {size_t{0}, size_t{1}, size_t{8}, size_t{20}, file.size() / 3}) {
            const Bytes part(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(keep));
            FileInfo info;
            Owned bitmap;
            const uint8_t* data = part.empty() ? file.data() : part.data();
            EXPECT_NE(LoadBitmapMemory(data, bitmap.get(), 24, 1, static_cast<uint32_t>(keep), nullptr),
                      kSuccess)
                << "format " << static_cast<int>(file[0]) << " kept " << keep;
            EXPECT_EQ(bitmap->storage, nullptr);
            QueryMemoryInfo(data, &info, static_cast<uint32_t>(keep), 0, nullptr);
        }
    }
}

// ---- Files ----------------------------------------------------------------------

TEST_F(Imaging, FilesAreRecognisedByContentNotByName) {
    testsupport::TempDir dir;
    const Bytes png = picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 6, 5, picturefactory::Colourful);
    const std::string misnamed = dir.Write("really-a-png.jpg", png);
    FileInfo info{};
    ASSERT_EQ(QueryFileInfo(misnamed.c_str(), &info, 0, nullptr), kSuccess);
    EXPECT_EQ(info.format, kFormatPng);
    Owned bitmap;
    ASSERT_EQ(LoadBitmapFile(misnamed.c_str(), bitmap.get(), 24, kColorOrderBgr, nullptr), kSuccess);
    EXPECT_EQ(Difference(bitmap.bitmap, picturefactory::Colourful), 0);

    const std::string text = dir.Write("notes.bmp", Bytes{'h', 'e', 'l', 'l', 'o'});
    EXPECT_EQ(QueryFileInfo(text.c_str(), &info, 0, nullptr), kErrorUnknownFormat);
    const std::string empty = dir.Write("empty.png", Bytes{});
    EXPECT_EQ(QueryFileInfo(empty.c_str(), &info, 0, nullptr), kErrorUnknownFormat);
    const std::string missing = dir.File("missing.png");
    EXPECT_EQ(QueryFileInfo(missing.c_str(), &info, 0, nullptr), kErrorFileRead);
    EXPECT_EQ(LoadBitmapFile(missing.c_str(), bitmap.get(), 24, 1, nullptr), kErrorFileRead);
    EXPECT_EQ(LoadBitmapFile(dir.Path().string().c_str(), bitmap.get(), 24, 1, nullptr), kErrorFileRead)
        << "a directory";
}

// ---- Saving -----------------------------------------------------------------------

TEST_F(Imaging, SavesAWholeBmpFileInMovableMemory) {
    const Bytes png = picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 7, 3, picturefactory::Colourful);
    Owned bitmap;
    ASSERT_EQ(Load(png, bitmap.get(), 24), kSuccess);
    HGLOBAL memory = nullptr;
    uint32_t size = 0;
    ASSERT_EQ(SaveBitmapMemory(&memory, bitmap.get(), kFormatBmp, 24, 0, &size, nullptr), kSuccess);
    ASSERT_NE(memory, nullptr);
    framework::win32::UniqueGlobal owned(memory);
    EXPECT_EQ(size, 54u + 24u * 3u);
    EXPECT_GE(::GlobalSize(memory), size);
    Bytes copy;
    {
        framework::win32::GlobalLockView view(memory);
        ASSERT_TRUE(view);
        EXPECT_NE(view.Data(), static_cast<void*>(memory)) << "movable memory is a handle, not a pointer";
        const uint8_t* bytes = static_cast<const uint8_t*>(view.Data());
        copy.assign(bytes, bytes + size);
    }
    EXPECT_EQ(copy[0], 'B');
    FileInfo info;
    ASSERT_EQ(Query(copy, &info), kSuccess);
    EXPECT_EQ(info.format, kFormatBmp);
    Owned again;
    ASSERT_EQ(Load(copy, again.get(), info.fileBitsPerPixel, info.fileOrder), kSuccess);
    EXPECT_EQ(Difference(again.bitmap, picturefactory::Colourful), 0);
}

TEST_F(Imaging, SavingConvertsOtherDepthsAndRefusesOtherFormats) {
    Owned bitmap;
    ASSERT_EQ(CreateBitmap(bitmap.get(), kMemoryConventional, 5, 5, 4, 0, nullptr, 0, nullptr, 0), kSuccess);
    ASSERT_EQ(FillBitmap(bitmap.get(), 0xFFFFFF), kSuccess);
    HGLOBAL memory = nullptr;
    uint32_t size = 0;
    ASSERT_EQ(SaveBitmapMemory(&memory, bitmap.get(), kFormatBmp, 24, 0, &size, nullptr), kSuccess);
    framework::win32::UniqueGlobal owned(memory);
    EXPECT_EQ(size, 54u + 16u * 5u);
    EXPECT_EQ(SaveBitmapMemory(&memory, bitmap.get(), kFormatJpeg, 24, 0, &size, nullptr), kErrorUnsupported);
    EXPECT_EQ(memory, nullptr);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(SaveBitmapMemory(&memory, bitmap.get(), kFormatBmp, 8, 0, &size, nullptr), kErrorUnsupported);
    BitmapDescriptor empty{};
    EXPECT_EQ(SaveBitmapMemory(&memory, &empty, kFormatBmp, 24, 0, &size, nullptr), kErrorInvalidBitmap);
}

// ---- Drawing into a bitmap ----------------------------------------------------------

TEST_F(Imaging, AContextDrawsIntoTheBitmap) {
    Owned bitmap;
    ASSERT_EQ(CreateBitmap(bitmap.get(), kMemoryConventional, 64, 32, 24, 0, nullptr, 0, nullptr, 0),
              kSuccess);
    ASSERT_EQ(FillBitmap(bitmap.get(), 0xFFFFFF), kSuccess);
    HDC dc = CreateBitmapContext(bitmap.get());
    ASSERT_NE(dc, nullptr);
    EXPECT_EQ(::GetPixel(dc, 3, 3), RGB(255, 255, 255)) << "the context starts with the pixels";
    const RECT box{10, 5, 20, 15};
    framework::win32::UniqueBrush red(::CreateSolidBrush(RGB(255, 0, 0)));
    ASSERT_NE(::FillRect(dc, &box, red.Get()), 0);
    EXPECT_EQ(PixelOf(bitmap.bitmap, 12, 7).g, 255) << "nothing is copied before the context ends";
    ASSERT_EQ(ReleaseBitmap(bitmap.get()), kSuccess);
    EXPECT_EQ(PixelOf(bitmap.bitmap, 12, 7).g, 0) << "ReleaseBitmap brings the drawing over";
    ASSERT_EQ(::TextOutA(dc, 30, 5, "No", 2), TRUE);
    ASSERT_EQ(DeleteBitmapContext(dc), kSuccess);
    EXPECT_EQ(DeleteBitmapContext(dc), kErrorInvalidParameter) << "once only";
    // Red in an RGB-order bitmap: order 0, as the no-preview picture is made.
    const Bgra inside = PixelOf(bitmap.bitmap, 12, 7);
    EXPECT_EQ(inside.r, 255);
    EXPECT_EQ(inside.g, 0);
    EXPECT_EQ(inside.b, 0);
    EXPECT_EQ(PixelOf(bitmap.bitmap, 25, 25).g, 255);
    int dark = 0;
    for (int32_t y = 0; y < 32; ++y)
        for (int32_t x = 30; x < 64; ++x) dark += PixelOf(bitmap.bitmap, x, y).g < 128 ? 1 : 0;
    EXPECT_GT(dark, 10) << "the text was drawn";
}

TEST_F(Imaging, AContextOutlivingItsStorageDoesNoHarm) {
    BitmapDescriptor bitmap{};
    ASSERT_EQ(CreateBitmap(&bitmap, kMemoryConventional, 8, 8, 8, 0, nullptr, 0, nullptr, 0), kSuccess);
    HDC dc = CreateBitmapContext(&bitmap);
    ASSERT_NE(dc, nullptr);
    ASSERT_EQ(FreeBitmap(&bitmap), kSuccess);
    ::PatBlt(dc, 0, 0, 8, 8, BLACKNESS);
    EXPECT_EQ(DeleteBitmapContext(dc), kSuccess);
    EXPECT_EQ(CreateBitmapContext(&bitmap), nullptr) << "an empty descriptor";
    EXPECT_EQ(DeleteBitmapContext(nullptr), kErrorInvalidParameter);
}

// ---- Painting -----------------------------------------------------------------------

namespace {

// A 32-bit top-down DIB section selected into a memory context, to paint on
// and read back.
class Canvas {
public:
    Canvas(int32_t width, int32_t height) : width_(width), dc_(::CreateCompatibleDC(nullptr)) {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = -height;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        void* bits = nullptr;
        section_ = framework::win32::UniqueBitmap(
            ::CreateDIBSection(dc_.Get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
        bits_ = static_cast<uint32_t*>(bits);
        previous_ = ::SelectObject(dc_.Get(), section_.Get());
        ::PatBlt(dc_.Get(), 0, 0, width, height, WHITENESS);
    }
    ~Canvas() { ::SelectObject(dc_.Get(), previous_); }
    HDC Dc() const { return dc_.Get(); }
    // 0x00RRGGBB
    uint32_t At(int32_t x, int32_t y) const {
        ::GdiFlush();
        return bits_[static_cast<size_t>(y) * width_ + x] & 0xFFFFFF;
    }

private:
    int32_t width_;
    framework::win32::UniqueDc dc_;
    framework::win32::UniqueBitmap section_;
    uint32_t* bits_ = nullptr;
    HGDIOBJ previous_ = nullptr;
};

}  // namespace

TEST_F(Imaging, PaintsOneToOne) {
    const Bytes png = picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 9, 7, picturefactory::Colourful);
    Owned bitmap;
    ASSERT_EQ(Load(png, bitmap.get(), 24), kSuccess);
    Canvas canvas(20, 20);
    const RECT target{5, 6, 14, 13};
    ASSERT_EQ(PaintBitmap(canvas.Dc(), bitmap.get(), nullptr, nullptr, &target, nullptr, SRCCOPY), kSuccess);
    for (int32_t y = 0; y < 7; ++y)
        for (int32_t x = 0; x < 9; ++x) {
            const Bgra c = picturefactory::Colourful(x, y);
            ASSERT_EQ(canvas.At(5 + x, 6 + y), static_cast<uint32_t>(c.r << 16 | c.g << 8 | c.b))
                << x << "," << y;
        }
    EXPECT_EQ(canvas.At(4, 6), 0xFFFFFFu);
    EXPECT_EQ(canvas.At(14, 12), 0xFFFFFFu);
}

TEST_F(Imaging, PaintsScaledByAveraging) {
    // A one-pixel checkerboard painted at half size is grey, not black or white.
    Owned bitmap;
    ASSERT_EQ(CreateBitmap(bitmap.get(), kMemoryConventional, 32, 32, 1, 0, nullptr, 0, nullptr, 0),
              kSuccess);
    for (int32_t y = 0; y < 32; ++y)
        for (int32_t i = 0; i < 4; ++i) kernel::Row(bitmap.bitmap, y)[i] = y % 2 == 0 ? 0xAA : 0x55;
    Canvas canvas(16, 16);
    const RECT target{0, 0, 16, 16};
    ASSERT_EQ(PaintBitmap(canvas.Dc(), bitmap.get(), nullptr, nullptr, &target, nullptr, SRCCOPY), kSuccess);
    for (int32_t y = 0; y < 16; ++y)
        for (int32_t x = 0; x < 16; ++x) ASSERT_EQ(canvas.At(x, y), 0x808080u) << x << "," << y;
    EXPECT_EQ(bitmap->bitsPerPixel, 1) << "painting leaves the bitmap as it was";
}

TEST_F(Imaging, PaintsPartsMirroredClippedAndWithRasterOperations) {
    Owned bitmap;
    ASSERT_EQ(
        CreateBitmap(bitmap.get(), kMemoryConventional, 4, 1, 24, kColorOrderRgb, nullptr, 0, nullptr, 0),
        kSuccess);
    const uint8_t reds[4] = {10, 20, 30, 40};
    for (int32_t x = 0; x < 4; ++x) kernel::Row(bitmap.bitmap, 0)[3 * x] = reds[x];  // red comes first
    Canvas canvas(8, 4);
    const RECT mirrored{4, 0, 0, 1};
    ASSERT_EQ(PaintBitmap(canvas.Dc(), bitmap.get(), nullptr, nullptr, &mirrored, nullptr, SRCCOPY),
              kSuccess);
    for (int32_t x = 0; x < 4; ++x) EXPECT_EQ(canvas.At(x, 0), static_cast<uint32_t>(reds[3 - x]) << 16) << x;

    const RECT part{2, 0, 4, 1};
    const RECT target{0, 1, 2, 2};
    ASSERT_EQ(PaintBitmap(canvas.Dc(), bitmap.get(), &part, nullptr, &target, nullptr, SRCCOPY), kSuccess);
    EXPECT_EQ(canvas.At(0, 1), 30u << 16);
    EXPECT_EQ(canvas.At(1, 1), 40u << 16);

    const RECT wide{0, 2, 8, 3};
    const RECT clip{0, 0, 3, 4};
    ASSERT_EQ(PaintBitmap(canvas.Dc(), bitmap.get(), nullptr, nullptr, &wide, &clip, SRCCOPY), kSuccess);
    EXPECT_EQ(canvas.At(0, 2), 10u << 16);
    EXPECT_EQ(canvas.At(5, 2), 0xFFFFFFu) << "outside the clip";
    const RECT afterClip{0, 0, 8, 4};
    ::FillRect(canvas.Dc(), &afterClip, static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH)));
    EXPECT_EQ(canvas.At(5, 2), 0xFFFFFFu) << "the clip does not stay on the context";

    const RECT inverted{0, 3, 4, 4};
    ASSERT_EQ(PaintBitmap(canvas.Dc(), bitmap.get(), nullptr, nullptr, &inverted, nullptr, SRCINVERT),
              kSuccess);
    EXPECT_EQ(canvas.At(1, 3), 0xFFFFFFu ^ (20u << 16));

    EXPECT_EQ(PaintBitmap(canvas.Dc(), bitmap.get(), nullptr, &part, &target, nullptr, SRCCOPY),
              kErrorUnsupported);
    const RECT outside{3, 0, 5, 1};
    EXPECT_EQ(PaintBitmap(canvas.Dc(), bitmap.get(), &outside, nullptr, &target, nullptr, SRCCOPY),
              kErrorInvalidParameter);
    EXPECT_EQ(PaintBitmap(nullptr, bitmap.get(), nullptr, nullptr, &target, nullptr, SRCCOPY),
              kErrorInvalidParameter);
    const RECT huge{INT32_MIN, 0, INT32_MAX, 1};
    EXPECT_EQ(PaintBitmap(canvas.Dc(), bitmap.get(), nullptr, nullptr, &huge, nullptr, SRCCOPY),
              kErrorInvalidParameter);
    BitmapDescriptor empty{};
    EXPECT_EQ(PaintBitmap(canvas.Dc(), &empty, nullptr, nullptr, &target, nullptr, SRCCOPY),
              kErrorInvalidBitmap);
}

TEST_F(Imaging, PaintsPalettePictures) {
    RgbQuad colors[16] = {};
    colors[3] = RgbQuad{0, 128, 255, 0};  // orange
    Owned bitmap;
    ASSERT_EQ(CreateBitmap(bitmap.get(), kMemoryConventional, 3, 2, 4, 0, colors, 0, nullptr, 0), kSuccess);
    kernel::Row(bitmap.bitmap, 1)[0] = 0x03;  // pixel (1, 1)
    Canvas canvas(3, 2);
    ASSERT_EQ(PaintBitmap(canvas.Dc(), bitmap.get(), nullptr, nullptr, nullptr, nullptr, SRCCOPY), kSuccess);
    EXPECT_EQ(canvas.At(1, 1), 0xFF8000u);
    EXPECT_EQ(canvas.At(0, 1), 0u);
}

TEST_F(Imaging, PaintPalettes) {
    Owned eight;
    ASSERT_EQ(CreateBitmap(eight.get(), kMemoryConventional, 3, 2, 8, 0, nullptr, 0, nullptr, 0), kSuccess);
    framework::win32::UniquePalette own(CreatePaintPalette(nullptr, eight.get()));
    ASSERT_TRUE(own);
    PALETTEENTRY entry{};
    EXPECT_EQ(::GetPaletteEntries(own.Get(), 0, 0, nullptr), 256u);
    ASSERT_EQ(::GetPaletteEntries(own.Get(), 200, 1, &entry), 1u);
    EXPECT_EQ(entry.peRed, 200);
    Owned wide;
    ASSERT_EQ(CreateBitmap(wide.get(), kMemoryConventional, 3, 2, 24, 0, nullptr, 0, nullptr, 0), kSuccess);
    framework::win32::UniquePalette halftone(CreatePaintPalette(nullptr, wide.get()));
    EXPECT_TRUE(halftone);
    BitmapDescriptor empty{};
    EXPECT_EQ(CreatePaintPalette(nullptr, &empty), nullptr);
}

TEST_F(Imaging, DeviceBitmapsConvertToTwentyFourBits) {
    framework::win32::WindowDc screen(nullptr);
    ASSERT_TRUE(screen);
    framework::win32::UniqueBitmap device(::CreateCompatibleBitmap(screen.Get(), 40, 30));
    ASSERT_TRUE(device);
    {
        framework::win32::UniqueDc dc(::CreateCompatibleDC(screen.Get()));
        framework::win32::SelectionGuard selected(dc.Get(), device.Get());
        ASSERT_TRUE(selected.Succeeded());
        ::PatBlt(dc.Get(), 0, 0, 40, 30, WHITENESS);
        const RECT box{0, 0, 10, 30};
        framework::win32::UniqueBrush blue(::CreateSolidBrush(RGB(0, 0, 255)));
        ::FillRect(dc.Get(), &box, blue.Get());
    }
    Owned bitmap;
    ASSERT_EQ(ConvertFromDeviceBitmap(nullptr, bitmap.get(), device.Get(), 0), kSuccess);
    EXPECT_EQ(bitmap->width, 40);
    EXPECT_EQ(bitmap->height, 30);
    EXPECT_EQ(bitmap->bitsPerPixel, 24);
    EXPECT_EQ(PixelOf(bitmap.bitmap, 5, 29).b, 255);
    EXPECT_EQ(PixelOf(bitmap.bitmap, 5, 29).r, 0);
    EXPECT_EQ(PixelOf(bitmap.bitmap, 35, 0).r, 255);
    EXPECT_EQ(ConvertFromDeviceBitmap(nullptr, bitmap.get(), nullptr, 0), kErrorInvalidParameter);
    EXPECT_EQ(ConvertFromDeviceBitmap(nullptr, bitmap.get(), device.Get(), 1), kErrorInvalidParameter);
}

TEST_F(Imaging, NoPreviewPictureRoad) {
    // Create, fill white, draw three lines of text, fit: the placeholder's steps.
    Owned bitmap;
    ASSERT_EQ(CreateBitmap(bitmap.get(), kMemoryConventional, 128, 128, 24, 0, nullptr, 0, nullptr, 0),
              kSuccess);
    ASSERT_EQ(FillBitmap(bitmap.get(), 0xFFFFFF), kSuccess);
    HDC dc = CreateBitmapContext(bitmap.get());
    ASSERT_NE(dc, nullptr);
    ::TextOutA(dc, 42, 16, " No", 3);
    ::TextOutA(dc, 21, 41, "Preview", 7);
    ::TextOutA(dc, 16, 66, "Available", 9);
    ASSERT_EQ(DeleteBitmapContext(dc), kSuccess);
    ASSERT_EQ(SizeBitmap(bitmap.get(), 135, 103, kSizeResample), kSuccess);
    EXPECT_EQ(bitmap->width, 135);
    EXPECT_EQ(bitmap->height, 103);
    EXPECT_EQ(IsGrayScaleBitmap(bitmap.get()), 1) << "black text on white";
}

TEST_F(Imaging, ColourTablesTakeWindowsQuads) {
    const RGBQUAD colors[2] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
    ColorMatchTable* table = CreateColorMatchTable(colors, 2);
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(SetColorMatchTable(table), kSuccess);
    Owned bitmap;
    ASSERT_EQ(CreateBitmap(bitmap.get(), kMemoryConventional, 5, 5, 24, 1, nullptr, 0, nullptr, 0), kSuccess);
    ASSERT_EQ(FillBitmap(bitmap.get(), 0xE0E0E0), kSuccess);
    ASSERT_EQ(ReduceBitmapColors(bitmap.get(), bitmap.get(), 8, kColorReductionUserPalette, colors, nullptr,
                                 2, nullptr, nullptr),
              kSuccess);
    EXPECT_EQ(bitmap->bitsPerPixel, 8);
    EXPECT_EQ(kernel::Row(bitmap.bitmap, 4)[4], 1);
    EXPECT_EQ(FreeColorMatchTable(table), kSuccess);
}

// ---- COM on the calling thread ----------------------------------------------------------

TEST_F(Imaging, WorksWhateverTheThreadsApartment) {
    const Bytes png = picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 5, 5, picturefactory::Colourful);
    for (DWORD model : {DWORD{0xFFFFFFFF}, DWORD{COINIT_MULTITHREADED}, DWORD{COINIT_APARTMENTTHREADED}}) {
        int loaded = 0, queried = 0;
        HRESULT before = S_OK;
        std::thread worker([&] {
            // 0xFFFFFFFF: COM left uninitialised on this thread.
            if (model != 0xFFFFFFFF) before = ::CoInitializeEx(nullptr, model);
            FileInfo info;
            queried = Query(png, &info);
            Owned bitmap;
            loaded = Load(png, bitmap.get());
            if (model != 0xFFFFFFFF && SUCCEEDED(before)) ::CoUninitialize();
        });
        worker.join();
        EXPECT_EQ(queried, kSuccess) << model;
        EXPECT_EQ(loaded, kSuccess) << model;
    }
}
