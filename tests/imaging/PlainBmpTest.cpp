// Plain BMP files go through our own reader instead of WIC. The reader must
// give what WIC gives, record for record and byte for byte, for every file it
// takes; these tests load each file both ways and compare.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/LittleEndian.h"
#include "thumbnails/BmpReader.h"
#include "thumbnails/Imaging.h"
#include "thumbnails/ImagingInternal.h"

using namespace imaging;

namespace {

using Bytes = std::vector<uint8_t>;
using testsupport::Set16;
using testsupport::Set32;

class PlainBmp : public ::testing::Test {
protected:
    void SetUp() override { live_ = kernel::LiveStorageCount(); }
    void TearDown() override { EXPECT_EQ(kernel::LiveStorageCount(), live_) << "storage left behind"; }

private:
    size_t live_ = 0;
};

struct BmpShape {
    int32_t width = 7;
    int32_t height = 5;
    int32_t bits = 24;
    bool topDown = false;
    uint32_t colorsUsed = 0;  // 0: the whole palette
    bool greyPalette = false;
    int32_t xPelsPerMeter = 3780;  // 96 dots per inch
    int32_t yPelsPerMeter = 3780;
    uint32_t gap = 0;  // bytes between the palette and the rows
    uint32_t seed = 1;
};

std::string Describe(const BmpShape& s) {
    return std::to_string(s.width) + "x" + std::to_string(s.height) + " at " + std::to_string(s.bits) +
           (s.topDown ? " top-down" : " bottom-up") + " colours " + std::to_string(s.colorsUsed) +
           (s.greyPalette ? " grey" : "") + " res " + std::to_string(s.xPelsPerMeter) + "/" +
           std::to_string(s.yPelsPerMeter) + " gap " + std::to_string(s.gap);
}

// A whole BMP file whose every byte (palette, pixels, the padding at the end
// of rows and the fourth byte of 32-bit pixels) comes from a pseudo-random
// sequence, so that nothing the reader copies or drops goes unseen.
Bytes MakeBmp(const BmpShape& s) {
    uint32_t state = s.seed * 2654435761u + 12345u;
    auto next = [&] {
        state = state * 1664525u + 1013904223u;
        return static_cast<uint8_t>(state >> 24);
    };
    const uint32_t entries = s.bits <= 8 ? (s.colorsUsed == 0 ? 1u << s.bits : s.colorsUsed) : 0;
    const uint32_t stride = (static_cast<uint32_t>(s.width) * s.bits + 31) / 32 * 4;
    const uint32_t pixelOffset = 54 + 4 * entries + s.gap;
    Bytes b(pixelOffset + stride * static_cast<uint32_t>(s.height));
    b[0] = 'B';
    b[1] = 'M';
    Set32(b, 2, static_cast<uint32_t>(b.size()));
    Set32(b, 10, pixelOffset);
    Set32(b, 14, 40);
    Set32(b, 18, static_cast<uint32_t>(s.width));
    Set32(b, 22, static_cast<uint32_t>(s.topDown ? -s.height : s.height));
    Set16(b, 26, 1);
    Set16(b, 28, static_cast<uint32_t>(s.bits));
    Set32(b, 38, static_cast<uint32_t>(s.xPelsPerMeter));
    Set32(b, 42, static_cast<uint32_t>(s.yPelsPerMeter));
    Set32(b, 46, s.colorsUsed);
    for (uint32_t i = 0; i < entries; ++i) {
        const uint8_t level = next();
        for (int c = 0; c < 3; ++c) b[54 + 4 * i + c] = s.greyPalette ? level : next();
        b[54 + 4 * i + 3] = next();  // the unused byte of an entry, not always 0 in the wild
    }
    for (size_t i = 54 + 4 * entries; i < b.size(); ++i) b[i] = next();
    return b;
}

void ExpectSameInfo(const FileInfo& direct, const FileInfo& wic, const std::string& what) {
    EXPECT_EQ(direct.format, wic.format) << what;
    EXPECT_EQ(direct.width, wic.width) << what;
    EXPECT_EQ(direct.height, wic.height) << what;
    EXPECT_EQ(direct.pageCount, wic.pageCount) << what;
    EXPECT_EQ(direct.xResolution, wic.xResolution) << what;
    EXPECT_EQ(direct.yResolution, wic.yResolution) << what;
    EXPECT_EQ(direct.fileBitsPerPixel, wic.fileBitsPerPixel) << what;
    EXPECT_EQ(direct.storedBitsPerPixel, wic.storedBitsPerPixel) << what;
    EXPECT_EQ(direct.colorCount, wic.colorCount) << what;
    EXPECT_EQ(direct.isGrayScale, wic.isGrayScale) << what;
    EXPECT_EQ(direct.hasAlpha, wic.hasAlpha) << what;
    EXPECT_EQ(direct.fileOrder, wic.fileOrder) << what;
    // And every other byte of the record.
    EXPECT_EQ(std::memcmp(&direct, &wic, sizeof direct), 0) << what;
}

void ExpectSameBitmap(const BitmapDescriptor& direct, const BitmapDescriptor& wic, const std::string& what) {
    ASSERT_EQ(direct.width, wic.width) << what;
    ASSERT_EQ(direct.height, wic.height) << what;
    ASSERT_EQ(direct.bitsPerPixel, wic.bitsPerPixel) << what;
    ASSERT_EQ(direct.bytesPerLine, wic.bytesPerLine) << what;
    ASSERT_EQ(direct.storageSize, wic.storageSize) << what;
    EXPECT_EQ(direct.colorOrder, wic.colorOrder) << what;
    EXPECT_EQ(direct.colorCount, wic.colorCount) << what;
    EXPECT_EQ(direct.viewPerspective, wic.viewPerspective) << what;
    EXPECT_EQ(direct.xResolution, wic.xResolution) << what;
    EXPECT_EQ(direct.yResolution, wic.yResolution) << what;
    EXPECT_EQ(direct.palette == nullptr, wic.palette == nullptr) << what;
    if (direct.palette != nullptr && wic.palette != nullptr && direct.bitsPerPixel <= 8) {
        EXPECT_EQ(std::memcmp(direct.palette, wic.palette, sizeof(RgbQuad) << direct.bitsPerPixel), 0)
            << what << ": palettes differ";
    }
    for (int32_t y = 0; y < direct.height; ++y) {
        const uint8_t* a = kernel::Row(direct, y);
        const uint8_t* b = kernel::Row(wic, y);
        if (std::memcmp(a, b, static_cast<size_t>(direct.bytesPerLine)) != 0) {
            for (int32_t i = 0; i < direct.bytesPerLine; ++i) {
                ASSERT_EQ(a[i], b[i]) << what << ": row " << y << " byte " << i;
            }
        }
    }
}

// Loads (or queries, for a null bitmap) both ways; false when the reader did
// not take the file.
bool BothWays(const Bytes& file, int32_t bits, int32_t order, const std::string& what) {
    BmpLayout layout;
    if (!ReadBmpLayout(file.data(), file.size(), &layout)) return false;
    const PictureProbe probe = ProbePicture(file.data(), file.size());
    EXPECT_EQ(probe.status, ProbeStatus::kRecognised) << what;

    FileInfo directInfo{}, wicInfo{};
    detail::DecodeRequest query;
    query.info = &directInfo;
    EXPECT_EQ(detail::DecodePlainBmp(file.data(), file.size(), layout, query), kSuccess) << what;
    query.info = &wicInfo;
    EXPECT_EQ(detail::DecodeWithWic(file.data(), file.size(), probe, query), kSuccess) << what;
    ExpectSameInfo(directInfo, wicInfo, what);

    BitmapDescriptor direct{}, wic{};
    detail::DecodeRequest load;
    load.bitsPerPixel = bits;
    load.colorOrder = order;
    load.bitmap = &direct;
    const int directResult = detail::DecodePlainBmp(file.data(), file.size(), layout, load);
    load.bitmap = &wic;
    const int wicResult = detail::DecodeWithWic(file.data(), file.size(), probe, load);
    EXPECT_EQ(directResult, wicResult) << what;
    if (directResult == kSuccess && wicResult == kSuccess) ExpectSameBitmap(direct, wic, what);
    FreeBitmap(&direct);
    FreeBitmap(&wic);
    return true;
}

}  // namespace

TEST_F(PlainBmp, EveryDepthAndRowOrderLoadsAsWicLoadsIt) {
    const int32_t depths[] = {1, 4, 8, 16, 24, 32};
    const int32_t asked[] = {0, 1, 4, 8, 24, 32};
    int compared = 0;
    for (int32_t bits : depths) {
        for (bool topDown : {false, true}) {
            // Widths that leave every kind of padding at the end of a row.
            for (int32_t width : {1, 3, 7, 13}) {
                BmpShape shape;
                shape.bits = bits;
                shape.topDown = topDown;
                shape.width = width;
                shape.height = 4;
                shape.seed = static_cast<uint32_t>(bits * 100 + width + (topDown ? 50 : 0));
                const Bytes file = MakeBmp(shape);
                for (int32_t ask : asked) {
                    for (int32_t order : {kColorOrderBgr, kColorOrderRgb}) {
                        const std::string what =
                            Describe(shape) + " asked " + std::to_string(ask) + "/" + std::to_string(order);
                        ASSERT_TRUE(BothWays(file, ask, order, what)) << what << ": not taken";
                        ++compared;
                    }
                }
            }
        }
    }
    EXPECT_EQ(compared, 6 * 2 * 4 * 6 * 2);
}

TEST_F(PlainBmp, PalettesShortGreyOrFullLoadAsWicLoadsThem) {
    for (int32_t bits : {1, 4, 8}) {
        for (uint32_t used : {0u, 1u, 2u, 3u, 16u, 300u}) {
            for (bool grey : {false, true}) {
                BmpShape shape;
                shape.bits = bits;
                shape.colorsUsed = used;
                shape.greyPalette = grey;
                shape.width = 9;
                shape.height = 3;
                shape.seed = used * 7 + static_cast<uint32_t>(bits) + (grey ? 1000u : 0u);
                if (used > (1u << bits)) {
                    // More entries claimed than the depth has: the file holds
                    // them all, and only the first 2^bits count.
                    shape.colorsUsed = used;
                }
                const Bytes file = MakeBmp(shape);
                for (int32_t ask : {0, 24}) {
                    const std::string what = Describe(shape) + " asked " + std::to_string(ask);
                    ASSERT_TRUE(BothWays(file, ask, kColorOrderBgr, what)) << what << ": not taken";
                }
            }
        }
    }
}

TEST_F(PlainBmp, ResolutionsAndGapsLoadAsWicLoadsThem) {
    const int32_t resolutions[][2] = {{0, 0},
                                      {3780, 0},
                                      {0, 2835},
                                      {2835, 3780},
                                      {1, 1},
                                      {-3780, 3780},
                                      {39370079, 39370079},
                                      {0x7FFFFFFF, 5000}};
    for (const auto& resolution : resolutions) {
        for (uint32_t gap : {0u, 2u, 64u}) {
            BmpShape shape;
            shape.bits = 24;
            shape.xPelsPerMeter = resolution[0];
            shape.yPelsPerMeter = resolution[1];
            shape.gap = gap;
            const Bytes file = MakeBmp(shape);
            const std::string what = Describe(shape);
            ASSERT_TRUE(BothWays(file, 0, kColorOrderBgr, what)) << what << ": not taken";
        }
    }
}

// The public operations take the reader's road for these files and give the
// same as the WIC road.
TEST_F(PlainBmp, QueryAndLoadThroughTheInterfaceMatchWic) {
    BmpShape shape;
    shape.bits = 8;
    shape.width = 33;
    shape.height = 17;
    const Bytes file = MakeBmp(shape);
    FileInfo info{};
    ASSERT_EQ(QueryMemoryInfo(file.data(), &info, static_cast<uint32_t>(file.size()), 0, nullptr), kSuccess);
    BitmapDescriptor loaded{};
    ASSERT_EQ(LoadBitmapMemory(file.data(), &loaded, info.fileBitsPerPixel, info.fileOrder,
                               static_cast<uint32_t>(file.size()), nullptr),
              kSuccess);
    FileInfo wicInfo{};
    detail::DecodeRequest query;
    query.info = &wicInfo;
    const PictureProbe probe = ProbePicture(file.data(), file.size());
    ASSERT_EQ(detail::DecodeWithWic(file.data(), file.size(), probe, query), kSuccess);
    ExpectSameInfo(info, wicInfo, "interface");
    BitmapDescriptor wic{};
    detail::DecodeRequest load;
    load.bitsPerPixel = wicInfo.fileBitsPerPixel;
    load.colorOrder = wicInfo.fileOrder;
    load.bitmap = &wic;
    ASSERT_EQ(detail::DecodeWithWic(file.data(), file.size(), probe, load), kSuccess);
    ExpectSameBitmap(loaded, wic, "interface");
    FreeBitmap(&loaded);
    FreeBitmap(&wic);
}

// Files the reader declines still load, through WIC, as before.
TEST_F(PlainBmp, DeclinedFilesAreLeftToWic) {
    BmpShape shape;
    shape.bits = 24;
    Bytes file = MakeBmp(shape);
    Set32(file, 30, 3);  // bit fields
    BmpLayout layout;
    EXPECT_FALSE(ReadBmpLayout(file.data(), file.size(), &layout));

    // A 16-bit file with the 5-6-5 masks: WIC's, not ours.
    BmpShape sixteen;
    sixteen.bits = 16;
    sixteen.gap = 12;
    Bytes masked = MakeBmp(sixteen);
    Set32(masked, 30, 3);
    Set32(masked, 54, 0xF800);
    Set32(masked, 58, 0x07E0);
    Set32(masked, 62, 0x001F);
    EXPECT_FALSE(ReadBmpLayout(masked.data(), masked.size(), &layout));
    BitmapDescriptor loaded{};
    EXPECT_EQ(LoadBitmapMemory(masked.data(), &loaded, 24, kColorOrderBgr,
                               static_cast<uint32_t>(masked.size()), nullptr),
              kSuccess);
    EXPECT_EQ(loaded.width, sixteen.width);
    FreeBitmap(&loaded);
}
